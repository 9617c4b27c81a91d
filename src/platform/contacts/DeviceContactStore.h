#pragma once

#include "platform/contacts/ContactStore.h"

namespace vynlex {

/// The shipped store: the address book that the device has at the time of each call.
class DeviceContactStore final : public ContactStore {
public:
    void requestAccess(AccessAnswered answered) override;
    tl::expected<void, QString> enumerateContacts(const Visit &visit) override;
};

} // namespace vynlex
