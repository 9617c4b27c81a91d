#include "platform/audio/AudioConverter.h"

#include <speex/speex_resampler.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

namespace vynlex {
namespace {

constexpr int quality = 8;
constexpr double baseLatencyFrames = 80; // half the filter of quality 8, in frames of the slower rate
constexpr qsizetype latencyMargin = 16;  // input frames; see Stream::retune
constexpr qsizetype maximumFrames = 1 << 20;

struct ResamplerDeleter {
    void operator()(SpeexResamplerState *state) const { speex_resampler_destroy(state); }
};
using Resampler = std::unique_ptr<SpeexResamplerState, ResamplerDeleter>;

template<typename Sample> Sample sampleAt(const char *data, qsizetype index)
{
    Sample sample;
    std::memcpy(&sample, data + index * static_cast<qsizetype>(sizeof(Sample)), sizeof(Sample));
    return sample;
}

float unit(std::int16_t sample)
{
    return static_cast<float>(sample) / 32768.0F;
}

/// One broken sample would stay in the filter's memory for ever.
float unit(float sample)
{
    return std::isnan(sample) ? 0.0F : std::clamp(sample, -1.0F, 1.0F);
}

template<typename Sample> void appendMono(const PcmBuffer &buffer, std::vector<float> &mono)
{
    const char *data = buffer.data.constData();
    for (qsizetype i = 0; i < buffer.frameLength(); ++i) {
        mono.push_back(buffer.format.channelCount == 1
                           ? unit(sampleAt<Sample>(data, i))
                           : (unit(sampleAt<Sample>(data, 2 * i)) + unit(sampleAt<Sample>(data, 2 * i + 1))) / 2);
    }
}

void appendMono(const PcmBuffer &buffer, std::vector<float> &mono)
{
    if (buffer.format.sampleType == AudioFormat::SampleType::Int16)
        appendMono<std::int16_t>(buffer, mono);
    else
        appendMono<float>(buffer, mono);
}

QByteArray toInt16(const float *samples, qsizetype count)
{
    QByteArray bytes(count * 2, Qt::Uninitialized);
    for (qsizetype i = 0; i < count; ++i) {
        const auto sample = static_cast<std::int16_t>(std::clamp(std::lrint(samples[i] * 32768.0F), -32768L, 32767L));
        std::memcpy(bytes.data() + i * 2, &sample, 2);
    }
    return bytes;
}

} // namespace

struct AudioConverter::State {
    AudioFormat input;
    AudioFormat output;

    /// The latest input, oldest first. Between calls: what a new filter needs to go on where the last one was, or, for
    /// equal rates, what has not come out yet.
    std::vector<float> line;
    Resampler resampler;
    qsizetype inputStep = 0;  ///< The ratio in lowest terms: so many frames in
    qsizetype outputStep = 0; ///< become so many frames.
    qsizetype delay = 0;      ///< Input frames between the newest one and the filter.

    [[nodiscard]] qsizetype latency() const
    {
        return static_cast<qsizetype>(baseLatencyFrames * std::max(1.0, input.sampleRateHz / output.sampleRateHz)) +
               latencyMargin;
    }

    [[nodiscard]] qsizetype memory() const { return 4 * latency(); }

    /// Makes the filter for another size of buffers. Filters for other ratios differ a little in length and with it in
    /// delay; a delay line in front makes up for that, and the filter is filled with what has been heard, so that the
    /// sound goes on without a step. Whole ratio steps are fed, which leaves the filter between two output frames'
    /// positions at exactly the edge.
    bool retune(qsizetype frames, qsizetype capacity)
    {
        const qsizetype divisor = std::gcd(frames, capacity);
        if (resampler && inputStep == frames / divisor && outputStep == capacity / divisor)
            return true;
        inputStep = frames / divisor;
        outputStep = capacity / divisor;
        resampler.reset(speex_resampler_init_frac(1, static_cast<spx_uint32_t>(inputStep),
                                                  static_cast<spx_uint32_t>(outputStep),
                                                  static_cast<spx_uint32_t>(input.sampleRateHz),
                                                  static_cast<spx_uint32_t>(output.sampleRateHz), quality, nullptr));
        if (!resampler)
            return false;
        const qsizetype filterLatency = speex_resampler_get_input_latency(resampler.get());
        delay = std::max<qsizetype>(0, latency() - filterLatency);

        const qsizetype steps = (2 * filterLatency + inputStep - 1) / inputStep;
        std::vector<float> past(static_cast<std::size_t>(steps * inputStep));
        const qsizetype heard = std::max<qsizetype>(0, static_cast<qsizetype>(line.size()) - delay);
        const qsizetype used = std::min(heard, static_cast<qsizetype>(past.size()));
        std::copy_n(line.begin() + (heard - used), used, past.end() - used);
        std::vector<float> discarded(static_cast<std::size_t>(steps * outputStep));
        return run(past.data(), steps * inputStep, discarded.data(), steps * outputStep);
    }

