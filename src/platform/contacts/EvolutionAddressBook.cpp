#include "platform/contacts/EvolutionAddressBook.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "platform/contacts/ContactOfCard.h"
#include "platform/contacts/SlowAnswers.h"

namespace vynlex {
namespace {

/// The service's names on the bus, which carry the version of what is spoken: where they differ, libebook of this build
/// cannot talk to it.
constexpr std::array services{"org.gnome.evolution.dataserver.Sources5",
                              "org.gnome.evolution.dataserver.AddressBook10"};

/// Empty: none runs. GLib would start one.
QByteArray sessionBusAddress()
{
    const QByteArray told = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!told.isEmpty())
        return told.startsWith("autolaunch:") ? QByteArray() : told;
    const QByteArray socket = qgetenv("XDG_RUNTIME_DIR") + "/bus"; // where systemd puts it
    if (!QFile::exists(QFile::decodeName(socket)))
        return {};
    const std::unique_ptr<char, FreeWith<g_free>> escaped(g_dbus_address_escape_value(socket.constData()));
    return QByteArray("unix:path=") + escaped.get();
}

/// For what GLib and libebook do on the main loop of the thread that uses them. Here none runs, and the application's
/// (Qt's own, on Linux) is not to meet our objects.
class OwnMainContext {
public:
    OwnMainContext() { g_main_context_push_thread_default(m_context.get()); }
    OwnMainContext(const OwnMainContext &) = delete;
    OwnMainContext &operator=(const OwnMainContext &) = delete;
    ~OwnMainContext()
    {
        while (g_main_context_iteration(m_context.get(), FALSE)) {
        }
        g_main_context_pop_thread_default(m_context.get());
    }

private:
    const std::unique_ptr<GMainContext, FreeWith<g_main_context_unref>> m_context{g_main_context_new()};
};

/// A connection of our own to the session bus: nothing of the application's waits for it. Null when it fails.
class SessionBus {
public:
    explicit SessionBus(GCancellable *cancellable)
        : m_cancellable(cancellable)
    {
        if (const QByteArray address = sessionBusAddress(); !address.isEmpty())
            m_connection.reset(g_dbus_connection_new_for_address_sync(
                address.constData(),
                static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                  G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                nullptr, cancellable, nullptr));
    }

    /// Owned by somebody, or can be started.
    [[nodiscard]] bool knows(const char *name) const
    {
        for (const char *list : {"ListNames", "ListActivatableNames"}) {
            const Variant answer = call("org.freedesktop.DBus", "org.freedesktop.DBus", list, G_VARIANT_TYPE("(as)"));
            if (!answer)
                continue;
            const Variant names(g_variant_get_child_value(answer.get(), 0));
            const std::unique_ptr<const char *, FreeWith<g_free>> strings(g_variant_get_strv(names.get(), nullptr));
            if (g_strv_contains(strings.get(), name))
                return true;
        }
        return false;
    }

    /// Started if need be.
    [[nodiscard]] bool answers(const char *name) const
    {
        return call(name, "org.freedesktop.DBus.Peer", "Ping", G_VARIANT_TYPE("()")) != nullptr;
    }

private:
    using Variant = std::unique_ptr<GVariant, FreeWith<g_variant_unref>>;

    Variant call(const char *name, const char *interface, const char *method, const GVariantType *answer) const
    {
        if (!m_connection)
            return nullptr;
        return Variant(g_dbus_connection_call_sync(m_connection.get(), name, "/", interface, method, nullptr, answer,
                                                   G_DBUS_CALL_FLAGS_NONE, G_MAXINT, m_cancellable, nullptr));
    }

    static void close(GDBusConnection *connection)
    {
        g_dbus_connection_close_sync(connection, nullptr, nullptr); // without it the socket may stay open for long
        g_object_unref(connection);
    }

