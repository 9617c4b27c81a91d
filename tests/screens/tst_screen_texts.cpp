#include "screens/ClockText.h"
#include "screens/InitialsImage.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

#include <QTest>

using namespace vynlex;
using namespace Qt::StringLiterals;

class tst_screen_texts : public QObject {
    Q_OBJECT

private slots:
    void clocksDropHours()
    {
        QCOMPARE(clockText(754), u"12:34"_s);
        QCOMPARE(clockText(3599), u"59:59"_s);
        QCOMPARE(clockText(3600), u" 0:00"_s);
        QCOMPARE(clockText(3725), u" 2:05"_s);
    }

    void aMomentIsOfOneForm_data()
    {
        addRows<QString, QString>({
            {"as the backend writes it", u"2026-01-31T09:15:00.250+0000"_s, u"2026-01-31T09:15:00.250Z"_s},
            {"another zone", u"2026-01-31T02:15:00.000+0530"_s, u"2026-01-30T20:45:00.000Z"_s},
            {"with a colon", u"2026-01-31T09:15:00.000-03:00"_s, u"2026-01-31T12:15:00.000Z"_s},
            {"Z", u"2024-02-29T00:00:00.000Z"_s, u"2024-02-29T00:00:00.000Z"_s},
            {"no zone", u"2026-01-31T09:15:00.000"_s, {}},
            {"no milliseconds", u"2026-01-31T09:15:00+0000"_s, {}},
            {"no such day", u"2026-02-29T09:15:00.000+0000"_s, {}},
            {"no such hour", u"2026-01-31T24:00:00.000+0000"_s, {}},
            {"foreign digits", u"२०२६-01-31T09:15:00.000+0000"_s, {}},
            {"more behind", u"2026-01-31T09:15:00.000+0000\n"_s, {}},
        });
    }
    void aMomentIsOfOneForm()
    {
        const auto [wire, utc] = currentRow<QString, QString>();
        const auto moment = momentFromWire(wire);
        QCOMPARE(moment.has_value(), !utc.isEmpty());
        if (moment)
            QCOMPARE(moment->toUTC().toString(Qt::ISODateWithMs), utc);
    }

    void timesAreInLatinLetters()
    {
        QLocale::setDefault(QLocale(QLocale::Bengali));
        const auto text = [](QTime time) { return timeOfDayText(QDateTime(QDate(2026, 1, 31), time)); };
        QCOMPARE(text(QTime(0, 0)), u"12:00 AM"_s);
        QCOMPARE(text(QTime(12, 30)), u"12:30 PM"_s);
        QCOMPARE(text(QTime(23, 59)), u"11:59 PM"_s);
        QCOMPARE(clockText(61), u" 1:01"_s);
        QLocale::setDefault(QLocale::c());
    }

    void initialsAreWholeCharacters()
    {
        for (const auto &[name, letters] : {std::pair(u"asha Rao"_s, u"AR"_s),
                                            {u"  Ravi  Kumar Das "_s, u"RKD"_s},
                                            {u"दीपा नायर"_s, u"दीना"_s}, // vowel signs stay
                                            {u"🦊 fox"_s, u"🦊F"_s}, // beyond 16 bits
                                            {u"  "_s, QString()}}) {
            QCOMPARE(initials(name), letters);
            QCOMPARE(initialsImage(name).text, letters);
            QCOMPARE(initialsImage(name).background.alpha(), 255);
        }
    }
};

template struct vynlex::InSuite<tst_screen_texts>;

#include "tst_screen_texts.moc"
