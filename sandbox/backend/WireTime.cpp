#include "sandbox/backend/WireTime.h"

#include <array>
#include <cstdio>

namespace sandbox {

using namespace std::chrono;

Instant now()
{
    return time_point_cast<milliseconds>(system_clock::now());
}

std::string toWireTime(Instant instant)
{
    const auto day = floor<days>(instant);
    const year_month_day date(day);
    const hh_mm_ss time(instant - day);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03d+0000", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
    return text.data();
}

std::optional<Instant> fromWireTime(const std::string &text)
{
    int y = 0;
    unsigned m = 0;
    unsigned d = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
    // NOLINTNEXTLINE(cert-err34-c): what was read is written again and compared
    if (std::sscanf(text.c_str(), "%4d-%2u-%2uT%2d:%2d:%2d.%3d+0000", &y, &m, &d, &hour, &minute, &second,
                    &millisecond) != 7)
        return std::nullopt;
    const year_month_day date{year(y), month(m), day(d)};
    if (!date.ok())
        return std::nullopt;
    const Instant instant =
        sys_days(date) + hours(hour) + minutes(minute) + seconds(second) + milliseconds(millisecond);
    if (toWireTime(instant) != text)
        return std::nullopt;
    return instant;
}

} // namespace sandbox
