#include <QStandardPaths>

#include "platform/contacts/AddressBook.h"
#include "platform/contacts/Ebook.h"
#include "platform/contacts/EvolutionAddressBook.h"
#include "platform/contacts/VCardFile.h"

namespace vynlex {

std::unique_ptr<AddressBook> currentAddressBook()
{
    if (!isEbookThere())
        return nullptr;
    // The user's, whichever application the kit is in.
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    // A file that somebody names is what they want read.
    if (const QString path = qEnvironmentVariable("VYNLEX_CONTACTS_FILE"); !path.isEmpty())
        return std::make_unique<VCardFile>(path);
    if (EvolutionAddressBook::isInstalled())
        return std::make_unique<EvolutionAddressBook>();
    return std::make_unique<VCardFile>(folder + QStringLiteral("/contacts.vcf"));
}

} // namespace vynlex
