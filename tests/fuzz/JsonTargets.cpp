#include <QJsonParseError>

#include "api/ChatRecords.h"
#include "api/DirectoryRecords.h"
#include "platform/json/JsonText.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/fuzz/Property.h"
#include "tests/fuzz/TwoParsers.h"
#include "tests/platform/json/SameJson.h"
#include "translation/TranslationResponse.h"

namespace vynlex::fuzz {
namespace {

/// What is written is read again as what it was. A text that is no Unicode (half a surrogate pair) cannot be written as
/// it is, so what counts is that a second writing gives the first one's bytes.
template<typename Record> void requireStable(const tl::expected<Record, RecordError> &record)
{
    if (!record)
        return;
    const QByteArray written = encodeJson(*record);
    const auto again = decodeJson<Record>(written);
    require(again.has_value(), "what the kit writes it can read");
    require(encodeJson(*again) == written, "writing and reading again changes nothing");
    if (!written.contains("\xef\xbf\xbd"))
        require(*again == *record, "a record survives being written and read");
}

} // namespace

void json(const QByteArray &bytes)
{
    const auto qt = parseJson(bytes);
    const auto tree = JsonTree::parse(bytes);
    if (qt) {
        require(tree.has_value(), "what Qt reads the tree reads");
        require(same(*qt, tree->root()), "the tree reads what Qt reads");
    } else if (tree) {
        require(qt.error() == QJsonParseError{0, QJsonParseError::IllegalNumber}.errorString(),
                "beyond Qt the tree reads only numbers too small for a double");
    } else {
        require(tree.error() == qt.error(), "the tree fails in Qt's words");
    }
}

void records(const QByteArray &bytes)
{
    const TwoParsers text(bytes);
    requireStable(text.read<VLTokenResponse>());
    requireStable(text.read<VLContactsResponse>());
    requireStable(text.read<VLRecentContactsResponse>());
    requireStable(text.read<VLSuccessResponse>());
    requireStable(text.read<std::vector<TranslationResponse>>());
    (void)text.read<VLChatThread>(); // never written
}

} // namespace vynlex::fuzz
