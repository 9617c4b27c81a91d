#include "platform/ui/Color.h"

#include <algorithm>

namespace vynlex {

QColor colorFromHex(QStringView hex)
{
    if (hex.startsWith(u'#'))
        hex = hex.mid(1);
    const auto isHexDigit = [](QChar digit) {
        return (digit >= u'0' && digit <= u'9') || (digit >= u'a' && digit <= u'f') || (digit >= u'A' && digit <= u'F');
    };
    if (hex.size() != 6 || !std::ranges::all_of(hex, isHexDigit))
        return {};
    return QColor::fromRgb(hex.toUInt(nullptr, 16));
}

} // namespace vynlex
