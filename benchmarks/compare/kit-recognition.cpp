// Streams a raw 16 kHz, 16-bit, mono file to the sandbox through the kit's speech client, at the speed of sound, and
// prints what that cost this process, and how long the result of the last words took from the end of the file.
//   kit-recognition SANDBOX FILE.pcm

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>
#include <QTimer>

#include <sys/resource.h>

#include <atomic>
#include <chrono>

#include "SandboxProcess.h"
#include "platform/device/Platform.h"

using namespace vynlex;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    QFile file(argc == 3 ? QString::fromLocal8Bit(argv[2]) : QString());
    if (!file.open(QIODevice::ReadOnly)) {
        out << "usage: kit-recognition SANDBOX FILE.pcm" << Qt::endl;
        return 2;
    }
    const auto sandbox = examples::SandboxProcess::start(QString::fromLocal8Bit(argv[1]));
    if (!sandbox) {
        out << sandbox.error() << Qt::endl;
        return EXIT_FAILURE;
    }
    // What finding and trusting the sandbox costs is left out.
    const auto cpuMs = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        const auto ms = [](const timeval &time) {
            return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
        };
        return ms(usage.ru_utime) + ms(usage.ru_stime);
    };
    const double cpuBeforeMs = cpuMs();
    const VLTranslationConfig keys = examples::SandboxProcess::configuration();
    auto config = SpeechConfig::fromSubscription(keys.speechKey(), keys.speechRegion());
    config->enableDictation();
    PushAudioInputStream stream = PushAudioInputStream::create();
    const auto recogniser =
        Platform::current()->speechService->makeRecognizer(*config, AudioConfig::fromStreamInput(stream));
    std::atomic<int> phrases = 0;
    using Clock = std::chrono::steady_clock;
    Clock::time_point lastByte;
    std::atomic<Clock::time_point> lastResult{Clock::now()};
    (*recogniser)->recognized = [&](const SpeechRecognitionResult &result) {
        phrases += !result.text.isEmpty();
        lastResult = Clock::now();
    };
    (*recogniser)->canceled = [&](const CancellationDetails &) {
        QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
    };
    if (!(*recogniser)->startContinuousRecognition())
        return EXIT_FAILURE;

    constexpr qint64 pieceBytes = 3200;
    QTimer pace;
    pace.setTimerType(Qt::PreciseTimer);
    QObject::connect(&pace, &QTimer::timeout, [&] {
        const QByteArray piece = file.read(pieceBytes);
        if (!piece.isEmpty())
            return stream.write(piece);
        lastByte = Clock::now();
        stream.close();
        pace.stop();
    });
    pace.start(100);
    QCoreApplication::exec();

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    out << R"({"phrases":)" << phrases << R"(,"cpuMs":)" << cpuMs() - cpuBeforeMs << R"(,"peakMiB":)"
        << usage.ru_maxrss / 1024 << R"(,"lastResultMs":)"
        << std::chrono::duration<double, std::milli>(lastResult.load() - lastByte).count() << "}" << Qt::endl;
    return EXIT_SUCCESS;
}
