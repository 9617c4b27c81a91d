#include "api/PhoneNumber.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

QString comparedPart(QString number)
{
    return digitsOf(number.remove(u"+91"_s));
}

} // namespace

QString digitsOf(const QString &number)
{
    QString digits;
    std::ranges::copy_if(number, std::back_inserter(digits), [](QChar c) { return c >= u'0' && c <= u'9'; });
    return digits;
}

const Contact *contactWithNumber(const std::vector<Contact> &contacts, const QString &number)
{
    const QString wanted = comparedPart(number);
    if (wanted.isEmpty())
        return nullptr;
    const auto found = std::ranges::find_if(
        contacts, [&](const Contact &contact) { return contact.phoneNo && comparedPart(*contact.phoneNo) == wanted; });
    return found == contacts.end() ? nullptr : &*found;
}

} // namespace vynlex
