#pragma once

#include <QString>

#include <memory>
#include <tl/expected.hpp>

#include "platform/contacts/ContactStore.h"

namespace vynlex {

/// A place where contacts are kept, behind `ContactStore`. One thread at a time, and not the main thread: calls block.
class AddressBook {
public:
    virtual ~AddressBook() = default;

    [[nodiscard]] virtual bool canBeRead() = 0;
    /// As `ContactStore::enumerateContacts`.
    virtual tl::expected<void, QString> read(const ContactStore::Visit &visit) = 0;
};

/// The one that this device has now: the vCard file that `VYNLEX_CONTACTS_FILE` names; without the variable, Evolution
/// Data Server where the session bus knows it; else the file "contacts.vcf" in the user's data folder (on Linux
/// `$XDG_DATA_HOME`), whether it exists or not. Null without libebook. Blocks, for 10 s at most.
std::unique_ptr<AddressBook> currentAddressBook();

} // namespace vynlex
