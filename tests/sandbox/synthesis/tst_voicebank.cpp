#include "sandbox/synthesis/VoiceBank.h"

#include <QTest>

#include <cmath>
#include <vector>

#include "tests/fakes/Rows.h"

using namespace vynlex;
using sandbox::VoiceBank;

namespace {

using Samples = std::vector<std::int16_t>;

Samples spoken(VoiceBank &bank, std::string_view text, std::string_view voice, int rate)
{
    Samples all;
    bank.speak(text, voice, rate, [&](std::span<const std::int16_t> piece) {
        all.insert(all.end(), piece.begin(), piece.end());
        return true;
    });
    return all;
}

double rms(const Samples &samples)
{
    double sum = 0;
    for (const auto s : samples)
        sum += static_cast<double>(s) * s;
    return samples.empty() ? 0 : std::sqrt(sum / static_cast<double>(samples.size()));
}

} // namespace

class VoiceBankTest : public QObject {
    Q_OBJECT

private slots:
    void everyVoiceSpeaksItsLanguage_data()
    {
        const QByteArray english = "Where is the railway station?";
        addRows<QByteArray>({
            {"en-US-AriaNeural", english},
            {"en-IN-NeerjaNeural", english},
            {"en-IN-PrabhatNeural", english},
            {"hi-IN-SwaraNeural", "रेलवे स्टेशन कहाँ है?"},
            {"gu-IN-DhwaniNeural", "રેલવે સ્ટેશન ક્યાં છે?"},
            {"mr-IN-AarohiNeural", "रेल्वे स्टेशन कुठे आहे?"},
            {"bn-IN-TanishaaNeural", "রেল স্টেশন কোথায়?"},
            {"te-IN-ShrutiNeural", "రైల్వే స్టేషన్ ఎక్కడ ఉంది?"},
        });
    }
    void everyVoiceSpeaksItsLanguage()
    {
        const auto [text] = currentRow<QByteArray>();
        const std::string voice = QTest::currentDataTag();
        VoiceBank bank;
        QVERIFY(bank.has(voice));
        const auto audio = spoken(bank, text.toStdString(), voice, 16000);
        const double seconds = static_cast<double>(audio.size()) / 16000;
        // A voice that does not know the script spells every letter, which takes far longer.
        QVERIFY2(seconds > 0.8 && seconds < 3.5, QByteArray::number(seconds));
        QVERIFY2(rms(audio) > 800, QByteArray::number(rms(audio)));
    }

    void theSampleRateIsTheCallers()
    {
        VoiceBank bank;
        const auto native = spoken(bank, "Hello.", "en-US-AriaNeural", 22050);
        for (const int rate : {8000, 16000, 24000, 48000}) {
            const auto audio = spoken(bank, "Hello.", "en-US-AriaNeural", rate);
            const double expected = static_cast<double>(native.size()) * rate / 22050;
            QVERIFY(std::abs(static_cast<double>(audio.size()) - expected) < 3);
            QVERIFY(std::abs(rms(audio) / rms(native) - 1) < 0.25);
        }
    }

    void speakingStopsWhenTheSinkRefuses()
    {
        VoiceBank bank;
        int pieces = 0;
        bank.speak("This is a long sentence, so that there are many pieces. And another.", "en-US-AriaNeural", 16000,
                   [&](std::span<const std::int16_t>) { return ++pieces < 3; });
        QCOMPARE(pieces, 3);
        QVERIFY(spoken(bank, "Hello.", "en-US-AriaNeural", 16000).size() > 4000);
    }
};

QTEST_APPLESS_MAIN(VoiceBankTest)
#include "tst_voicebank.moc"
