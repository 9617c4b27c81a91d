#include <QTemporaryDir>
#include <QTest>

#include "platform/audio/QtAudioEngine.h"
#include "platform/audio/QtAudioPlayer.h"

using namespace vynlex;

/// A machine without a sound server, which is one without microphone and loudspeaker.
class TestQtAudioAbsent : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        qputenv("PULSE_SERVER", "unix:" + m_folder.filePath("nobody").toUtf8());
    }

    void withoutAMicrophoneStartFails()
    {
        QtAudioEngine engine;
        QCOMPARE(engine.inputFormat().sampleRateHz, 0.0);
        engine.installTap(2048, [](const PcmBuffer &) {});
        engine.prepare();
        for (int i = 0; i < 2; ++i)
            QCOMPARE(engine.start().error(), "There is no microphone.");
        engine.stop();
    }

    void withoutALoudspeakerStartFails()
    {
        QtAudioPlayer player;
        QCOMPARE(player.start({16000, 1, AudioFormat::SampleType::Int16}).error(), "There is no loudspeaker.");
        player.write(QByteArray(320, '\0'));
        player.finish([](const auto &) { QFAIL("nothing was played"); });
        player.stop();
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestQtAudioAbsent)
#include "tst_qt_audio_absent.moc"
