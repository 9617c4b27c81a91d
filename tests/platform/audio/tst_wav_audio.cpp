#include <QTemporaryDir>
#include <QTest>

#include <vector>

#include "AudioPortContract.h"
#include "platform/audio/WavAudioPlayer.h"
#include "platform/audio/WavFile.h"
#include "platform/audio/WavMicrophone.h"
#include "platform/dispatch/Guarded.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

using namespace vynlex;

using contract::ramp;
using SampleType = AudioFormat::SampleType;
using Pace = WavMicrophone::Pace;

namespace {

const AudioFormat speech{16000, 1, SampleType::Int16};

contract::Microphone fakeMicrophone()
{
    const auto audio = std::make_shared<FakeAudio>();
    auto engine = audio->makeEngine();
    return {std::move(engine), [audio] { audio->lastCapture().hearSilence(); }};
}

contract::Microphone wavMicrophone(Pace pace)
{
    WavMicrophone microphone(pace);
    auto engine = microphone.makeEngine();
    // In a hurry it falls silent after a while, so it is given something to say each time.
    return {std::move(engine), [microphone]() mutable {
                if (microphone.waitingSounds() < 3)
                    microphone.say("sound", {{48000, 1, SampleType::Int16}, QByteArray(4800, '\x22')});
            }};
}

/// Collects what a tap hears.
struct Recorder {
    Guarded<QByteArray> data;

    AudioEngine::Tap tap()
    {
        return [this](const PcmBuffer &buffer) { data.with([&](QByteArray &all) { all += buffer.data; }); };
    }
    qsizetype size()
    {
        return data.with([](QByteArray &all) { return all.size(); });
    }
};

} // namespace

class TestWavAudio : public QObject {
    Q_OBJECT

private slots:
    void microphonesKeepTheirPromises()
    {
        for (const auto &make :
             {std::function(fakeMicrophone), std::function([] { return wavMicrophone(Pace::RealTime); }),
              std::function([] { return wavMicrophone(Pace::AsFastAsAccepted); })}) {
            contract::engineKeepsItsPromises(make);
            contract::aTapMayRemoveItselfAndStopTheEngine(make);
        }
        const QString message = fatalErrorOf([] {
            const auto engine = WavMicrophone(Pace::RealTime).makeEngine();
            engine->installTap(10, [](const PcmBuffer &) {});
            engine->installTap(10, [](const PcmBuffer &) {});
        });
        QVERIFY(message.contains("Remove it first"));
    }

    void loudspeakersKeepTheirPromises()
    {
        FakeAudio audio;
        contract::playerKeepsItsPromises([&] { return audio.makePlayer(); },
                                         [&] { QVERIFY(audio.lastPlayback().complete()); });
        // Only in real time: nobody can stop what is heard at once.
        const QTemporaryDir folder;
        int number = 0;
        contract::playerKeepsItsPromises(
            [&] {
                const QString path = folder.filePath(QString::number(++number));
                return std::make_unique<WavAudioPlayer>(path, WavAudioPlayer::Pace::RealTime);
            },
            {});
    }

