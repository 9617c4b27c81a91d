#include "platform/contacts/VCards.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

#include "platform/contacts/ContactOfCard.h"
#include "platform/contacts/Ebook.h"

// libebook reads what a name or a number says. What it cannot do is done here, on bytes: telling cards apart; bringing
// lines together, since it loses characters that a fold cuts in two and does not know each soft line break; text of one
// byte a character, which it damages unless that is quoted-printable; and everything else in a card, of which it would
// show what it does not understand on the host's error output.

namespace vynlex {
namespace {

constexpr qsizetype maximumPropertyBytes = 8 * 1024;
constexpr qsizetype maximumHeadBytes = 1024;
constexpr qsizetype maximumCardBytes = 64 * 1024; // of names and numbers
constexpr const char *quotedPrintable = "QUOTED-PRINTABLE";

bool isNameOfSet(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
}

bool says(QByteArrayView line, QByteArrayView mark)
{
    return line.trimmed().compare(mark, Qt::CaseInsensitive) == 0;
}

bool isBegin(QByteArrayView line)
{
    return says(line, "BEGIN:VCARD");
}

bool isEnd(QByteArrayView line)
{
    return says(line, "END:VCARD");
}

/// "TEL" of "item1.TEL;TYPE=CELL:1".
QByteArrayView nameOf(QByteArrayView line)
{
    const auto end = std::find_if(line.begin(), line.end(), [](char c) { return c == ':' || c == ';'; });
    const QByteArrayView name = line.first(end - line.begin());
    return name.sliced(name.lastIndexOf('.') + 1).trimmed();
}

/// What matters of a property's head, "item1.TEL;TYPE=CELL;ENCODING=QUOTED-PRINTABLE;CHARSET=UTF-8:", all in capitals.
struct Head {
    QByteArray encoding;
    QByteArray characterSet;
    qsizetype size = 0; ///< The value begins there.
};

/// Nothing when the line has none of decent size.
std::optional<Head> headOf(QByteArrayView line)
{
    const QByteArrayView start = line.first(std::min(line.size(), maximumHeadBytes));
    bool quoted = false;
    const auto colon = std::find_if(start.begin(), start.end(), [&](char c) {
        quoted ^= c == '"';
        return c == ':' && !quoted;
    });
    if (colon == start.end())
        return std::nullopt;
    Head head;
    head.size = colon - start.begin() + 1;
    const QList<QByteArray> parts = start.first(head.size - 1).toByteArray().toUpper().split(';');
    for (const QByteArray &part : parts.sliced(1)) {
        const QByteArray word = part.mid(part.indexOf('=') + 1).trimmed();
        if (word == "QUOTED-PRINTABLE" || word == "BASE64" || (word == "B" && part.startsWith("ENCODING")))
            head.encoding = word;
        else if (part.startsWith("CHARSET=") && std::all_of(word.begin(), word.end(), isNameOfSet))
            head.characterSet = word;
    }
    return head;
}

/// Nothing as long as the head may still grow.
std::optional<bool> isQuotedPrintable(QByteArrayView line)
{
    if (const auto head = headOf(line))
        return head->encoding == quotedPrintable;
    return line.size() < maximumHeadBytes ? std::nullopt : std::optional(false);
}

/// Takes lines off a text, folds and soft line breaks undone.
class LineReader {
public:
    explicit LineReader(QByteArrayView text)
        : m_rest(text)
    {
        constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");
        if (m_rest.startsWith(byteOrderMark))
            m_rest = m_rest.sliced(byteOrderMark.size());
    }

