#include "sandbox/recognition/EndPointer.h"

#include "tests/sandbox/recognition/Sounds.h"

#include <QTest>

using sandbox::EndPointer;
using namespace sounds;

namespace {

struct Utterance {
    int startedAtMs; ///< when it was noticed
    int endedAtMs;
    int firstMs; ///< where it lies
    int endMs;
    std::size_t clipMs;
};

struct Heard {
    std::vector<Utterance> utterances;
    int pauses = 0;
};

int ms(std::int64_t samples)
{
    return static_cast<int>(samples / 16);
}

Heard listen(const Samples &samples)
{
    Heard heard;
    EndPointer endPointer;
    int startedAt = 0;
    const auto note = [&](std::optional<EndPointer::Event> event, std::size_t at) {
        if (event == EndPointer::Event::Started)
            startedAt = static_cast<int>(at / 16);
        if (event == EndPointer::Event::Paused)
            ++heard.pauses;
        if (event != EndPointer::Event::Ended)
            return;
        const auto clip = endPointer.clip();
        heard.utterances.push_back(
            {startedAt, static_cast<int>(at / 16), ms(clip.firstSample), ms(clip.endSample), clip.samples.size() / 16});
    };
    std::size_t at = 0;
    for (; at + EndPointer::frameSamples <= samples.size(); at += EndPointer::frameSamples) {
        const std::span<const std::int16_t, EndPointer::frameSamples> frame(samples.data() + at,
                                                                            EndPointer::frameSamples);
        note(endPointer.push(frame), at + EndPointer::frameSamples);
    }
    note(endPointer.finish(), at);
    return heard;
}

bool near(int actual, int expected, int tolerance)
{
    return std::abs(actual - expected) <= tolerance;
}

} // namespace

class EndPointerTest : public QObject {
    Q_OBJECT

private slots:
    void anUtteranceIsFoundWhereItIs_data()
    {
        QTest::addColumn<Samples>("samples");
        QTest::addColumn<int>("firstMs");
        QTest::addColumn<int>("endMs");
        const auto burst = tone(800, 300, 5000);
        QTest::newRow("in digital silence") << silence(1000) + burst + silence(1000) << 920 << 1880;
        QTest::newRow("from the first sample") << burst + silence(1000) << 0 << 880;
        QTest::newRow("quiet") << silence(1000) + scaled(burst, 0.02) + silence(1000) << 920 << 1880;
        QTest::newRow("over white noise, 20 dB below")
            << mixed(silence(1000) + burst + silence(1000), noise(2800, 350)) << 920 << 1880;
        QTest::newRow("noise from the first sample, loud")
            << mixed(silence(2000) + burst + silence(1000), noise(3800, 500)) << 1920 << 2880;
        QTest::newRow("a fricative") << silence(1000) + noise(800, 400) + silence(1000) << 920 << 1880;
        QTest::newRow("offset of the converter")
            << mixed(silence(1000) + burst + silence(1000), Samples(2800 * 16, 700)) << 920 << 1880;
        QTest::newRow("a word, a pause, a word")
            << silence(1000) + tone(300, 300, 5000) + silence(200) + tone(300, 300, 5000) + silence(1000) << 920
            << 1880;
    }
    void anUtteranceIsFoundWhereItIs()
    {
        QFETCH(Samples, samples);
        QFETCH(int, firstMs);
        QFETCH(int, endMs);
        const auto heard = listen(samples);
        QCOMPARE(heard.utterances.size(), 1U);
        const auto &utterance = heard.utterances.front();
        QVERIFY2(near(utterance.firstMs, firstMs, 30), QByteArray::number(utterance.firstMs));
        QVERIFY2(near(utterance.endMs, endMs, 30), QByteArray::number(utterance.endMs));
    }

    void whatIsNoSpeechIsNoUtterance_data()
    {
        QTest::addColumn<Samples>("samples");
        QTest::newRow("nothing") << Samples{};
        QTest::newRow("digital silence") << silence(5000);
        QTest::newRow("noise") << noise(5000, 100);
        QTest::newRow("a click") << silence(1000) + tone(30, 1000, 20000) + silence(1000);
        QTest::newRow("clicks far apart") << silence(500) + tone(30, 1000, 9000) + silence(300) + tone(30, 1000, 9000) +
                                                 silence(300) + tone(30, 1000, 9000) + silence(500);
    }
    void whatIsNoSpeechIsNoUtterance()
    {
        QFETCH(Samples, samples);
        QVERIFY(listen(samples).utterances.empty());
    }

    void itEndsAfterSixHundredMillisecondsOfQuiet()
    {
        const auto heard = listen(silence(1000) + tone(500, 300, 5000) + silence(2000));
        QCOMPARE(heard.utterances.size(), 1U);
        QVERIFY(near(heard.utterances[0].startedAtMs, 1060, 30));
        QVERIFY(near(heard.utterances[0].endedAtMs, 2100, 30));
        QCOMPARE(heard.pauses, 1);
    }

    void aPauseThatIsLongEnoughParts()
    {
        const auto word = tone(500, 300, 5000);
        QCOMPARE(listen(silence(500) + word + silence(450) + word + silence(800)).utterances.size(), 1U);
        const auto parted = listen(silence(500) + word + silence(700) + word + silence(800));
        QCOMPARE(parted.utterances.size(), 2U);
        QVERIFY(near(parted.utterances[1].firstMs, 1620, 30));
    }

    void pausesAreShortenedInTheClipOnly()
    {
        const auto word = tone(500, 300, 5000);
        const auto utterance = listen(silence(500) + word + silence(450) + word + silence(800)).utterances.at(0);
        QVERIFY(near(utterance.endMs - utterance.firstMs, 1610, 30));
        QVERIFY(near(static_cast<int>(utterance.clipMs), 1280, 40));
    }

    void theEndOfTheStreamEndsAnUtterance()
    {
        const auto heard = listen(silence(500) + tone(700, 300, 5000));
        QCOMPARE(heard.utterances.size(), 1U);
        QVERIFY(near(heard.utterances[0].endMs, 1200, 10));
    }

    void whoNeverStopsIsCut()
    {
        Samples samples = silence(500);
        for (int i = 0; i < 70; ++i)
            samples = std::move(samples) + tone(250, 300, 5000) + silence(250);
        const auto heard = listen(samples + silence(1000));
        QCOMPARE(heard.utterances.size(), 3U);
        QVERIFY(near(heard.utterances[0].endMs - heard.utterances[0].firstMs, 15000, 300));
        QVERIFY(heard.utterances[1].firstMs >= heard.utterances[0].endMs);
    }

    void aNoiseThatSetsInIsLearnt()
    {
        const auto room = silence(1000) + noise(20000, 200);
        const auto heard = listen(room + mixed(tone(800, 300, 5000), noise(800, 200, 2)) + noise(1500, 200, 3));
        QVERIFY(!heard.utterances.empty());
        const auto &last = heard.utterances.back();
        QVERIFY2(near(last.firstMs, 20920, 40), QByteArray::number(last.firstMs));
        QVERIFY2(near(last.endMs, 21880, 40), QByteArray::number(last.endMs));
    }
};

QTEST_APPLESS_MAIN(EndPointerTest)
#include "tst_endpointer.moc"