    std::unique_ptr<GDBusConnection, FreeWith<close>> m_connection;
    GCancellable *m_cancellable;
};

/// Whether `ask` says so for each of the services, in time.
bool holdsForServices(bool (SessionBus::*ask)(const char *) const, std::chrono::milliseconds patience)
{
    SlowAnswers<bool> answers([ask](GCancellable *cancellable, const SlowAnswers<bool>::Tell &tell) {
        const OwnMainContext context;
        const SessionBus bus(cancellable);
        tell(std::all_of(services.begin(), services.end(), [&](const char *name) { return (bus.*ask)(name); }));
    });
    bool holds = false;
    while (const auto answer = answers.next(patience))
        holds = *answer;
    return holds;
}

void freeObjects(GList *objects)
{
    g_list_free_full(objects, g_object_unref);
}
void freeContacts(GSList *contacts)
{
    g_slist_free_full(contacts, g_object_unref);
}

using Contacts = std::vector<AddressBookContact>;
using SomeContacts = tl::expected<Contacts, QString>;

SomeContacts readBook(ESource *source, GCancellable *cancellable)
{
    // A remote book is not waited for: the service has a copy of it. Any other number of seconds is waited in full.
    constexpr auto withoutWaiting = static_cast<guint32>(-1);
    constexpr const char *all = "(contains \"x-evolution-any-field\" \"\")"; // as libebook itself writes it

    GErrorSlot error;
    const auto failure = [&] {
        return tl::unexpected(QStringLiteral("The address book \"%1\" cannot be read: %2")
                                  .arg(QString::fromUtf8(e_source_get_display_name(source)), error.text()));
    };
    const GObjectPointer<EClient> client(e_book_client_connect_sync(source, withoutWaiting, cancellable, error));
    if (!client)
        return failure();
    GSList *list = nullptr;
    if (!e_book_client_get_contacts_sync(E_BOOK_CLIENT(client.get()), all, &list, cancellable, error))
        return failure();
    const std::unique_ptr<GSList, FreeWith<freeContacts>> owner(list);
    Contacts contacts;
    for (const GSList *each = list; each; each = each->next)
        contacts.push_back(contactOf(E_VCARD(each->data)));
    return contacts;
}

void readBooks(GCancellable *cancellable, const SlowAnswers<SomeContacts>::Tell &tell)
{
    const OwnMainContext context;
    GErrorSlot error;
    // Both of these are one per process: to cancel the making of one here would fail it for everybody else.
    const GObjectPointer<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error));
    if (bus) // By default GLib ends the process when the bus ends.
        g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    const GObjectPointer<ESourceRegistry> registry(bus ? e_source_registry_new_sync(nullptr, error) : nullptr);
    if (!registry) {
        tell(
            tl::unexpected(QStringLiteral("Evolution Data Server has no list of address books: %1").arg(error.text())));
        return;
    }
    tell(Contacts()); // a sign of life
    const std::unique_ptr<GList, FreeWith<freeObjects>> sources(
        e_source_registry_list_enabled(registry.get(), E_SOURCE_EXTENSION_ADDRESS_BOOK));
    for (const GList *each = sources.get(); each; each = each->next)
        tell(readBook(E_SOURCE(each->data), cancellable));
}

} // namespace

EvolutionAddressBook::EvolutionAddressBook(std::chrono::milliseconds patience)
    : m_patience(patience)
{
}

bool EvolutionAddressBook::isInstalled(std::chrono::milliseconds patience)
{
    return holdsForServices(&SessionBus::knows, patience);
}

bool EvolutionAddressBook::canBeRead()
{
    return holdsForServices(&SessionBus::answers, m_patience);
}

tl::expected<void, QString> EvolutionAddressBook::read(const ContactStore::Visit &visit)
{
    SlowAnswers<SomeContacts> answers(readBooks);
    tl::expected<void, QString> result;
    while (const auto contacts = answers.next(m_patience)) {
        if (!*contacts && result)
            result = tl::unexpected(contacts->error());
        for (const AddressBookContact &contact : contacts->value_or(Contacts()))
            visit(contact);
    }
    if (!answers.hasEnded())
        return tl::unexpected(QStringLiteral("Evolution Data Server has not answered for %1 s.")
                                  .arg(std::chrono::duration<double>(m_patience).count()));
    return result;
}

} // namespace vynlex
