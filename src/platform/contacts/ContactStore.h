#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <tl/expected.hpp>

namespace vynlex {

/// A person or a firm in the device's address book.
struct AddressBookContact {
    QString givenName;
    QString familyName;
    QStringList phoneNumbers; ///< As they are stored there, in the contact's order.

    bool operator==(const AddressBookContact &) const = default;
};

/// Port: the device's address book, read with the user's permission.
///
/// Functions may be called on the threads they name; one store serves several calls at a time. Nothing is kept between
/// calls: each looks at the address book as it is then.
class ContactStore {
public:
    using AccessAnswered = std::function<void(bool granted)>;
    using Visit = std::function<void(const AddressBookContact &)>;

    virtual ~ContactStore() = default;

    /// Asks whether the address book may be read. Any thread. `answered` runs once, on the main queue, never before
    /// this returns, and also when the store is gone by then.
    ///
    /// To ask the user, once, and to remember a refusal is the platform's part. Where the platform asks nobody (Linux
    /// has no portal for contacts), access is granted when there is an address book that can be read and refused
    /// otherwise.
    virtual void requestAccess(AccessAnswered answered) = 0;

    /// Calls `visit` with every contact, on the calling thread, and returns after the last. Blocks for as long as the
    /// address book takes, so not for the main thread; a service that does not answer is given up after seconds. The
    /// store has to live until it returns.
    ///
    /// The order is the address book's. Contacts without a number are visited too. Fails with a sentence when there is
    /// no address book, it must not be read, or not all of it could be; what could be read was visited before.
    virtual tl::expected<void, QString> enumerateContacts(const Visit &visit) = 0;
};

} // namespace vynlex
