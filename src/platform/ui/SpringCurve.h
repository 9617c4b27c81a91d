#pragma once

#include <QEasingCurve>

#include <chrono>

namespace vynlex {

/// The kit's one spring: a movement that overshoots its end a little and settles within the duration.
namespace spring {

inline constexpr std::chrono::milliseconds duration{500};
inline constexpr double dampingRatio = 0.7;
inline constexpr double initialVelocity = 1.0; ///< whole movements per second

/// How far the movement is (0 at its begin, 1 at its end, more where it overshoots) after `progress` of its duration.
[[nodiscard]] double position(double progress);

/// The same as the easing curve of an animation of that duration.
[[nodiscard]] QEasingCurve curve();

} // namespace spring

} // namespace vynlex
