#pragma once

#include "platform/json/Record.h"
#include "tests/fuzz/Property.h"

namespace vynlex::fuzz {

/// One JSON text, parsed twice: as it is, and with a byte order mark in front, which leaves it to Qt's parser alone.
class TwoParsers {
public:
    explicit TwoParsers(const QByteArray &text)
        : m_tree(JsonTree::parse(text))
        , m_qtTree(JsonTree::parse(mark + text))
        , m_comparable(m_tree && m_qtTree && !text.contains(mark) && !text.toLower().contains("\\ufeff"))
    {
    }

    [[nodiscard]] const tl::expected<JsonTree, QString> &tree() const { return m_tree; }

    /// Not what the tree's documentation tells of: numbers too small for a double, byte order marks within texts.
    [[nodiscard]] bool isComparable() const { return m_comparable; }

    /// Requires that both ways give the same record, or the same error.
    template<typename Record> [[nodiscard]] tl::expected<Record, RecordError> read() const
    {
        if (!m_tree)
            return tl::unexpected(RecordError{QStringLiteral("$"), m_tree.error()});
        auto record = fromJson<Record>(m_tree->root());
        if (m_comparable)
            require(record == fromJson<Record>(m_qtTree->root()), "the parser does not show in a record");
        return record;
    }

private:
    static constexpr const char *mark = "\xef\xbb\xbf";

    tl::expected<JsonTree, QString> m_tree;
    tl::expected<JsonTree, QString> m_qtTree;
    bool m_comparable;
};

} // namespace vynlex::fuzz
