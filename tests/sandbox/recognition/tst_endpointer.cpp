#include "sandbox/recognition/EndPointer.h"

#include "tests/fakes/Rows.h"
#include "tests/sandbox/recognition/Sounds.h"

#include <QTest>

using sandbox::EndPointer;
using namespace sounds;
using namespace vynlex;

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
        const auto burst = tone(800, 300, 5000);
        addRows<Samples, int, int>({
            {"in digital silence", silence(1000) + burst + silence(1000), 920, 1880},
            {"quiet", silence(1000) + scaled(burst, 0.02) + silence(1000), 920, 1880},
            {"over white noise, 20 dB below", mixed(silence(1000) + burst + silence(1000), noise(2800, 350)), 920,
             1880},
            {"offset of the converter", mixed(silence(1000) + burst + silence(1000), Samples(2800 * 16, 700)), 920,
             1880},
            {"a word, a pause, a word",
             silence(1000) + tone(300, 300, 5000) + silence(200) + tone(300, 300, 5000) + silence(1000), 920, 1880},
        });
    }
    void anUtteranceIsFoundWhereItIs()
    {
        const auto [samples, firstMs, endMs] = currentRow<Samples, int, int>();
        const auto heard = listen(samples);
        QCOMPARE(heard.utterances.size(), 1U);
        const auto &utterance = heard.utterances.front();
        QVERIFY2(near(utterance.firstMs, firstMs, 30), QByteArray::number(utterance.firstMs));
        QVERIFY2(near(utterance.endMs, endMs, 30), QByteArray::number(utterance.endMs));
    }

    void whatIsNoSpeechIsNoUtterance_data()
    {
        addRows<Samples>({
            {"nothing", Samples{}},
            {"digital silence", silence(5000)},
            {"a click", silence(1000) + tone(30, 1000, 20000) + silence(1000)},
        });
    }
    void whatIsNoSpeechIsNoUtterance()
    {
        const auto [samples] = currentRow<Samples>();
        QVERIFY(listen(samples).utterances.empty());
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
