#include "platform/contacts/DeviceContactStore.h"

#include <utility>

#include "platform/contacts/AddressBook.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"

namespace vynlex {

void DeviceContactStore::requestAccess(AccessAnswered answered)
{
    GlobalQueue::async([answered = std::move(answered)]() mutable {
        const auto book = currentAddressBook();
        const bool granted = book && book->canBeRead();
        // Moved on, so that nothing of the caller's is destroyed here.
        MainQueue::async([answered = std::move(answered), granted] { answered(granted); });
    });
}

tl::expected<void, QString> DeviceContactStore::enumerateContacts(const Visit &visit)
{
    if (const auto book = currentAddressBook())
        return book->read(visit);
    return tl::unexpected(QStringLiteral("No address book can be read without libebook."));
}

} // namespace vynlex
