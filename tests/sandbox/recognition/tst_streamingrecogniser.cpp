#include "sandbox/recognition/StreamingRecogniser.h"

#include "sandbox/recognition/RecogniserModels.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/sandbox/recognition/Sounds.h"

#include <QTest>

#include <thread>

using namespace sandbox;
using namespace sounds;
using namespace vynlex;

namespace {

using Events = std::vector<RecognitionEvent>;

std::shared_ptr<RecogniserModels> models()
{
    static const auto shared = RecogniserModels::load();
    return shared;
}

Events heard(std::string_view locale, const Samples &samples, std::size_t chunk = 1600)
{
    StreamingRecogniser recogniser(models(), locale);
    Events events;
    for (std::size_t at = 0; at < samples.size(); at += chunk) {
        const auto part = recogniser.feed(std::span(samples).subspan(at, std::min(chunk, samples.size() - at)));
        events.insert(events.end(), part.begin(), part.end());
    }
    const auto last = recogniser.finish();
    events.insert(events.end(), last.begin(), last.end());
    return events;
}

template<typename Event> std::vector<Event> only(const Events &events)
{
    std::vector<Event> result;
    for (const auto &event : events)
        if (const auto *match = std::get_if<Event>(&event))
            result.push_back(*match);
    return result;
}

/// The kinds, times and texts of events: to compare and to print.
QByteArray described(const Events &events)
{
    QByteArrayList list;
    for (const auto &event : events) {
        list << QByteArray::number(qulonglong(event.index()));
        std::visit(
            [&](const auto &e) {
                list << QByteArray::number(qint64(e.offset.count()));
                if constexpr (requires { e.text; })
                    list << QByteArray::number(qint64(e.duration.count())) << e.text.c_str();
            },
            event);
    }
    return list.join(' ');
}

int ms(Ticks ticks)
{
    return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(ticks).count());
}

bool near(int actual, int expected, int tolerance)
{
    return std::abs(actual - expected) <= tolerance;
}

} // namespace

class StreamingRecogniserTest : public QObject {
    Q_OBJECT

private slots:
    void sentencesOfTheBookAreRecognised_data()
    {
        QTest::addColumn<QByteArray>("locale");
        QTest::addColumn<QByteArray>("voice");
        QTest::addColumn<QByteArray>("id");
        const auto rows = [](const char *locale, const char *voice, std::initializer_list<const char *> ids) {
            for (const char *id : ids)
                QTest::addRow("%s %s", locale, id) << QByteArray(locale) << QByteArray(voice) << QByteArray(id);
        };
        rows("en-US", "en-us+f3", {"dir.station", "travel.room", "help.pharmacy"});
        rows("en-IN", "en+f2", {"greet.howareyou", "travel.airport"});
        rows("hi-IN", "hi+f3", {"dir.station", "travel.room", "help.pharmacy"});
        rows("gu-IN", "gu+f3", {"dir.station", "travel.room", "help.pharmacy"});
        rows("mr-IN", "mr+f3", {"dir.station", "travel.room", "help.pharmacy"});
        rows("bn-IN", "bn+f3", {"dir.station", "travel.room", "help.pharmacy"});
        rows("te-IN", "te+f3", {"dir.station", "travel.room", "help.pharmacy"});
    }
    void sentencesOfTheBookAreRecognised()
    {
        QFETCH(QByteArray, locale);
        QFETCH(QByteArray, voice);
        QFETCH(QByteArray, id);
        const auto &book = models()->book().phrases();
        const auto phrase =
            std::find_if(book.begin(), book.end(), [&](const auto &p) { return p.id == id.toStdString(); });
        QVERIFY(phrase != book.end());
        const auto text = phrase->text.at(RecogniserModels::languageOf(locale.toStdString()));
        const auto sound = speech(text, voice.toStdString());
        const auto events = heard(locale.toStdString(), silence(500) + sound + silence(900));

        const auto phrases = only<RecognisedPhrase>(events);
        QVERIFY2(phrases.size() == 1 && phrases[0].text == text, described(events));
        QVERIFY(phrases[0].confidence > 0.5 && phrases[0].confidence <= 1);
        QVERIFY2(near(ms(phrases[0].offset), 500, 150), described(events));
        QVERIFY2(near(ms(phrases[0].offset + phrases[0].duration), 500 + static_cast<int>(sound.size() / 16), 200),
                 described(events));

        const auto starts = only<SpeechStarted>(events);
        const auto ends = only<SpeechEnded>(events);
        QVERIFY(starts.size() == 1 && starts[0].offset == phrases[0].offset);
        QVERIFY(ends.size() == 1 && ends[0].offset == phrases[0].offset + phrases[0].duration);

        const auto hypotheses = only<Hypothesis>(events);
        QVERIFY(!hypotheses.empty());
        for (const auto &hypothesis : hypotheses) {
            QVERIFY(hypothesis.offset == phrases[0].offset && hypothesis.duration <= phrases[0].duration);
            for (const char *mark : {".", ",", "?", "।", "W", "I"})
                QVERIFY2(hypothesis.text.find(mark) == std::string::npos, hypothesis.text.c_str());
        }
    }