    bool run(const float *in, qsizetype frames, float *out, qsizetype capacity)
    {
        auto taken = static_cast<spx_uint32_t>(frames);
        auto made = static_cast<spx_uint32_t>(capacity);
        return speex_resampler_process_float(resampler.get(), 0, in, &taken, out, &made) == RESAMPLER_ERR_SUCCESS &&
               taken == static_cast<spx_uint32_t>(frames) && made == static_cast<spx_uint32_t>(capacity);
    }

    tl::expected<QByteArray, QString> resample(const PcmBuffer &buffer, qsizetype capacity)
    {
        const qsizetype frames = buffer.frameLength();
        // A buffer that is too short for a single frame is kept for the filter that comes next.
        if (capacity == 0)
            resampler.reset();
        else if (!retune(frames, capacity))
            return tl::unexpected(QStringLiteral("No filter turns %1 frames into %2.").arg(frames).arg(capacity));

        std::vector<float> out(static_cast<std::size_t>(capacity));
        line.resize(std::max(line.size(), static_cast<std::size_t>(memory())));
        const auto start = static_cast<qsizetype>(line.size()) - delay;
        appendMono(buffer, line);
        if (capacity > 0 && !run(line.data() + start, frames, out.data(), capacity)) {
            resampler.reset();
            return tl::unexpected(
                QStringLiteral("The filter did not turn %1 frames into %2.").arg(frames).arg(capacity));
        }
        line.erase(line.begin(), line.end() - memory());
        return toInt16(out.data(), capacity);
    }

    /// A capacity that was rounded down leaves a frame behind, which comes out first next time.
    QByteArray pass(const PcmBuffer &buffer, qsizetype capacity)
    {
        appendMono(buffer, line);
        line.resize(std::max(line.size(), static_cast<std::size_t>(capacity)));
        QByteArray bytes = toInt16(line.data(), capacity);
        line.erase(line.begin(), line.begin() + capacity);
        return bytes;
    }
};

tl::expected<std::unique_ptr<AudioConverter>, QString> AudioConverter::create(const AudioFormat &input,
                                                                              const AudioFormat &output)
{
    const bool knownInput = input.sampleRateHz >= 8000 && input.sampleRateHz <= 192000 &&
                            (input.channelCount == 1 || input.channelCount == 2);
    const bool knownOutput = output.sampleRateHz >= 8000 && output.sampleRateHz <= 48000 && output.channelCount == 1 &&
                             output.sampleType == AudioFormat::SampleType::Int16;
    if (!knownInput || !knownOutput) {
        return tl::unexpected(QStringLiteral("No converter exists from %1 Hz with %2 channels to %3 Hz with %4.")
                                  .arg(input.sampleRateHz)
                                  .arg(input.channelCount)
                                  .arg(output.sampleRateHz)
                                  .arg(output.channelCount));
    }
    auto state = std::make_unique<State>();
    state->input = input;
    state->output = output;
    return std::unique_ptr<AudioConverter>(new AudioConverter(std::move(state)));
}

AudioConverter::AudioConverter(std::unique_ptr<State> state)
    : m_state(std::move(state))
{
}

AudioConverter::~AudioConverter() = default;

tl::expected<PcmBuffer, QString> AudioConverter::convert(const PcmBuffer &input, qsizetype frameCapacity)
{
    if (input.format != m_state->input || input.data.size() % input.format.bytesPerFrame() != 0)
        return tl::unexpected(QStringLiteral("The buffer is not of the converter's input format."));
    const qsizetype frames = input.frameLength();
    const double exact = static_cast<double>(frames) * m_state->output.sampleRateHz / m_state->input.sampleRateHz;
    if (frames > maximumFrames || frameCapacity < 0 || std::abs(exact - static_cast<double>(frameCapacity)) > 1)
        return tl::unexpected(QStringLiteral("%1 frames do not become %2.").arg(frames).arg(frameCapacity));
    if (frames == 0 && frameCapacity > 0)
        return tl::unexpected(QStringLiteral("An empty buffer becomes no frames."));

    if (m_state->input.sampleRateHz == m_state->output.sampleRateHz)
        return PcmBuffer{m_state->output, m_state->pass(input, frameCapacity)};
    return m_state->resample(input, frameCapacity).map([&](QByteArray bytes) {
        return PcmBuffer{m_state->output, std::move(bytes)};
    });
}

} // namespace vynlex
