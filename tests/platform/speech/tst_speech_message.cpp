#include <QtTest>

#include "platform/speech/SpeechMessage.h"
#include "platform/speech/Ssml.h"

using namespace vynlex;

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
    }

    void withoutAVoiceTheDefaultSpeaks() { QVERIFY(ssml("x", "").contains("name='en-US-AriaNeural'")); }
};

QTEST_GUILESS_MAIN(TestSpeechMessage)
#include "tst_speech_message.moc"
