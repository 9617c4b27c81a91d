#pragma once

#include <chrono>
#include <memory>

#include "platform/contacts/AddressBook.h"

namespace vynlex {

/// The address books of Evolution Data Server, the service that keeps contacts on GNOME and Phosh: all that are
/// switched on, one after the other. The session bus starts it when it does not run yet.
class EvolutionAddressBook final : public AddressBook {
public:
    static constexpr std::chrono::milliseconds defaultPatience = std::chrono::seconds(10);

    /// Whether the session bus knows the service: it runs or can be started. Starts nothing, neither it nor a bus.
    /// False also when the bus is silent for `patience`.
    static bool isInstalled(std::chrono::milliseconds patience = defaultPatience);

    /// `patience`: how long each of these may take: the answers of the service, its list of address books, one of them.
    explicit EvolutionAddressBook(std::chrono::milliseconds patience = defaultPatience);

    /// Whether the service answers, and we may talk to it.
    [[nodiscard]] bool canBeRead() override;
    /// An address book that cannot be read makes it fail after the others were.
    tl::expected<void, QString> read(const ContactStore::Visit &visit) override;

private:
    std::chrono::milliseconds m_patience;
};

} // namespace vynlex
