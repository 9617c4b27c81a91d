#pragma once

#include <QString>

namespace vynlex {

/// Ends the process deliberately, after writing "Fatal error: " and `message` to standard error. For programming errors
/// that the kit does not recover from; `message` is a sentence a developer can act on. Nothing else in the kit ends the
/// process.
[[noreturn]] void fatalError(const QString &message);

} // namespace vynlex
