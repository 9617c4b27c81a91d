#pragma once

#include <QColor>
#include <QStringView>

namespace vynlex {

/// The opaque colour of six hexadecimal digits, red first, with or without "#" before them ("0F3CC9", "#9EB5FA"). Any
/// other text gives an invalid colour.
[[nodiscard]] QColor colorFromHex(QStringView hex);

} // namespace vynlex
