// Has sentences spoken by the sandbox through the kit's speech client, one after another, each by a synthesiser of its
// own, and prints how long each took from the call to its first sample at the loudspeaker, and how much of that came
// after the sandbox's first piece of sound.
//   kit-speaking [--json] SANDBOX SENTENCES     a file with a sentence a line

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <atomic>
#include <thread>
#include <vector>

#include "SandboxProcess.h"
#include "benchmarks/Figures.h"
#include "platform/audio/WavAudioPlayer.h"
#include "platform/device/Platform.h"
#include "platform/speech/CloudSpeechService.h"
#include "tests/platform/net/TappedSockets.h"

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
    std::atomic<Clock::time_point> arrived; ///< A sentence's first piece of sound, at the socket.
    std::vector<double> sinceCall;
    std::vector<double> sinceArrival;
    const auto msSince = [](Clock::time_point begin, Clock::time_point end) {
        return std::chrono::duration<double, std::milli>(end - begin).count();
    };
    Platform platform = Platform::shipped();
    platform.socketWorker = std::make_shared<TappedSockets>([&](WebSocketRequest &, WebSocketClient::Handler &handler) {
        handler = [&, next = std::move(handler), isFirst = true](const WebSocketEvent &event) mutable {
            if (isFirst && std::holds_alternative<websocket::Binary>(event)) {
                arrived = Clock::now();
                isFirst = false;
            }
            next(event);
        };
    });
    platform.makeAudioPlayer = [&] {
        return std::make_unique<WavAudioPlayer>(folder.filePath(QStringLiteral("heard.wav")),
                                                WavAudioPlayer::Pace::AsFastAsWritten,
                                                [&](const WavAudioPlayer::Heard &heard) {
                                                    sinceCall.push_back(msSince(called, heard.begin));
                                                    sinceArrival.push_back(msSince(arrived, heard.begin));
                                                });
    };
    platform.speechService = std::make_shared<CloudSpeechService>(platform.socketWorker, platform.makeAudioPlayer);
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
    const Figures figures(argc, argv);
    figures.print("from the call to the first sound", sinceCall);
    figures.print("from the sandbox's first piece to the first sound", sinceArrival);
    return EXIT_SUCCESS;
}
