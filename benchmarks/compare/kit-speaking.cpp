// Has sentences spoken by the sandbox through the kit's speech client, one after another, each by a synthesiser of its
// own, and prints how long each took from the call to its first sample at the loudspeaker.
//   kit-speaking [--json] SANDBOX SENTENCES     a file with a sentence a line

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <thread>
#include <vector>

#include "SandboxProcess.h"
#include "benchmarks/Figures.h"
#include "platform/audio/WavAudioPlayer.h"
#include "platform/device/Platform.h"

using namespace vynlex;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QFile file(argc > 2 ? QString::fromLocal8Bit(argv[argc - 1]) : QString());
    if (!file.open(QIODevice::ReadOnly)) {
        QTextStream(stderr) << "usage: kit-speaking [--json] SANDBOX SENTENCES" << Qt::endl;
        return 2;
    }
    const auto sandbox = examples::SandboxProcess::start(QString::fromLocal8Bit(argv[argc - 2]));
    if (!sandbox) {
        QTextStream(stderr) << sandbox.error() << Qt::endl;
        return EXIT_FAILURE;
    }

    using Clock = std::chrono::steady_clock;
    const QTemporaryDir folder;
    Clock::time_point called;
    std::vector<double> ms;
    Platform platform = Platform::shipped();
    platform.makeAudioPlayer = [&] {
        return std::make_unique<WavAudioPlayer>(
            folder.filePath(QStringLiteral("heard.wav")), WavAudioPlayer::Pace::AsFastAsWritten,
            [&](const WavAudioPlayer::Heard &heard) {
                ms.push_back(std::chrono::duration<double, std::milli>(heard.begin - called).count());
            });
    };
    Platform::install(std::move(platform));

    const VLTranslationConfig keys = examples::SandboxProcess::configuration();
    auto config = SpeechConfig::fromSubscription(keys.speechKey(), keys.speechRegion());
    config->setSpeechSynthesisVoiceName(QStringLiteral("en-US-AriaNeural"));
    const QList<QByteArray> sentences = file.readAll().trimmed().split('\n');
    std::thread speaker([&] { // the call blocks
        for (const QByteArray &sentence : sentences) {
            called = Clock::now();
            const auto synthesiser = Platform::current()->speechService->makeSynthesizer(*config);
            const auto result = (*synthesiser)->speakText(QString::fromUtf8(sentence));
            if (!result || result->reason != ResultReason::SynthesizingAudioCompleted)
                qFatal("A sentence was not spoken.");
        }
        QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    QCoreApplication::exec();
    speaker.join();
    Figures(argc, argv).print("first sound of a sentence", ms);
    return EXIT_SUCCESS;
}
