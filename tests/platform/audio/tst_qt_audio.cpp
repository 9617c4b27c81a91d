#include <QTest>
#include <QTimer>

#include <cstring>

#include "AudioPortContract.h"
#include "PulseServer.h"
#include "platform/audio/QtAudioEngine.h"
#include "platform/audio/QtAudioPlayer.h"
#include "platform/dispatch/Guarded.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"

using namespace vynlex;
using contract::ramp;

namespace {

const AudioFormat speakerFormat{PulseServer::speakerRateHz, 1, AudioFormat::SampleType::Int16};

/// The samples that are not zero: a busy machine may leave gaps, but it loses and repeats nothing.
QByteArray withoutSilence(const QByteArray &pcm)
{
    QByteArray sound;
    for (qsizetype at = 0; at + 1 < pcm.size(); at += 2) {
        if (pcm[at] != 0 || pcm[at + 1] != 0)
            sound += pcm.mid(at, 2);
    }
    return sound;
}

} // namespace

/// The whole way through a real sound server.
class TestQtAudio : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(m_server.start(), m_server.log().constData()); }

    void theMicrophoneKeepsItsPromises()
    {
        const auto make = [this] {
            return contract::Microphone{std::make_unique<QtAudioEngine>(), [this] { m_server.speak(ramp(960)); }};
        };
        contract::engineKeepsItsPromises(make);
        contract::aTapMayRemoveItselfAndStopTheEngine(make);
    }

    void whatIsSaidArrivesBitForBit()
    {
        QtAudioEngine engine;
        const AudioFormat format = engine.inputFormat();
        QCOMPARE(format.sampleRateHz, double(PulseServer::microphoneRateHz));
        QCOMPARE(format.channelCount, 1);
        QVERIFY(format.sampleType == AudioFormat::SampleType::Int16);
        Guarded<QByteArray> heard;
        engine.installTap(2048, [&](const PcmBuffer &buffer) { heard.with([&](auto &all) { all += buffer.data; }); });
        QVERIFY(engine.start());

        // The room speaks in steps of 20 ms, as a device would; more than the server's buffers hold would be lost.
        const int step = PulseServer::microphoneRateHz / 50;
        int said = 0;
        QTimer room;
        connect(&room, &QTimer::timeout, [&] {
            if (said < 60 * step && m_server.speak(ramp(step, said)))
                said += step;
            else if (said >= 60 * step)
                m_server.speak(QByteArray(2 * step, '\0')); // fills the tap's last buffer
        });
        room.start(20);
        const QByteArray all = ramp(60 * step);
        const auto size = [&] { return heard.with([](auto &data) { return data.size(); }); };
        TRY_VERIFY(size() >= all.size() && heard.copy().contains(all));
    }

    void theLoudspeakerKeepsItsPromises()
    {
        contract::playerKeepsItsPromises([] { return std::make_unique<QtAudioPlayer>(); }, {});
    }

    void whatIsPlayedIsHeardToTheLastSample_data()
    {
        addRows<int>({{"a click", 40}, {"a word", 8000}, {"a sentence, streamed", 32000}});
    }
    void whatIsPlayedIsHeardToTheLastSample()
    {
        const auto [count] = currentRow<int>();
        m_server.listen();
        QByteArray heard;
        const auto listen = [&] { return withoutSilence(heard += m_server.listen()); };
        const QByteArray sound = ramp(count);
        QtAudioPlayer player;
        QVERIFY(player.start(speakerFormat));
        for (qsizetype i = 0; i < sound.size(); i += 3200)
            player.write(sound.mid(i, 3200));
        contract::Ends ends;
        player.finish(ends.callback());
        QVERIFY(eventually([&] { return listen(), !ends.copy().isEmpty(); }));
        QCOMPARE(ends.copy(), QStringList{""});
        const bool whole = eventually([&] { return listen() == sound; });
        QVERIFY2(whole, qPrintable(QStringLiteral("%1 of %2 bytes, those at %3")
                                       .arg(listen().size())
                                       .arg(sound.size())
                                       .arg(sound.indexOf(listen()))));
    }

    void soundBeginsBeforeTheEndIsKnownAndStopsAtOnce()
    {
        // Best of ten: a busy machine may stop this thread between looking and stopping.
        double leastAfterMs = 1000;
        for (int attempt = 0; attempt < 10 && leastAfterMs >= 80; ++attempt) {
            m_server.listen();
            QByteArray heard;
            QtAudioPlayer player;
            QVERIFY(player.start(speakerFormat));
            player.write(ramp(PulseServer::speakerRateHz * 10));
            const auto heardBytes = [&] { return withoutSilence(heard += m_server.listen()).size(); };
            TRY_VERIFY(heardBytes() > 6400);

            const qsizetype before = heardBytes();
            player.stop();
            const qsizetype silence = PulseServer::speakerRateHz / 5 * 2;
            TRY_VERIFY((heard += m_server.listen()).endsWith(QByteArray(silence, '\0')));
            const double afterMs = static_cast<double>(heardBytes() - before) * 1000 / 2 / PulseServer::speakerRateHz;
            qInfo("heard after stop: %.1f ms", afterMs);
            leastAfterMs = std::min(leastAfterMs, afterMs);
        }
        QVERIFY(leastAfterMs < 80); // less than the sink holds; 50 are promised on a machine that is not busy
    }

    /// Last, because it takes the server away.
    void aServerThatIsTakenAwayEndsSoundAndSilencesTheMicrophone()
    {
        const CapturedConsole console;
        QtAudioEngine engine;
        engine.installTap(100, [](const PcmBuffer &) {});
        QVERIFY(engine.start());
        QtAudioPlayer player;
        QVERIFY(player.start(speakerFormat));
        player.write(ramp(PulseServer::speakerRateHz * 10));
        contract::Ends ends;
        player.finish(ends.callback());

        m_server.end();
        TRY_COMPARE(ends.copy(), QStringList{"The loudspeaker was taken away."});
        // The test log goes to the same place.
        TRY_COMPARE(console.lines().count("The microphone is silent."), 1);
        engine.stop();
        QVERIFY(!engine.start());
        QVERIFY(!QtAudioPlayer().start(speakerFormat));
    }

private:
    PulseServer m_server;
};

QTEST_GUILESS_MAIN(TestQtAudio)
#include "tst_qt_audio.moc"
