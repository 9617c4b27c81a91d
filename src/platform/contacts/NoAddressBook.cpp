// For builds without libebook.

#include "platform/contacts/AddressBook.h"

namespace vynlex {

std::unique_ptr<AddressBook> currentAddressBook()
{
    return nullptr;
}

} // namespace vynlex
