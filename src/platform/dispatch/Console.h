#pragma once

#include <QString>

namespace vynlex {

/// Writes `line` and a line feed to standard output as UTF-8, at once and as one piece. Any thread.
///
/// This is the kit's diagnostic output: no levels, no time stamps. Keys and tokens never go here.
void consoleLine(const QString &line);

} // namespace vynlex
