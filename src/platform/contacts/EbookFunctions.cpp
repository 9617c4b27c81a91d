// libebook's functions as far as they are called here, each found in the library when it is first called. Linked as
// usual, it would start with every host and bring 35 more libraries, whether anybody looks at contacts or not.

#include <dlfcn.h>

#include "platform/contacts/Ebook.h"

using namespace vynlex;

namespace {

/// Stays for the life of the process, since GLib does not forget types. Null when it is not installed.
void *library()
{
    static void *const handle = dlopen(VYNLEX_EBOOK_LIBRARY, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    return handle;
}

/// Only of what `isEbookThere` has found.
template<typename Function> Function *found(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(library(), name));
}

} // namespace

bool vynlex::isEbookThere()
{
    return library() != nullptr;
}

// Declared by libebook's headers, so that the compiler compares the types. Hidden, as all that the kit does not export.

#define CALL(name, ...)                                                                                                \
    static auto *const function = found<decltype(name)>(#name);                                                        \
    return function(__VA_ARGS__)

extern "C" {

GType e_book_client_get_type()
{
    CALL(e_book_client_get_type);
}
EClient *e_book_client_connect_sync(ESource *source, guint32 waitSeconds, GCancellable *cancellable, GError **error)
{
    CALL(e_book_client_connect_sync, source, waitSeconds, cancellable, error);
}
gboolean e_book_client_get_contacts_sync(EBookClient *client, const gchar *query, GSList **contacts,
                                         GCancellable *cancellable, GError **error)
{
    CALL(e_book_client_get_contacts_sync, client, query, contacts, cancellable, error);
}
GType e_source_get_type()
{
    CALL(e_source_get_type);
}
const gchar *e_source_get_display_name(ESource *source)
{
    CALL(e_source_get_display_name, source);
}
ESourceRegistry *e_source_registry_new_sync(GCancellable *cancellable, GError **error)
{
    CALL(e_source_registry_new_sync, cancellable, error);
}
GList *e_source_registry_list_enabled(ESourceRegistry *registry, const gchar *extension)
{
    CALL(e_source_registry_list_enabled, registry, extension);
}
GType e_vcard_get_type()
{
    CALL(e_vcard_get_type);
}
EVCard *e_vcard_new_from_string(const char *text)
{
    CALL(e_vcard_new_from_string, text);
}
GList *e_vcard_get_attributes(EVCard *card)
{
    CALL(e_vcard_get_attributes, card);
}
const gchar *e_vcard_attribute_get_name(EVCardAttribute *attribute)
{
    CALL(e_vcard_attribute_get_name, attribute);
}
GList *e_vcard_attribute_get_values_decoded(EVCardAttribute *attribute)
{
    CALL(e_vcard_attribute_get_values_decoded, attribute);
}

} // extern "C"