    void everySampleOfAFileIsHeardAndThenABoundedSilence_data()
    {
        addRows<double, int, bool>({
            {"8 kHz", 8000.0, 1, false},
            {"44.1 kHz, stereo", 44100.0, 2, false},
            {"192 kHz, float", 192000.0, 1, true},
        });
    }
    void everySampleOfAFileIsHeardAndThenABoundedSilence()
    {
        const auto [rateHz, channels, isFloat] = currentRow<double, int, bool>();
        const QTemporaryDir folder;
        const PcmBuffer sound{{rateHz, channels, isFloat ? SampleType::Float32 : SampleType::Int16}, ramp(20'000)};
        QVERIFY(WavFile::write(folder.filePath("a.wav"), sound));

        WavMicrophone microphone(Pace::AsFastAsAccepted);
        QVERIFY(microphone.say(folder.filePath("a.wav")));
        const auto engine = microphone.makeEngine();
        QVERIFY(engine->inputFormat() == sound.format);
        Recorder recorder;
        engine->installTap(100, recorder.tap());
        QVERIFY(engine->start());

        const qsizetype all = sound.data.size() + static_cast<qsizetype>(2 * rateHz) * sound.format.bytesPerFrame();
        // The sound ends within a step of 10 ms, which silence fills.
        const qsizetype slack = static_cast<qsizetype>(rateHz / 50) * sound.format.bytesPerFrame();
        TRY_VERIFY(recorder.size() >= all - slack);
        // The next sound proves that nothing more was to come.
        const QByteArray other(10'000, '\x33');
        microphone.say("next", {sound.format, other});
        TRY_VERIFY(recorder.data.copy().contains(other));
        const QByteArray heard = recorder.data.copy();
        QVERIFY(heard.startsWith(sound.data));
        const qsizetype next = heard.indexOf(other);
        QVERIFY(std::abs(next - all) <= slack);
        QCOMPARE(heard.mid(sound.data.size(), next - sound.data.size()), QByteArray(next - sound.data.size(), '\0'));
        engine->stop();
    }

    void theHostIsToldWhenASoundWasHeard()
    {
        WavMicrophone microphone(Pace::RealTime, speech);
        Guarded<std::vector<WavMicrophone::Said>> said;
        microphone.setObserver(
            [&](const WavMicrophone::Said &one) { said.with([&](auto &list) { list.push_back(one); }); });
        microphone.say("one", {speech, ramp(1600)});
        microphone.say("two", {speech, ramp(3200)});
        const auto engine = microphone.makeEngine();
        Recorder recorder;
        engine->installTap(160, recorder.tap());
        QVERIFY(engine->start());
        TRY_COMPARE(said.copy().size(), std::size_t(2));
        const auto list = said.copy();
        QVERIFY(list[0].name == "one" && list[1].name == "two");
        // A device never delivers early: 20 steps of 10 ms, the first of which is the begin.
        QVERIFY(list[1].end - list[1].begin >= std::chrono::milliseconds(150));
        QVERIFY(list[1].begin >= list[0].end);
        QCOMPARE(recorder.data.copy().left(9600), ramp(1600) + ramp(3200));
        // The room is silent, not dead.
        const qsizetype size = recorder.size();
        TRY_VERIFY(recorder.size() > size);
    }

    void aSoundInAnotherFormatIsConvertedWhileTheEngineRuns()
    {
        WavMicrophone microphone(Pace::AsFastAsAccepted, {48000, 2, SampleType::Float32});
        const auto engine = microphone.makeEngine();
        const AudioFormat format = engine->inputFormat();
        Recorder recorder;
        engine->installTap(480, recorder.tap());
        microphone.say("other", {speech, QByteArray("\0\x40", 2).repeated(8000)}); // half of full scale
        QVERIFY(engine->start());
        TRY_VERIFY(recorder.size() >= 48000 * format.bytesPerFrame());
        const QByteArray heard = recorder.data.copy();
        float middle = 0; // of half a second
        std::memcpy(&middle, heard.constData() + 12000 * format.bytesPerFrame() + 4, sizeof middle);
        QVERIFY(std::abs(middle - 0.5F) < 0.001F);
        float after = 1;
        std::memcpy(&after, heard.constData() + 25000 * format.bytesPerFrame(), sizeof after);
        QCOMPARE(after, 0.0F);
        engine->stop();
        QVERIFY(microphone.makeEngine()->inputFormat() == format);
    }

    void theFileHoldsWhatWasPlayed()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("spoken.wav");
        Guarded<std::vector<WavAudioPlayer::Heard>> heard;
        const auto note = [&](const WavAudioPlayer::Heard &one) {
            heard.with([&](auto &list) { list.push_back(one); });
        };
        WavAudioPlayer whole(path, WavAudioPlayer::Pace::AsFastAsWritten, note);
        QVERIFY(whole.start(speech));
        whole.write(ramp(1000));
        whole.write(ramp(500));
        contract::Ends ends;
        whole.finish(ends.callback());
        TRY_COMPARE(ends.copy(), QStringList{""});
        QCOMPARE(WavFile::read(path).value().data, ramp(1000) + ramp(500));
        QCOMPARE(heard.copy().at(0).path, path);
        QVERIFY(heard.copy().at(0).toTheEnd);

        WavAudioPlayer stopped(path, WavAudioPlayer::Pace::RealTime, note);
        QVERIFY(stopped.start(speech));
        const QByteArray minute = QByteArray("\x01\x02", 2).repeated(16000 * 60);
        stopped.write(minute);
        stopped.finish([](const auto &) { QFAIL("it was stopped"); });
        stopped.stop();
        QCOMPARE(heard.copy().size(), std::size_t(2));
        QVERIFY(!heard.copy().at(1).toTheEnd);
        QVERIFY(QFile(path).size() >= 44); // a header, and what was played until then, which may be nothing
        const QByteArray kept = WavFile::read(path).value_or(PcmBuffer{}).data;
        QVERIFY(kept.size() < minute.size() / 2 && minute.startsWith(kept));
    }
};

template struct vynlex::InSuite<TestWavAudio>;
SUITE_MAIN(QCoreApplication)

#include "tst_wav_audio.moc"
