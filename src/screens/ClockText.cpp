#include "screens/ClockText.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace vynlex {

QString clockText(int seconds)
{
    constexpr int hour = 3600;
    constexpr int minute = 60;
    const int shown = seconds % hour;
    return u"%1:%2"_s.arg(shown / minute, 2).arg(shown % minute, 2, 10, QLatin1Char('0'));
}

std::optional<QDateTime> momentFromWire(const QString &text)
{
    // The shape only; whether there is such a day and time is Qt's to say, which is laxer about the shape.
    static const QRegularExpression shape(QRegularExpression::anchoredPattern(
        u"[0-9]{4}-[0-9]{2}-[0-9]{2}T([01][0-9]|2[0-3]):[0-9]{2}:[0-9]{2}\\.[0-9]{3}(Z|[+-][0-9]{2}:?[0-9]{2})"_s));
    if (!shape.match(text).hasMatch())
        return {};
    const QDateTime moment = QDateTime::fromString(text, Qt::ISODateWithMs);
    return moment.isValid() ? std::optional(moment) : std::nullopt;
}

QString timeOfDayText(const QDateTime &moment)
{
    constexpr int noon = 12;
    const int hour = moment.time().hour();
    return u"%1:%2 %3"_s.arg(hour % noon == 0 ? noon : hour % noon)
        .arg(moment.time().minute(), 2, 10, QLatin1Char('0'))
        .arg(hour < noon ? "AM"_L1 : "PM"_L1);
}

} // namespace vynlex
