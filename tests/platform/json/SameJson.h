#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

#include <algorithm>
#include <optional>

#include "platform/json/JsonView.h"

namespace vynlex {

/// Whether Qt's parser and the tree, two libraries, have read the same, but for a byte order mark that starts a text.
/// Keys that are no ASCII are not looked at, since no field has one.
inline bool same(const QJsonValue &qt, const JsonView &seen)
{
    switch (qt.type()) {
    case QJsonValue::Null:
        return seen.isNull();
    case QJsonValue::Bool:
        return seen.flag() == qt.toBool();
    case QJsonValue::Double: {
        const bool isInteger = qt.toInteger(0) == qt.toInteger(1);
        return seen.number() == qt.toDouble() &&
               seen.integer() == (isInteger ? std::optional(qt.toInteger()) : std::nullopt);
    }
    case QJsonValue::String: {
        const QString text = qt.toString();
        return seen.text() == text || (text.startsWith(QChar::ByteOrderMark) && seen.text() == text.mid(1));
    }
    case QJsonValue::Array: {
        const QJsonArray array = qt.toArray();
        JsonElements elements(seen);
        return seen.isArray() && elements.expected() == static_cast<std::size_t>(array.size()) &&
               std::ranges::all_of(array, [&](const auto &element) { return same(element, *elements.next()); }) &&
               !elements.next();
    }
    case QJsonValue::Object: {
        const QJsonObject object = qt.toObject();
        return seen.isObject() && std::ranges::all_of(object.keys(), [&](const QString &key) {
                   const QByteArray ascii = key.toLatin1();
                   return !ascii.isValidUtf8() || ascii != key ||
                          same(object.value(key), seen.find(QLatin1StringView(ascii)));
               });
    }
    case QJsonValue::Undefined:
        break;
    }
    return seen.isMissing();
}

} // namespace vynlex
