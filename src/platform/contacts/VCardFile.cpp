#include "platform/contacts/VCardFile.h"

#include <QFile>

#include <utility>

#include "platform/contacts/VCards.h"

namespace vynlex {
namespace {

constexpr qint64 maximumBytes = 64LL * 1024 * 1024;

}

VCardFile::VCardFile(QString path)
    : m_path(std::move(path))
{
}

bool VCardFile::canBeRead()
{
    return QFile(m_path).open(QIODevice::ReadOnly);
}

tl::expected<void, QString> VCardFile::read(const ContactStore::Visit &visit)
{
    const auto failure = [this](const QString &why) {
        return tl::unexpected(QStringLiteral("The address book file %1 %2").arg(m_path, why));
    };
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return failure(QStringLiteral("cannot be opened: %1.").arg(file.errorString()));
    if (file.size() > maximumBytes)
        return failure(QStringLiteral("is larger than %1 MiB.").arg(maximumBytes / (1024 * 1024)));
    const QByteArray text = file.readAll();
    if (file.error() != QFile::NoError)
        return failure(QStringLiteral("cannot be read: %1.").arg(file.errorString()));
    const auto contacts = contactsInVCards(text);
    if (contacts.empty() && !text.trimmed().isEmpty())
        return failure(QStringLiteral("holds no vCard that is complete."));
    for (const AddressBookContact &contact : contacts)
        visit(contact);
    return {};
}

} // namespace vynlex
