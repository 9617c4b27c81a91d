#include "platform/json/JsonText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace vynlex {

tl::expected<QJsonValue, QString> parseJson(const QByteArray &text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error == QJsonParseError::NoError)
        return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
    const QJsonArray lone = QJsonDocument::fromJson('[' + text + ']').array();
    if (lone.size() == 1)
        return lone.first();
    return tl::unexpected(error.errorString());
}

} // namespace vynlex
