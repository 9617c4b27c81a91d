#include "platform/json/JsonView.h"

#include <QJsonObject>

#include <bit>
#include <cmath>
#include <simdjson.h>
#include <string_view>
#include <utility>

#include "platform/json/JsonText.h"

namespace vynlex {
namespace {

namespace dom = simdjson::dom;

using Handle = std::array<std::uintptr_t, 2>;

dom::element elementOf(const Handle &handle)
{
    return std::bit_cast<dom::element>(handle);
}

template<typename Value> std::optional<Value> valueOf(const Handle &handle)
{
    Value value;
    if (!handle.front() || elementOf(handle).get(value) != simdjson::SUCCESS)
        return std::nullopt;
    return value;
}

} // namespace

JsonView::JsonView(const QJsonValue &value)
    : m_qt(value.isUndefined() ? nullptr : std::make_shared<const QJsonValue>(value))
{
}

bool JsonView::isNull() const
{
    return m_qt ? m_qt->isNull() : m_element.front() && elementOf(m_element).is_null();
}

bool JsonView::isObject() const
{
    return m_qt ? m_qt->isObject() : valueOf<dom::object>(m_element).has_value();
}

bool JsonView::isArray() const
{
    return m_qt ? m_qt->isArray() : valueOf<dom::array>(m_element).has_value();
}

std::optional<QString> JsonView::text() const
{
    if (m_qt)
        return m_qt->isString() ? std::optional(m_qt->toString()) : std::nullopt;
    const auto utf8 = valueOf<std::string_view>(m_element);
    if (!utf8)
        return std::nullopt;
    return QString::fromUtf8(utf8->data(), static_cast<qsizetype>(utf8->size()));
}

std::optional<bool> JsonView::flag() const
{
    if (m_qt)
        return m_qt->isBool() ? std::optional(m_qt->toBool()) : std::nullopt;
    return valueOf<bool>(m_element);
}

std::optional<double> JsonView::number() const
{
    if (m_qt)
        return m_qt->isDouble() ? std::optional(m_qt->toDouble()) : std::nullopt;
    return valueOf<double>(m_element);
}

std::optional<qint64> JsonView::integer() const
{
    if (m_qt) {
        const qint64 whole = m_qt->toInteger(0);
        return whole != 0 || m_qt->toInteger(1) == 0 ? std::optional(whole) : std::nullopt;
    }
    if (const auto whole = valueOf<std::int64_t>(m_element))
        return *whole;
    const auto number = valueOf<double>(m_element);
    if (!number || !(*number >= -0x1p63 && *number < 0x1p63) || *number != std::trunc(*number))
        return std::nullopt;
    return static_cast<qint64>(*number);
}

JsonView JsonView::find(QLatin1StringView key) const
{
    if (m_qt)
        return JsonView(m_qt->toObject().value(key));
    JsonView found;
    if (const auto object = valueOf<dom::object>(m_element)) {
        const std::string_view wanted(key.data(), static_cast<std::size_t>(key.size()));
        for (auto field = object->begin(), end = object->end(); field != end; ++field) {
            if (field.key_equals(wanted))
                found.m_element = std::bit_cast<Handle>(field.value());
        }
    }
    return found;
}

JsonElements::JsonElements(const JsonView &array)
{
    if (array.m_qt) {
        m_qt = array.m_qt->toArray();
        m_expected = static_cast<std::size_t>(m_qt.size());
    } else if (const auto elements = valueOf<dom::array>(array.m_element)) {
        m_position = std::bit_cast<Handle>(elements->begin());
        m_end = std::bit_cast<Handle>(elements->end());
        m_expected = elements->size();
    }
}

std::optional<JsonView> JsonElements::next()
{
    if (m_index < m_qt.size())
        return JsonView(m_qt.at(m_index++));
    if (m_position == m_end)
        return std::nullopt;
    auto position = std::bit_cast<dom::array::iterator>(m_position);
    JsonView element(std::bit_cast<Handle>(*position));
    m_position = std::bit_cast<Handle>(++position);
    return element;
}

struct JsonTree::Tape {
    dom::document document;
};

JsonTree::JsonTree(std::unique_ptr<Tape> tape, JsonView root)
    : m_tape(std::move(tape))
    , m_root(std::move(root))
{
}
JsonTree::JsonTree(JsonTree &&) noexcept = default;
JsonTree &JsonTree::operator=(JsonTree &&) noexcept = default;
JsonTree::~JsonTree() = default;

tl::expected<JsonTree, QString> JsonTree::parse(const QByteArray &text)
{
    // A parser of its own for each text: one that is kept would keep memory for the largest text it has seen.
    dom::parser parser;
    auto tape = std::make_unique<Tape>();
    dom::element root;
    if (parser.parse_into_document(tape->document, text.data(), static_cast<std::size_t>(text.size())).get(root) ==
        simdjson::SUCCESS)
        return JsonTree(std::move(tape), JsonView(std::bit_cast<Handle>(root)));
    // Qt takes more than the standard allows, and its words say what is wrong.
    return parseJson(text).map([](const QJsonValue &value) { return JsonTree(nullptr, JsonView(value)); });
}

} // namespace vynlex
