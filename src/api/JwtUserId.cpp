#include "api/JwtUserId.h"

#include <QJsonObject>
#include <QStringDecoder>
#include <QStringList>

#include "platform/dispatch/Console.h"
#include "platform/dispatch/FatalError.h"
#include "platform/json/JsonText.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

/// base64url without its padding, which is how a token carries it, as plain base64.
QString padded(QString text)
{
    text.replace(u'-', u'+').replace(u'_', u'/');
    switch (text.size() % 4) {
    case 1:
        consoleLine({});
        break;
    case 2:
        text += "=="_L1;
        break;
    case 3:
        text += u'=';
        break;
    }
    return text;
}

} // namespace

QString userIdOfJwt(const QString &jwt)
{
    const QStringList parts = jwt.split(u'.');
    if (parts.size() < 2)
        return {};
    const QString payload = padded(parts[1]);
    if (payload.size() % 4 != 0)
        return {};
    const auto bytes = QByteArray::fromBase64Encoding(payload.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!bytes)
        return {};
    QStringDecoder toText(QStringDecoder::Utf8);
    const QString text = toText(*bytes);
    if (toText.hasError())
        return {};
    const auto json = parseJson(text.toUtf8());
    if (!json)
        fatalError(u"The payload of a JSON web token is not JSON."_s);
    return json->toObject().value("userId"_L1).toString();
}

} // namespace vynlex
