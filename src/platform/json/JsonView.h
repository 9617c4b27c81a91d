#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonValue>
#include <QLatin1String>
#include <QString>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <tl/expected.hpp>

namespace vynlex {

/// A value somewhere in a `JsonTree`, or none at all. Cheap to copy; valid as long as the tree.
class JsonView {
public:
    /// No value: what a key that is not there has.
    JsonView() = default;

    [[nodiscard]] bool isMissing() const { return !m_element.front() && !m_qt; }
    [[nodiscard]] bool isNull() const;
    [[nodiscard]] bool isObject() const;
    [[nodiscard]] bool isArray() const;

    /// Each absent when the value is of another type.
    [[nodiscard]] std::optional<QString> text() const;
    [[nodiscard]] std::optional<bool> flag() const;
    [[nodiscard]] std::optional<double> number() const;
    /// A number without a fraction, in whatever way it is written (3, 3.0, 3e2), that 64 bits hold.
    [[nodiscard]] std::optional<qint64> integer() const;

    /// The value of a key (ASCII) of an object; of the last one where a key stands there twice.
    [[nodiscard]] JsonView find(QLatin1StringView key) const;

private:
    friend class JsonElements;
    friend class JsonTree;

    explicit JsonView(std::array<std::uintptr_t, 2> element)
        : m_element(element)
    {
    }
    explicit JsonView(const QJsonValue &value);

    std::array<std::uintptr_t, 2> m_element = {}; // simdjson's, whose header is too large to be included here
    std::shared_ptr<const QJsonValue> m_qt;       // instead, in a text that Qt alone takes
};

/// The elements of an array, one after another; none of any other value.
class JsonElements {
public:
    explicit JsonElements(const JsonView &array);

    /// How many to make room for: exact up to 16 million, where the library stops counting.
    [[nodiscard]] std::size_t expected() const { return m_expected; }

    /// Nothing after the last one.
    std::optional<JsonView> next();

private:
    std::array<std::uintptr_t, 2> m_position = {};
    std::array<std::uintptr_t, 2> m_end = {};
    std::size_t m_expected = 0;
    QJsonArray m_qt;
    qsizetype m_index = 0;
};

/// A parsed JSON text. Any thread.
class JsonTree {
public:
    /// Takes what `parseJson` takes, and fails in its words. Two differences, of no consequence to records: a number
    /// too small for a double is zero and no error, and a byte order mark at the start of a text is always dropped.
    static tl::expected<JsonTree, QString> parse(const QByteArray &text);

    JsonTree(JsonTree &&) noexcept;
    JsonTree &operator=(JsonTree &&) noexcept;
    ~JsonTree();

    [[nodiscard]] const JsonView &root() const { return m_root; }

private:
    struct Tape;

    JsonTree(std::unique_ptr<Tape> tape, JsonView root);

    std::unique_ptr<Tape> m_tape; // absent when the root is Qt's
    JsonView m_root;
};

} // namespace vynlex
