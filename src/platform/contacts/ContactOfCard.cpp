#include "platform/contacts/ContactOfCard.h"

#include <optional>

#include "platform/contacts/Ebook.h"

namespace vynlex {
namespace {

QStringList valuesOf(EVCardAttribute *attribute)
{
    QStringList values;
    for (const GList *each = e_vcard_attribute_get_values_decoded(attribute); each; each = each->next) {
        const auto *const value = static_cast<const GString *>(each->data);
        values.append(QString::fromUtf8(value->str, static_cast<qsizetype>(value->len)).trimmed());
    }
    return values;
}

QString numberOf(const QStringList &values)
{
    // libebook splits at semicolons, which numbers use for a pause and their addresses for parameters.
    QString text = values.join(u';');
    constexpr QLatin1String scheme("tel:");
    if (!text.startsWith(scheme, Qt::CaseInsensitive))
        return text;
    return QString::fromUtf8(QByteArray::fromPercentEncoding(text.mid(scheme.size()).section(u';', 0, 0).toUtf8()));
}

} // namespace

AddressBookContact contactOf(_EVCard *card)
{
    AddressBookContact contact;
    std::optional<QStringList> name;
    std::optional<QString> fullName;
    for (const GList *each = e_vcard_get_attributes(card); each; each = each->next) {
        auto *const attribute = static_cast<EVCardAttribute *>(each->data);
        const auto is = [which = e_vcard_attribute_get_name(attribute)](const char *property) {
            return qstricmp(which, property) == 0;
        };
        if (is(EVC_TEL)) {
            if (const QString number = numberOf(valuesOf(attribute)); !number.isEmpty())
                contact.phoneNumbers.append(number);
        } else if (is(EVC_N) && !name) {
            name = valuesOf(attribute);
        } else if (is(EVC_FN) && !fullName) {
            fullName = valuesOf(attribute).join(u';');
        }
    }
    contact.familyName = name.value_or(QStringList()).value(0);
    contact.givenName = name.value_or(QStringList()).value(1);
    if (contact.familyName.isEmpty() && contact.givenName.isEmpty())
        contact.givenName = fullName.value_or(QString());
    return contact;
}

} // namespace vynlex
