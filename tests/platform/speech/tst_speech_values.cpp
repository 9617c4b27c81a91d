#include <QTest>

#include <mutex>
#include <thread>

#include "platform/speech/PushAudioInputStream.h"
#include "platform/speech/SpeechConfig.h"
#include "platform/speech/SpeechMessage.h"
#include "platform/speech/Ssml.h"
#include "tests/fakes/Suite.h"

using namespace vynlex;

class TestSpeechConfig : public QObject {
    Q_OBJECT

private slots:
    void anEmptyKeyOrARegionThatIsNoHostLabelIsRefused_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("region");
        QTest::addColumn<bool>("accepted");
        const auto row = [](const char *name, const QString &key, const QString &region, bool accepted) {
            QTest::newRow(name) << key << region << accepted;
        };
        row("good", "secret", "westeurope", true);
        row("hyphen and digits", "secret", "China-North2", true);
        row("longest label", "secret", QString(63, 'a'), true);
        row("no key", "", "westeurope", false);
        row("no region", "secret", "", false);
        row("too long", "secret", QString(64, 'a'), false);
        row("another host", "secret", "evil.example/", false);
        row("user info", "secret", "user@west", false);
        row("line feed", "secret", "westeurope\n", false);
        row("blank", "secret", "west europe", false);
        row("hyphen first", "secret", "-west", false);
        row("not ASCII", "secret", QString::fromUtf8("wésteurope"), false);
    }
    void anEmptyKeyOrARegionThatIsNoHostLabelIsRefused()
    {
        QFETCH(QString, key);
        QFETCH(QString, region);
        const auto config = SpeechConfig::fromSubscription(key, region);
        QTEST(config.has_value(), "accepted");
        if (!config) {
            QVERIFY(!config.error().isEmpty());
            QVERIFY(!config.error().contains("secret"));
        }
    }

    void copiesShareTheirSettings()
    {
        auto config = SpeechConfig::fromSubscription("key", "region").value();
        const SpeechConfig copy = config;
        QCOMPARE(copy.speechRecognitionLanguage(), "en-US");
        QVERIFY(!copy.isDictationEnabled());

        config.enableDictation();
        config.setSpeechRecognitionLanguage("hi-IN");
        config.setSpeechSynthesisVoiceName("hi-IN-SwaraNeural");

        QVERIFY(copy.isDictationEnabled());
        QCOMPARE(copy.speechRecognitionLanguage(), "hi-IN");
        QCOMPARE(copy.speechSynthesisVoiceName(), "hi-IN-SwaraNeural");
        QCOMPARE(copy.subscriptionKey(), "key");
        QCOMPARE(copy.region(), "region");
    }
};

class TestSpeechMessage : public QObject {
    Q_OBJECT

private slots:
    void messagesHaveTheBytesOfTheProtocol()
    {
        const QDateTime time(QDate(2026, 11, 21), QTime(8, 23, 30, 48), Qt::OffsetFromUTC, 3600);
        const SpeechMessage config{"speech.config", "1ccfb9f99f4346578ce96bf7cfebc5e8", "application/json",
                                   "{\"a\":1}"};
        QCOMPARE(encodeText(config, time), "Path: speech.config\r\n"
                                           "X-RequestId: 1ccfb9f99f4346578ce96bf7cfebc5e8\r\n"
                                           "X-Timestamp: 2026-11-21T07:23:30.048Z\r\n"
                                           "Content-Type: application/json\r\n"
                                           "\r\n"
                                           "{\"a\":1}");
        const SpeechMessage audio{"audio", "1ccfb9f99f4346578ce96bf7cfebc5e8", {}, QByteArray("\0\r\n\r\n\xff", 6)};
        QCOMPARE(encodeBinary(audio, time), QByteArray::fromHex("0063") +
                                                "Path: audio\r\n"
                                                "X-RequestId: "
                                                "1ccfb9f99f4346578ce96bf7cfebc5e8\r\n"
                                                "X-Timestamp: 2026-11-21T07:23:30.048Z\r\n" +
                                                QByteArray("\0\r\n\r\n\xff", 6));
        QCOMPARE(decodeText(encodeText(config, time)), config);
        QCOMPARE(decodeBinary(encodeBinary(audio, time)), audio);
    }

    void whatIsNoMessageIsNothing_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("binary");
        QTest::newRow("empty") << QByteArray() << QByteArray();
        QTest::newRow("one byte") << QByteArray("P") << QByteArray("\0", 1);
        QTest::newRow("no end of headers") << QByteArray("Path: turn.end\r\n") << QByteArray("\x40\x00Path: audio", 13);
        QTest::newRow("no path") << QByteArray("X-RequestId: 1\r\n\r\n{}") << QByteArray("\0\0", 2);
        QTest::newRow("empty path") << QByteArray("Path:\r\n\r\n{}") << QByteArray("\0\x06Path: ", 8);
        QTest::newRow("no colon") << QByteArray("Path turn.end\r\n\r\n{}") << QByteArray("\0\x04Path", 6);
    }
    void whatIsNoMessageIsNothing()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, binary);
        QVERIFY(!decodeText(text));
        QVERIFY(!decodeBinary(binary));
    }

    void ssmlCarriesEveryTextSafely_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("spoken");
        QTest::newRow("markup") << "a < b & c > d \"e\" 'f'"
                                << "a &lt; b &amp; c &gt; d &quot;e&quot; &apos;f&apos;";
        QTest::newRow("injection") << "</voice><audio src='x'/>"
                                   << "&lt;/voice&gt;&lt;audio src=&apos;x&apos;/&gt;";
        QTest::newRow("percent") << "100%3 %1 %2"
                                 << "100%3 %1 %2";
        QTest::newRow("scripts") << QString::fromUtf8("नमस्ते ગુજરાતી 😀") << QString::fromUtf8("नमस्ते ગુજરાતી 😀");
        QTest::newRow("control characters") << QString(QChar(1)) + "a" + QChar(0) + "\t\n" + QChar(0xffff) << "a\t\n";
        QTest::newRow("half a pair") << QString(QChar(0xd83d)) + "a" + QChar(0xde00) << "a";
    }
    void ssmlCarriesEveryTextSafely()
    {
        QFETCH(QString, text);
        QFETCH(QString, spoken);
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

static const InSuite<TestSpeechConfig> config;
static const InSuite<TestSpeechMessage> message;
static const InSuite<TestPushAudioInputStream> stream;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return runSuite(argc, argv);
}

#include "tst_speech_values.moc"
