#pragma once

#include <QByteArray>
#include <QString>

namespace vynlex {

/// The document that asks the service to read `text` with `voiceName` ("hi-IN-SwaraNeural"; "en-US-AriaNeural" when
/// empty). Characters that XML cannot carry, such as control characters, are left out.
QByteArray ssml(const QString &text, const QString &voiceName);

} // namespace vynlex
