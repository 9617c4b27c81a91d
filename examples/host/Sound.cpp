#include "Sound.h"

#include <cmath>
#include <cstring>

#include "platform/audio/WavFile.h"

using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

constexpr double inaudibleDb = -120;

template<typename Sample> double meanSquare(const QByteArray &samples, double fullScale)
{
    double sum = 0;
    const qsizetype count = samples.size() / static_cast<qsizetype>(sizeof(Sample));
    for (qsizetype i = 0; i < count; ++i) {
        Sample sample{};
        std::memcpy(&sample, samples.constData() + i * static_cast<qsizetype>(sizeof sample), sizeof sample);
        sum += std::pow(static_cast<double>(sample) / fullScale, 2);
    }
    return count == 0 ? 0 : sum / static_cast<double>(count);
}

} // namespace

bool SoundFacts::isSpeech() const
{
    return duration >= 200ms && levelDb > -45;
}

tl::expected<void, QString> expectSpeech(const SoundFacts &sound)
{
    if (sound.isSpeech())
        return {};
    return tl::unexpected(QStringLiteral("nothing is to be heard in %1 ms at %2 dB.")
                              .arg(sound.duration.count())
                              .arg(sound.levelDb, 0, 'f', 1));
}

tl::expected<SoundFacts, QString> listenTo(const QString &wavFile)
{
    return WavFile::read(wavFile).map([](const PcmBuffer &sound) {
        const double square = sound.format.sampleType == AudioFormat::SampleType::Int16
                                  ? meanSquare<std::int16_t>(sound.data, 32768)
                                  : meanSquare<float>(sound.data, 1);
        const std::chrono::duration<double> length(static_cast<double>(sound.frameLength()) /
                                                   sound.format.sampleRateHz);
        return SoundFacts{std::chrono::duration_cast<std::chrono::milliseconds>(length),
                          square > 0 ? 10 * std::log10(square) : inaudibleDb};
    });
}

} // namespace host
