#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace vynlex {

/// A length of time for the clocks of a recording: minutes padded by a blank, seconds by a nought (" 2:05"). Hours are
/// dropped, deliberately. `seconds` is not negative.
[[nodiscard]] QString clockText(int seconds);

/// A moment as the backend writes it, "2026-01-31T09:15:00.000+0000". The zone may also be "+05:30" or "Z"; all the
/// rest is exactly of this form, or there is no moment.
[[nodiscard]] std::optional<QDateTime> momentFromWire(const QString &text);

/// The time of day where `moment` is kept, "9:15 AM", in Latin letters and digits whatever the language of the device.
[[nodiscard]] QString timeOfDayText(const QDateTime &moment);

} // namespace vynlex
