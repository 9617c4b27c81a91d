#include "sandbox/speech/SpeechMessage.h"
#include "sandbox/speech/SpeechUpgrade.h"
#include "sandbox/speech/Ssml.h"
#include "sandbox/speech/SynthesisSession.h"
#include "sandbox/speech/WaveHeader.h"

#include <QDataStream>
#include <QTest>

#include <functional>

#include "tests/fakes/Rows.h"

using namespace sandbox;
using namespace vynlex;

namespace {

const std::string id = "1CCFB9F99F4346578CE96BF7CFEBC5E8";

QByteArray headers(const QByteArray &path, const QByteArray &requestId = QByteArray::fromStdString(id))
{
    return "Path: " + path + "\r\nX-RequestId: " + requestId + "\r\nX-Timestamp: 2026-11-21T07:23:30.048Z\r\n";
}

QByteArray binary(const QByteArray &block, const QByteArray &body)
{
    const char length[] = {static_cast<char>(block.size() >> 8), static_cast<char>(block.size() & 0xff)};
    return QByteArray(length, 2) + block + body;
}

/// The close code that `action` leads to; 0 when it is content.
int codeOf(const std::function<void()> &action)
{
    try {
        action();
        return 0;
    } catch (const ProtocolError &error) {
        return error.code();
    }
}

QByteArray waveHeader(quint16 encoding, quint16 channels, quint32 rateHz)
{
    QByteArray header("RIFF\0\0\0\0WAVEfmt \x10\0\0\0", 20);
    QDataStream stream(&header, QIODevice::Append);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << encoding << channels << rateHz << rateHz * channels * 2 << quint16(channels * 2) << quint16(16);
    return header + QByteArray("data\0\0\0\0", 8);
}

QByteArray inVoice(const QByteArray &inside)
{
    return "<speak version='1.0' xml:lang='en-US'><voice name='V'>" + inside + "</voice></speak>";
}

} // namespace

class SpeechWireTest : public QObject {
    Q_OBJECT

private slots:
    void whatBreaksTheFramingClosesTheConnection_data()
    {
        const QByteArray good = headers("telemetry");
        addRows<bool, QByteArray, int>({
            {"no empty line", false, good, 1007},
            {"headers too long", false, good + "X: " + QByteArray(8192, 'x') + "\r\n\r\n{}", 1007},
            {"no path", false, QByteArray(good).replace("Path", "Paht") + "\r\n{}", 1002},
            {"request id with dashes", false, headers("a", "1ccfb9f9-9f43-4657-8ce9-6bf7cfebc5e8") + "\r\n{}", 1002},
            {"no timestamp", false, QByteArray(good).replace("X-Timestamp", "Time") + "\r\n{}", 1002},
            {"timestamp not UTC", false, QByteArray(good).replace("048Z", "048+01:00") + "\r\n{}", 1002},
            {"audio as text", false, headers("audio") + "\r\n", 1007},
            {"last line open", true, binary(headers("audio").chopped(2), "x"), 1007},
            {"empty line in the block", true, binary(headers("audio") + "\r\n", "x"), 1007},
        });
    }
    void whatBreaksTheFramingClosesTheConnection()
    {
        const auto [isBinary, data, code] = currentRow<bool, QByteArray, int>();
        QCOMPARE(codeOf([&] { (void)parseSpeechMessage({isBinary, data.toStdString()}); }), code);
    }

    void audioMustBeSixteenKilohertzMono_data()
    {
        const QByteArray good = waveHeader(1, 1, 16000);
        addRows<QByteArray, int>({
            {"as clients send it", good, 0},
            {"another chunk first", QByteArray(good).insert(12, QByteArray("LIST\x03\0\0\0abc\0", 12)), 0},
            {"8 kHz", waveHeader(1, 1, 8000), 1007},
            {"stereo", waveHeader(1, 2, 16000), 1007},
            {"A-law", waveHeader(6, 1, 16000), 1007},
            {"cut", good.chopped(1), 1007},
            {"no format", QByteArray(good).remove(12, 24), 1007},
            {"chunk larger than the message", QByteArray(good).replace(16, 1, "\xff"), 1007},
        });
    }
    void audioMustBeSixteenKilohertzMono()
    {
        const auto [body, code] = currentRow<QByteArray, int>();
        const auto bytes = body.toStdString();
        QCOMPARE(codeOf([&] { (void)withoutWaveHeader(bytes); }), code);
        if (code == 0)
            QCOMPARE(QByteArray::fromStdString(std::string(withoutWaveHeader(bytes))),
                     body.mid(body.indexOf("data") + 8));
    }