    void whatIsNotInTheBookIsNoMatch_data()
    {
        addRows<QByteArray, Samples>({
            {"English", "en-US", speech("She bought seven yellow flowers at the market.", "en-us+f3")},
            {"Hindi", "hi-IN", speech("बच्चों को हाथियों की कहानियाँ पसंद हैं।", "hi+f3")},
            {"a burst of noise", "en-US", noise(1200, 3000)},
        });
    }
    void whatIsNotInTheBookIsNoMatch()
    {
        const auto [locale, samples] = currentRow<QByteArray, Samples>();
        const auto events = heard(locale.toStdString(), silence(500) + samples + silence(900));
        const auto phrases = only<RecognisedPhrase>(events);
        QVERIFY(!phrases.empty());
        for (const auto &phrase : phrases) {
            QVERIFY2(phrase.text.empty() && phrase.duration > Ticks(0), described(events));
            QVERIFY(phrase.confidence < 0.5);
        }
    }

    void silenceCausesNothing()
    {
        QCOMPARE(described(heard("hi-IN", {})), QByteArray());
        QCOMPARE(described(heard("hi-IN", silence(3000))), QByteArray());
        QCOMPARE(described(heard("hi-IN", noise(3000, 60))), QByteArray());
    }

    void utterancesFollowEachOtherHoweverTheSamplesCome()
    {
        const auto first = silence(400) + speech("Where is the railway station?", "en-us+f3") + silence(1000);
        const auto samples = first + speech("My room number is twelve.", "en-us+f3") + silence(1000);
        const auto events = heard("en-US", samples);
        const auto phrases = only<RecognisedPhrase>(events);
        QVERIFY2(phrases.size() == 2, described(events));
        QCOMPARE(phrases[0].text, "Where is the railway station?");
        QCOMPARE(phrases[1].text, "My room number is twelve.");
        QVERIFY2(near(ms(phrases[1].offset), static_cast<int>(first.size() / 16), 150), described(events));
        for (const std::size_t chunk : {std::size_t{37}, samples.size()})
            QCOMPARE(described(heard("en-US", samples, chunk)), described(events));
    }

    void streamsOnDifferentThreadsDoNotDisturbEachOther()
    {
        const auto english = silence(300) + speech("Where is the railway station?", "en-us+f3") + silence(800);
        const auto telugu = silence(300) + speech("రైల్వే స్టేషన్ ఎక్కడ ఉంది?", "te+f3") + silence(800);
        std::array<Events, 3> events;
        std::vector<std::thread> threads;
        threads.emplace_back([&] { events[0] = heard("en-US", english); });
        threads.emplace_back([&] { events[1] = heard("en-US", english); });
        threads.emplace_back([&] { events[2] = heard("te-IN", telugu); });
        for (auto &thread : threads)
            thread.join();
        QCOMPARE(described(events[0]), described(events[1]));
        QCOMPARE(only<RecognisedPhrase>(events[0]).at(0).text, "Where is the railway station?");
        QCOMPARE(only<RecognisedPhrase>(events[2]).at(0).text, "రైల్వే స్టేషన్ ఎక్కడ ఉంది?");
    }
};

template struct vynlex::InSuite<StreamingRecogniserTest>;

SUITE_MAIN(QCoreApplication)

#include "tst_streamingrecogniser.moc"
