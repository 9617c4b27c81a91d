#include <QTest>

#include <mutex>
#include <thread>

#include "platform/speech/PushAudioInputStream.h"
#include "platform/speech/SpeechConfig.h"
#include "platform/speech/SpeechMessage.h"
#include "platform/speech/Ssml.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

using namespace vynlex;

class TestSpeechConfig : public QObject {
    Q_OBJECT

private slots:
    void anEmptyKeyOrARegionThatIsNoHostLabelIsRefused_data()
    {
        addRows<QString, QString, bool>({
            {"good", "secret", "westeurope", true},
            {"longest label", "secret", QString(63, 'a'), true},
            {"no key", "", "westeurope", false},
            {"no region", "secret", "", false},
            {"another host", "secret", "evil.example/", false},
            {"hyphen first", "secret", "-west", false},
        });
    }
    void anEmptyKeyOrARegionThatIsNoHostLabelIsRefused()
    {
        const auto [key, region, accepted] = currentRow<QString, QString, bool>();
        const auto config = SpeechConfig::fromSubscription(key, region);
        QCOMPARE(config.has_value(), accepted);
        if (!config) {
            QVERIFY(!config.error().isEmpty());
            QVERIFY(!config.error().contains("secret"));
        }
    }
};

class TestSpeechMessage : public QObject {
    Q_OBJECT

private slots:
    void ssmlCarriesEveryTextSafely_data()
    {
        addRows<QString, QString>({
            {"markup", "a < b & c > d \"e\" 'f'", "a &lt; b &amp; c &gt; d &quot;e&quot; &apos;f&apos;"},
            {"injection", "</voice><audio src='x'/>", "&lt;/voice&gt;&lt;audio src=&apos;x&apos;/&gt;"},
            {"control characters", QString(QChar(1)) + "a" + QChar(0) + "\t\n" + QChar(0xffff), "a\t\n"},
            {"half a pair", QString(QChar(0xd83d)) + "a" + QChar(0xde00), "a"},
        });
    }
    void ssmlCarriesEveryTextSafely()
    {
        const auto [text, spoken] = currentRow<QString, QString>();
        QCOMPARE(QString::fromUtf8(ssml(text, "hi-IN-SwaraNeural")),
                 "<speak version='1.0' xmlns='http://www.w3.org/2001/10/synthesis' xml:lang='hi-IN'>"
                 "<voice name='hi-IN-SwaraNeural'>" +
                     spoken + "</voice></speak>");
        QVERIFY(ssml(text, "").contains("name='en-US-AriaNeural'"));
    }
};

class TestPushAudioInputStream : public QObject {
    Q_OBJECT

private slots:
    void whatWasWrittenBeforeReachesALateReader()
    {
        auto stream = PushAudioInputStream::create();
        PushAudioInputStream copy = stream;
        stream.write("ab");
        copy.write("cd");
        stream.close();
        copy.write("after the end");
        copy.close();
        QVERIFY(copy.isClosed());

        QByteArray heard;
        int closed = 0;
        stream.setReader([&](const QByteArray &pcm) { heard += pcm; }, [&] { ++closed; });
        QCOMPARE(heard, "abcd");
        QCOMPARE(closed, 1);
    }

    void theReaderMayLetGoFromWithinACall()
    {
        auto stream = PushAudioInputStream::create();
        int calls = 0;
        stream.setReader(
            [&](const QByteArray &) {
                ++calls;
                stream.setReader({}, {});
            },
            [] { QFAIL("the reader had let go"); });
        stream.write("ab");
        stream.write("cd");
        stream.close();
        QCOMPARE(calls, 1);

        QByteArray heard;
        stream.setReader([&](const QByteArray &pcm) { heard += pcm; }, [] {});
        QCOMPARE(heard, "cd");
    }

    void nothingIsLostOrMixedWhileAReaderTakesOver()
    {
        auto stream = PushAudioInputStream::create();
        std::thread writer([stream]() mutable {
            for (int i = 0; i < 20'000; ++i)
                stream.write(QByteArray::number(i) + '\n');
            stream.close();
        });
        std::mutex mutex;
        QByteArray heard;
        bool closed = false;
        for (int i = 0; i < 100; ++i) {
            stream.setReader(
                [&](const QByteArray &pcm) {
                    const std::lock_guard lock(mutex);
                    heard += pcm;
                },
                [&] { closed = true; });
            stream.setReader({}, {});
        }
        writer.join();
        stream.setReader([&](const QByteArray &pcm) { heard += pcm; }, [&] { closed = true; });
        QVERIFY(closed);

        QByteArray expected;
        for (int i = 0; i < 20'000; ++i)
            expected += QByteArray::number(i) + '\n';
        QVERIFY(heard == expected);
    }
};

template struct vynlex::InSuite<TestSpeechConfig>;
template struct vynlex::InSuite<TestSpeechMessage>;
template struct vynlex::InSuite<TestPushAudioInputStream>;

SUITE_MAIN(QCoreApplication)

#include "tst_speech_values.moc"