    void ssmlGivesTheTextOfEachVoice()
    {
        const QByteArray ssml =
            "<?xml version='1.0'?><speak version='1.0' xmlns='http://www.w3.org/2001/10/synthesis' "
            "xmlns:mstts='http://www.w3.org/2001/mstts' xml:lang='en-US'>\n"
            "<voice name='A'>Fish &amp; &quot;chips&quot; &lt;b&gt; &#x91C;<!-- not said --></voice>\n"
            "<voice name=\"B\"><mstts:express-as style='sad'><prosody rate='-10%'>slow <emphasis>very</emphasis>"
            "</prosody></mstts:express-as><![CDATA[ <raw>]]><sub alias='World Wide Web'>WWW</sub>"
            "<s>one</s><break time='1s'/>two</voice></speak>";
        const auto spoken = parseSsml(ssml.toStdString());
        QCOMPARE(spoken.size(), 2U);
        QCOMPARE(spoken[0].voiceName + ": " + spoken[0].text, "A: Fish & \"chips\" <b> ज");
        QCOMPARE(spoken[1].voiceName + ": " + spoken[1].text, "B: slow very <raw>World Wide Web\none\n\ntwo");
    }

    void badSsmlIsRefused_data()
    {
        addRows<QByteArray>({
            {"empty", {}},
            {"bare ampersand", inVoice("fish & chips")},
            {"unknown entity", inVoice("a&nbsp;b")},
            {"text without a voice", "<speak>Hi<voice name='V'>Hi</voice></speak>"},
            {"voice without a name", "<speak><voice>Hi</voice></speak>"},
            {"invalid UTF-8", inVoice("\xff")},
            {"document type", QByteArray("<!DOCTYPE speak [<!ENTITY a 'aaaa'>]>") + inVoice("&a;")},
            {"deep", inVoice(QByteArray("<p>").repeated(1000) + QByteArray("</p>").repeated(1000))},
        });
    }
    void badSsmlIsRefused()
    {
        const auto [ssml] = currentRow<QByteArray>();
        QCOMPARE(codeOf([&] { (void)parseSsml(ssml.toStdString()); }), 1007);
    }

    void anUpgradeNeedsAKeyAConnectionAndALanguage_data()
    {
        const QByteArray connection = QByteArray::fromStdString(id);
        const QByteArray language = "language=hi-IN&format=simple";
        addRows<QByteArray, QByteArray, QByteArray, int>({
            {"headers", language, "good", connection, 0},
            {"parameters", language + "&Ocp-Apim-Subscription-Key=good&X-ConnectionId=" + connection, "", "", 0},
            {"no key", language, "", connection, 401},
            {"wrong key", language, "bad", connection, 401},
            {"no connection id", language, "good", "", 400},
            {"no language", "format=simple", "good", connection, 400},
            {"language without a model", "language=de-DE", "good", connection, 400},
            {"silence not a number", language + "&initialSilenceTimeoutMs=soon", "good", connection, 400},
        });
    }
    void anUpgradeNeedsAKeyAConnectionAndALanguage()
    {
        const auto [query, keyHeader, idHeader, status] = currentRow<QByteArray, QByteArray, QByteArray, int>();
        HttpRequest request;
        request.target("/speech/recognition/dictation/cognitiveservices/v1?" + query.toStdString());
        if (!keyHeader.isEmpty())
            request.set("ocp-apim-subscription-key", keyHeader.toStdString());
        if (!idHeader.isEmpty())
            request.set("X-ConnectionId", idHeader.toStdString());
        const auto refusal = recognitionRefusalOf(request, {{"good"}, {}});
        QCOMPARE(refusal ? static_cast<int>(refusal->result_int()) : 0, status);
        if (!refusal)
            QVERIFY(recognitionParametersOf(request).mode == RecognitionMode::Dictation);
    }
};

QTEST_APPLESS_MAIN(SpeechWireTest)
#include "tst_speech_wire.moc"