    std::optional<QByteArray> next()
    {
        if (m_rest.isEmpty())
            return std::nullopt;
        QByteArray line = takePhysical().toByteArray();
        std::optional<bool> encoded; // asked once: a line may have very many breaks
        while (!m_rest.isEmpty()) {
            if (line.endsWith('=') && !encoded)
                encoded = isQuotedPrintable(line);
            if (line.endsWith('=') && encoded.value_or(false)) {
                line.chop(1);
                if (isMarkNext())
                    break; // It was the last of the card, or the card is cut off there.
                line += takePhysical();
            } else if (m_rest.front() == ' ' || m_rest.front() == '\t') {
                line += takePhysical().sliced(1);
            } else {
                break;
            }
        }
        return line;
    }

private:
    QByteArrayView takePhysical()
    {
        const auto isEndOfLine = [](char c) { return c == '\n' || c == '\r'; };
        const auto end = std::find_if(m_rest.begin(), m_rest.end(), isEndOfLine) - m_rest.begin();
        const QByteArrayView line = m_rest.first(end);
        m_rest = m_rest.sliced(end);
        m_rest = m_rest.sliced(m_rest.startsWith("\r\n") ? 2 : std::min<qsizetype>(m_rest.size(), 1));
        return line;
    }

    [[nodiscard]] bool isMarkNext() const
    {
        const QByteArrayView line = LineReader(m_rest).takePhysical();
        return isBegin(line) || isEnd(line);
    }

    QByteArrayView m_rest;
};

/// The same in ASCII. What is encoded already keeps its equals signs.
QByteArray quotedPrintableOf(QByteArrayView value, bool withEqualsSigns)
{
    QByteArray encoded;
    for (const char c : value) {
        if (static_cast<unsigned char>(c) >= 0x80 || (c == '=' && withEqualsSigns))
            encoded += '=' + QByteArray(1, c).toHex().toUpper();
        else
            encoded += c;
    }
    return encoded;
}

/// Backslashes that escape nothing stand for themselves; libebook would complain of them on the host's error output.
QByteArray withEscapesMended(QByteArrayView line)
{
    QByteArray mended;
    mended.reserve(line.size());
    for (qsizetype i = 0; i < line.size(); ++i) {
        mended += line[i];
        if (line[i] != '\\')
            continue;
        const char next = i + 1 < line.size() ? line[i + 1] : '\0';
        if (next != '\0' && QByteArrayView("\\;,nN").contains(next))
            mended += line[++i];
        else
            mended += '\\';
    }
    return mended;
}

/// A name or a number, in words that libebook understands. Empty for anything else.
QByteArray forLibebook(QByteArrayView line)
{
    const QByteArrayView name = nameOf(line);
    if (!says(name, "N") && !says(name, "FN") && !says(name, "TEL"))
        return {};
    auto head = headOf(line);
    if (!head || line.size() > maximumPropertyBytes || line.contains('\0'))
        return {};
    QByteArray value = withEscapesMended(line.sliced(head->size));
    if (!value.isValidUtf8()) {
        value = quotedPrintableOf(value, head->encoding != quotedPrintable);
        head->encoding = quotedPrintable;
        if (head->characterSet.isEmpty())
            head->characterSet = "WINDOWS-1252";
    }
    QByteArray property = name.toByteArray();
    if (!head->encoding.isEmpty())
        property += ";ENCODING=" + head->encoding;
    if (!head->characterSet.isEmpty())
        property += ";CHARSET=" + head->characterSet;
    return property + ':' + value + "\r\n";
}

AddressBookContact contactOfLines(const QByteArray &lines)
{
    const GObjectPointer<EVCard> card(
        e_vcard_new_from_string(("BEGIN:VCARD\r\n" + lines + "END:VCARD\r\n").constData()));
    return contactOf(card.get());
}

} // namespace

std::vector<AddressBookContact> contactsInVCards(const QByteArray &text)
{
    std::vector<AddressBookContact> contacts;
    std::optional<QByteArray> card; // the lines so far of the one that is open
    int inner = 0;                  // cards that stand in it
    bool innerMayFollow = false;
    LineReader reader(text);
    while (const auto line = reader.next()) {
        if (isBegin(*line)) {
            if (innerMayFollow) {
                ++inner;
            } else {
                card = QByteArray();
                inner = 0;
            }
        } else if (isEnd(*line)) {
            if (inner > 0)
                --inner;
            else if (card)
                contacts.push_back(contactOfLines(*std::exchange(card, std::nullopt)));
        } else if (card && inner == 0 && card->size() < maximumCardBytes) {
            *card += forLibebook(*line);
        }
        innerMayFollow = card && says(*line, "AGENT:");
    }
    return contacts;
}

} // namespace vynlex
