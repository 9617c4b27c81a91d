#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <cmath>
#include <map>
#include <optional>
#include <tl/expected.hpp>
#include <tuple>
#include <type_traits>
#include <vector>

#include "platform/json/JsonView.h"
#include "platform/json/RecordError.h"
#include "platform/json/Words.h"

namespace vynlex {

/// The mapping of a record to JSON: a tuple of `required`, `optional` and `lenient` fields, specialised beside each
/// record. A record without any key has an empty tuple.
template<typename Record> inline constexpr auto fields = nullptr;

template<typename Record>
concept JsonRecord = !std::is_same_v<decltype(fields<Record>), const std::nullptr_t>;

enum class Leniency { Strict, Lenient };

template<typename Record, typename Value, Leniency leniency> struct Field {
    QLatin1StringView key;
    Value Record::*member;
};

/// Missing or mistyped: the record fails.
template<typename Record, typename Value>
constexpr Field<Record, Value, Leniency::Strict> required(const char *key, Value Record::*member)
{
    return {QLatin1StringView(key), member};
}

/// Missing or null: absent. Mistyped: the record fails. Written only when present.
template<typename Record, typename Value>
constexpr Field<Record, std::optional<Value>, Leniency::Strict> optional(const char *key,
                                                                         std::optional<Value> Record::*member)
{
    return {QLatin1StringView(key), member};
}

/// Missing, null or mistyped: what the field holds in a new record. A list is taken whole or not at all.
template<typename Record, typename Value>
constexpr Field<Record, Value, Leniency::Lenient> lenient(const char *key, Value Record::*member)
{
    return {QLatin1StringView(key), member};
}

namespace json {

/// Why and where a reading failed. The place is put together on the way out, so that a reading that succeeds pays
/// nothing for it; a lenient reading passes null instead and has nothing written down at all.
using Failure = RecordError;

inline bool fail(Failure *failure, const JsonView &json, const char *expected)
{
    if (failure)
        failure->problem = QLatin1StringView(json.isMissing() ? "missing" : expected);
    return false;
}

inline bool failAt(Failure *failure, QLatin1StringView key)
{
    if (failure)
        failure->path.prepend(QLatin1Char('.') + key);
    return false;
}

inline bool failAt(Failure *failure, qsizetype index)
{
    if (failure)
        failure->path.prepend(QLatin1Char('[') + QString::number(index) + QLatin1Char(']'));
    return false;
}

/// Takes what was found in `json`; without it, `json` is not what was expected.
template<typename Value>
bool take(const JsonView &json, std::optional<Value> &&found, Value &value, Failure *failure, const char *expected)
{
    if (!found)
        return fail(failure, json, expected);
    value = *std::move(found);
    return true;
}

template<typename Value> struct Reader;

template<typename Record, typename Value>
bool readField(const JsonView &object, const Field<Record, Value, Leniency::Strict> &field, Record &record,
               Failure *failure)
{
    return Reader<Value>::read(object.find(field.key), record.*field.member, failure) || failAt(failure, field.key);
}

template<typename Record, typename Value>
bool readField(const JsonView &object, const Field<Record, Value, Leniency::Lenient> &field, Record &record, Failure *)
{
    Value value{};
    const JsonView json = object.find(field.key);
    if (!json.isMissing() && !json.isNull() && Reader<Value>::read(json, value, nullptr))
        record.*field.member = std::move(value);
    return true;
}

/// What the record's table names; stops at the first field that fails.
template<typename Record> bool readFields(const JsonView &object, Record &record, Failure *failure)
{
    return std::apply([&](const auto &...field) { return (readField(object, field, record, failure) && ...); },
                      fields<Record>);
}

/// How a type stands in JSON. `read` gives false when `json` is not one, and may then have changed `value`. This is the
/// reader of records; a record that a table cannot describe has a specialisation of its own.
template<typename Value> struct Reader {
    static_assert(JsonRecord<Value>, "the record has no table of fields");

    static bool read(const JsonView &json, Value &record, Failure *failure)
    {
        return json.isObject() ? readFields(json, record, failure) : fail(failure, json, "expected an object");
    }

    static QJsonValue write(const Value &record)
    {
        QJsonObject object;
        const auto writeField = [&](const auto &field) {
            using Member = std::remove_cvref_t<decltype(record.*field.member)>;
            const QJsonValue value = Reader<Member>::write(record.*field.member);
            if (!value.isUndefined())
                object.insert(field.key, value);
        };
        std::apply([&](const auto &...field) { (writeField(field), ...); }, fields<Value>);
        return object;
    }
};

template<> struct Reader<QString> {
    static bool read(const JsonView &json, QString &value, Failure *failure)
    {
        return take(json, json.text(), value, failure, "expected text");
    }
    static QJsonValue write(const QString &value) { return value; }
};

template<> struct Reader<bool> {
    static bool read(const JsonView &json, bool &value, Failure *failure)
    {
        return take(json, json.flag(), value, failure, "expected true or false");
    }
    static QJsonValue write(bool value) { return value; }
};

template<> struct Reader<double> {
    static bool read(const JsonView &json, double &value, Failure *failure)
    {
        return take(json, json.number(), value, failure, "expected a number");
    }
    static QJsonValue write(double value) { return value; }
};

template<> struct Reader<qint64> {
    static bool read(const JsonView &json, qint64 &value, Failure *failure)
    {
        return take(json, json.integer(), value, failure, "expected an integer");
    }
    static QJsonValue write(qint64 value) { return value; }
};

/// A number: seconds since 2001-01-01 00:00:00 UTC. A date written as text is mistyped.
template<> struct Reader<QDateTime> {
    static constexpr double epochMs = 978'307'200'000;
    static constexpr double latestMs = 8.64e15; // 100 million days, within what QDateTime can tell

    static bool read(const JsonView &json, QDateTime &value, Failure *failure)
    {
        const double sinceEpochMs = std::round(json.number().value_or(qQNaN()) * 1000);
        if (!(std::abs(sinceEpochMs) <= latestMs))
            return fail(failure, json, "expected seconds since 2001");
        value = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(epochMs + sinceEpochMs), Qt::UTC);
        return true;
    }
    static QJsonValue write(const QDateTime &value)
    {
        return (static_cast<double>(value.toMSecsSinceEpoch()) - epochMs) / 1000;
    }
};

template<Worded Enumeration> struct Reader<Enumeration> {
    static bool read(const JsonView &json, Enumeration &value, Failure *failure)
    {
        const auto text = json.text();
        return take(json, text ? fromWord<Enumeration>(*text) : std::nullopt, value, failure,
                    "expected one of the known words");
    }
    static QJsonValue write(Enumeration value) { return wordOf(value); }
};

template<typename Element> struct Reader<std::vector<Element>> {
    static bool read(const JsonView &json, std::vector<Element> &elements, Failure *failure)
    {
        if (!json.isArray())
            return fail(failure, json, "expected an array");
        JsonElements array(json);
        elements.clear();
        elements.reserve(array.expected());
        while (const auto element = array.next()) {
            if (!Reader<Element>::read(*element, elements.emplace_back(), failure))
                return failAt(failure, static_cast<qsizetype>(elements.size()) - 1);
        }
        return true;
    }
    static QJsonValue write(const std::vector<Element> &elements)
    {
        QJsonArray array;
        for (const Element &element : elements)
            array.append(Reader<Element>::write(element));
        return array;
    }
};

/// Written, never read.
template<> struct Reader<std::map<QString, QString>> {
    static QJsonValue write(const std::map<QString, QString> &members)
    {
        QJsonObject object;
        for (const auto &[key, value] : members)
            object.insert(key, value);
        return object;
    }
};

template<typename Value> struct Reader<std::optional<Value>> {
    static bool read(const JsonView &json, std::optional<Value> &value, Failure *failure)
    {
        if (json.isMissing() || json.isNull()) {
            value.reset();
            return true;
        }
        return Reader<Value>::read(json, value.emplace(), failure);
    }
    static QJsonValue write(const std::optional<Value> &value)
    {
        return value ? Reader<Value>::write(*value) : QJsonValue(QJsonValue::Undefined);
    }
};

} // namespace json

/// Reads what stands at `json` as `Value`: a record, or a vector of records. Keys that no field names are ignored.
template<typename Value> tl::expected<Value, RecordError> fromJson(const JsonView &json)
{
    tl::expected<Value, RecordError> value;
    json::Failure failure;
    if (!json::Reader<Value>::read(json, *value, &failure))
        value = tl::unexpected(RecordError{QLatin1Char('$') + failure.path, failure.problem});
    return value;
}

/// The same of a whole JSON text.
template<typename Value> tl::expected<Value, RecordError> decodeJson(const QByteArray &text)
{
    const auto tree = JsonTree::parse(text);
    if (!tree)
        return tl::unexpected(RecordError{QStringLiteral("$"), tree.error()});
    return fromJson<Value>(tree->root());
}

/// For what is put together by hand around records.
template<typename Value> QJsonValue toJson(const Value &value)
{
    return json::Reader<Value>::write(value);
}

template<typename Value> QByteArray encodeJson(const Value &value)
{
    const QJsonValue json = toJson(value);
    return (json.isArray() ? QJsonDocument(json.toArray()) : QJsonDocument(json.toObject()))
        .toJson(QJsonDocument::Compact);
}

} // namespace vynlex
