#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>
#include <tl/expected.hpp>
#include <tuple>
#include <vector>

#include "platform/json/RecordError.h"

namespace vynlex {

/// The mapping of a record to JSON: a tuple of `required` and `optional` fields, specialised beside each record.
template<typename Record> inline constexpr auto fields = nullptr;

template<typename Record, typename Value> struct Field {
    const char *key;
    Value Record::*member;
};

/// Missing or mistyped: the record fails.
template<typename Record, typename Value>
constexpr Field<Record, Value> required(const char *key, Value Record::*member)
{
    return {key, member};
}

/// Missing or null: absent. Mistyped: the record fails. Written only when present.
template<typename Record, typename Value>
constexpr Field<Record, std::optional<Value>> optional(const char *key, std::optional<Value> Record::*member)
{
    return {key, member};
}

namespace json {

/// Reads one value; `path` names it in the error.
template<typename Value> struct Reader {
    static_assert(!std::is_same_v<decltype(fields<Value>), const std::nullptr_t>, "the record has no table of fields");

    static tl::expected<Value, RecordError> read(const QJsonValue &json, const QString &path)
    {
        if (!json.isObject())
            return tl::unexpected(RecordError{path, QStringLiteral("expected an object")});
        const QJsonObject object = json.toObject();
        Value record;
        std::optional<RecordError> error;
        const auto readField = [&]<typename Member>(const Field<Value, Member> &field) {
            const QString fieldPath = path + QLatin1Char('.') + QLatin1String(field.key);
            auto value = Reader<Member>::read(object.value(QLatin1String(field.key)), fieldPath);
            if (value)
                record.*field.member = std::move(*value);
            else
                error = value.error();
            return value.has_value();
        };
        // Stops at the first field that fails.
        std::apply([&](const auto &...field) { (readField(field) && ...); }, fields<Value>);
        if (error)
            return tl::unexpected(*error);
        return record;
    }

    static QJsonValue write(const Value &record)
    {
        QJsonObject object;
        const auto writeField = [&]<typename Member>(const Field<Value, Member> &field) {
            const QJsonValue value = Reader<Member>::write(record.*field.member);
            if (!value.isUndefined())
                object.insert(QLatin1String(field.key), value);
        };
        std::apply([&](const auto &...field) { (writeField(field), ...); }, fields<Value>);
        return object;
    }
};

inline tl::unexpected<RecordError> mistyped(const QJsonValue &json, const QString &path, QLatin1String expected)
{
    return tl::unexpected(RecordError{path, json.isUndefined() ? QStringLiteral("missing") : QString(expected)});
}

template<> struct Reader<QString> {
    static tl::expected<QString, RecordError> read(const QJsonValue &json, const QString &path)
    {
        if (!json.isString())
            return mistyped(json, path, QLatin1String("expected text"));
        return json.toString();
    }
    static QJsonValue write(const QString &value) { return value; }
};

template<> struct Reader<double> {
    static tl::expected<double, RecordError> read(const QJsonValue &json, const QString &path)
    {
        if (!json.isDouble())
            return mistyped(json, path, QLatin1String("expected a number"));
        return json.toDouble();
    }
    static QJsonValue write(double value) { return value; }
};

template<typename Element> struct Reader<std::vector<Element>> {
    static tl::expected<std::vector<Element>, RecordError> read(const QJsonValue &json, const QString &path)
    {
        if (!json.isArray())
            return mistyped(json, path, QLatin1String("expected an array"));
        const QJsonArray array = json.toArray();
        std::vector<Element> elements;
        elements.reserve(static_cast<std::size_t>(array.size()));
        for (qsizetype i = 0; i < array.size(); ++i) {
            auto element = Reader<Element>::read(array.at(i), path + QStringLiteral("[%1]").arg(i));
            if (!element)
                return tl::unexpected(element.error());
            elements.push_back(std::move(*element));
        }
        return elements;
    }
    static QJsonValue write(const std::vector<Element> &elements)
    {
        QJsonArray array;
        for (const Element &element : elements)
            array.append(Reader<Element>::write(element));
        return array;
    }
};

template<typename Value> struct Reader<std::optional<Value>> {
    static tl::expected<std::optional<Value>, RecordError> read(const QJsonValue &json, const QString &path)
    {
        if (json.isUndefined() || json.isNull())
            return std::optional<Value>();
        auto value = Reader<Value>::read(json, path);
        if (!value)
            return tl::unexpected(value.error());
        return std::optional(std::move(*value));
    }
    static QJsonValue write(const std::optional<Value> &value)
    {
        return value ? Reader<Value>::write(*value) : QJsonValue(QJsonValue::Undefined);
    }
};

} // namespace json

/// Reads a whole JSON text as `Value`: a record, or a vector of records. Keys that no field names are ignored.
template<typename Value> tl::expected<Value, RecordError> decodeJson(const QByteArray &text)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(text, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return tl::unexpected(RecordError{QStringLiteral("$"), parseError.errorString()});
    return json::Reader<Value>::read(document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object()),
                                     QStringLiteral("$"));
}

template<typename Value> QByteArray encodeJson(const Value &value)
{
    const QJsonValue json = json::Reader<Value>::write(value);
    return (json.isArray() ? QJsonDocument(json.toArray()) : QJsonDocument(json.toObject()))
        .toJson(QJsonDocument::Compact);
}

} // namespace vynlex
