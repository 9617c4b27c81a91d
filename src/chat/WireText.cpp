#include "chat/WireText.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

constexpr QLatin1StringView separator = "##"_L1;

} // namespace

QString encodeWireText(const WireText &wireText)
{
    return wireText.languageCode + separator + wireText.text;
}

WireText decodeWireText(const QString &messageText)
{
    const QStringList parts = messageText.split(separator);
    if (parts.size() != 2)
        return {u"en-IN"_s, messageText};
    return {parts.first(), parts.last()};
}

} // namespace vynlex
