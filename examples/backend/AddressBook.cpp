#include "AddressBook.h"

#include <QFile>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

struct DeviceContact {
    QString name;
    QString lname;
    std::vector<QString> phoneNumbers;
};

struct AddressBook {
    std::vector<DeviceContact> contacts;
};

} // namespace

template<>
inline constexpr auto vynlex::fields<DeviceContact> = std::tuple{
    required("name", &DeviceContact::name),
    lenient("lname", &DeviceContact::lname),
    required("phoneNumbers", &DeviceContact::phoneNumbers),
};
template<>
inline constexpr auto vynlex::fields<AddressBook> = std::tuple{required("deviceContacts", &AddressBook::contacts)};

tl::expected<std::vector<User>, QString> readAddressBook(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return tl::unexpected(u"The address book %1 cannot be read: %2."_s.arg(name, file.errorString()));
    const auto book = decodeJson<AddressBook>(file.readAll());
    if (!book)
        return tl::unexpected(u"The address book %1 is not of its form: %2."_s.arg(name, book.error().message()));
    std::vector<User> entries;
    for (const DeviceContact &contact : book->contacts)
        for (const QString &number : contact.phoneNumbers)
            entries.push_back({{}, (contact.name + u' ' + contact.lname).trimmed(), {}, number});
    return entries;
}
