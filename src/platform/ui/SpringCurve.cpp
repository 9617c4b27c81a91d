#include "platform/ui/SpringCurve.h"

#include <cmath>

namespace vynlex::spring {

double position(double progress)
{
    if (progress <= 0)
        return 0;
    if (progress >= 1)
        return 1;
    constexpr double durationSeconds = std::chrono::duration<double>(duration).count();
    // The stiffness follows from the duration: at its end a thousandth of the movement is left.
    static const double decay = std::log(1000.0) / durationSeconds;
    static const double undamped = decay / dampingRatio;
    static const double frequency = undamped * std::sqrt(1 - dampingRatio * dampingRatio);
    const double time = progress * durationSeconds;
    return 1 - std::exp(-decay * time) *
                   (std::cos(frequency * time) + (decay - initialVelocity) / frequency * std::sin(frequency * time));
}

QEasingCurve curve()
{
    QEasingCurve easing;
    easing.setCustomType([](qreal progress) -> qreal { return position(progress); });
    return easing;
}

} // namespace vynlex::spring
