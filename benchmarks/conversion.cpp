// What it costs to turn a second of microphone sound into 16 kHz, 16-bit mono in the tap's buffers of 2048 frames, and
// how well it is done: beside libsoxr (its "HQ" recipe) and libswresample (its defaults), which get the same buffers.
// Every row shows the quality of what it measures:
//   ripple_dB    largest deviation from flat, 100 Hz to 7 kHz
//   alias_dB     loudest remainder of a full tone from 8.5 to 20 kHz (16 bits end at -90)
//   delay_ms     by which the sound comes out later

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <vector>

#include "platform/audio/AudioConverter.h"

#ifdef VYNLEX_HAVE_SOXR
#    include <soxr.h>
#endif
#ifdef VYNLEX_HAVE_SWRESAMPLE
extern "C" {
#    include <libavutil/channel_layout.h>
#    include <libswresample/swresample.h>
}
#endif

using namespace vynlex;

namespace {

constexpr int tapFrames = 2048;
constexpr double outputRateHz = 16000;

using Samples = std::vector<std::int16_t>;
/// Takes one tap buffer and appends what comes out.
using Convert = std::function<void(const Samples &, Samples &)>;
using Make = Convert (*)(double inputRateHz);

Convert makeKit(double inputRateHz)
{
    const AudioFormat input{inputRateHz, 1, AudioFormat::SampleType::Int16};
    const std::shared_ptr<AudioConverter> converter =
        AudioConverter::create(input, {outputRateHz, 1, AudioFormat::SampleType::Int16}).value();
    const auto capacity = static_cast<qsizetype>(outputRateHz * (tapFrames / inputRateHz));
    return [=](const Samples &in, Samples &out) {
        const QByteArray data = QByteArray::fromRawData(reinterpret_cast<const char *>(in.data()), tapFrames * 2);
        const PcmBuffer done = converter->convert({input, data}, capacity).value();
        const auto *begin = reinterpret_cast<const std::int16_t *>(done.data.constData());
        out.insert(out.end(), begin, begin + done.frameLength());
    };
}

#ifdef VYNLEX_HAVE_SOXR
Convert makeSoxr(double inputRateHz)
{
    const soxr_io_spec_t io = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
    const std::shared_ptr<soxr> resampler(soxr_create(inputRateHz, outputRateHz, 1, nullptr, &io, &quality, nullptr),
                                          soxr_delete);
    return [resampler](const Samples &in, Samples &out) {
        Samples block(tapFrames * 2);
        std::size_t taken = 0;
        std::size_t made = 0;
        soxr_process(resampler.get(), in.data(), in.size(), &taken, block.data(), block.size(), &made);
        out.insert(out.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(made));
    };
}
#endif

#ifdef VYNLEX_HAVE_SWRESAMPLE
Convert makeSwresample(double inputRateHz)
{
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    SwrContext *context = nullptr;
    swr_alloc_set_opts2(&context, &mono, AV_SAMPLE_FMT_S16, static_cast<int>(outputRateHz), &mono, AV_SAMPLE_FMT_S16,
                        static_cast<int>(inputRateHz), 0, nullptr);
    swr_init(context);
    const std::shared_ptr<SwrContext> resampler(context, [](SwrContext *c) { swr_free(&c); });
    return [resampler](const Samples &in, Samples &out) {
        Samples block(tapFrames * 2);
        auto *to = reinterpret_cast<std::uint8_t *>(block.data());
        const auto *from = reinterpret_cast<const std::uint8_t *>(in.data());
        const int made = swr_convert(resampler.get(), &to, static_cast<int>(block.size()), &from, tapFrames);
        out.insert(out.end(), block.begin(), block.begin() + std::max(made, 0));
    };
}
#endif

/// `buffers` tap buffers of a tone of amplitude 0.9, converted.
Samples tone(Make make, double inputRateHz, double frequencyHz, int buffers)
{
    const Convert convert = make(inputRateHz);
    Samples out;
    Samples in(tapFrames);
    for (int buffer = 0; buffer < buffers; ++buffer) {
        for (int i = 0; i < tapFrames; ++i) {
            const double phase = 2 * std::numbers::pi * frequencyHz * (buffer * tapFrames + i) / inputRateHz;
            in[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(std::lrint(0.9 * 32767 * std::sin(phase)));
        }
        convert(in, out);
    }
    return out;
}

double rms(const Samples &samples, std::size_t from)
{
    double sum = 0;
    for (std::size_t i = from; i < samples.size(); ++i)
        sum += static_cast<double>(samples[i]) * samples[i];
    return std::sqrt(sum / static_cast<double>(samples.size() - from)) / 32767;
}

double decibels(double ratio)
{
    return 20 * std::log10(std::max(ratio, 1e-8));
}

void measureQuality(benchmark::State &state, Make make, double inputRateHz)
{
    constexpr std::size_t onset = 2000;
    double ripple = 0;
    for (double frequency = 100; frequency <= 7000; frequency += 345) {
        const double gain = rms(tone(make, inputRateHz, frequency, 60), onset) / (0.9 / std::numbers::sqrt2);
        ripple = std::max(ripple, std::abs(decibels(gain)));
    }
    double alias = 0;
    for (double frequency = 8500; frequency <= 20000; frequency += 500)
        alias = std::max(alias, rms(tone(make, inputRateHz, frequency, 24), onset) * std::numbers::sqrt2 / 0.9);

    // A step: what comes out has half its height when the middle of the filter has reached it; what a converter holds
    // back for its next call counts too.
    const Convert convert = make(inputRateHz);
    Samples out;
    std::size_t heldBack = 0;
    for (int buffer = 0; buffer < 16; ++buffer) {
        convert(Samples(tapFrames, buffer < 8 ? 0 : 20000), out);
        const double produced = static_cast<double>(out.size()) / outputRateHz;
        const double taken = (buffer + 1) * tapFrames / inputRateHz;
        if (buffer == 15 && taken > produced)
            heldBack = static_cast<std::size_t>((taken - produced) * outputRateHz);
    }
    const auto middle = std::find_if(out.begin(), out.end(), [](std::int16_t sample) { return sample >= 10000; });
    // The kit's buffers run evenly, so the eighth one begins where half of its output does.
    const bool keepsTime = make != makeKit;
    const double begin = keepsTime ? 8 * tapFrames / inputRateHz * outputRateHz : static_cast<double>(out.size()) / 2;
    const double late = static_cast<double>(middle - out.begin()) - begin;

    state.counters["ripple_dB"] = ripple;
    state.counters["alias_dB"] = decibels(alias);
    state.counters["delay_ms"] = (late + (keepsTime ? static_cast<double>(heldBack) : 0)) * 1000 / outputRateHz;
}

/// The time of an iteration is the cost of a second of sound.
void conversion(benchmark::State &state, Make make, double inputRateHz)
{
    const auto buffers = static_cast<int>(inputRateHz / tapFrames + 1);
    Samples in(tapFrames);
    std::uint32_t random = 1;
    for (std::int16_t &sample : in)
        sample = static_cast<std::int16_t>((random = random * 1664525 + 1013904223) >> 18);
    const Convert convert = make(inputRateHz);
    Samples out;
    for (auto _ : state) {
        out.clear();
        for (int buffer = 0; buffer < buffers; ++buffer)
            convert(in, out);
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["sound_per_cpu"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * buffers * tapFrames / inputRateHz, benchmark::Counter::kIsRate);
    measureQuality(state, make, inputRateHz);
}

} // namespace

BENCHMARK_CAPTURE(conversion, kit_48_kHz, makeKit, 48000.0)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(conversion, kit_44_1_kHz, makeKit, 44100.0)->Unit(benchmark::kMicrosecond);
#ifdef VYNLEX_HAVE_SOXR
BENCHMARK_CAPTURE(conversion, soxr_48_kHz, makeSoxr, 48000.0)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(conversion, soxr_44_1_kHz, makeSoxr, 44100.0)->Unit(benchmark::kMicrosecond);
#endif
#ifdef VYNLEX_HAVE_SWRESAMPLE
BENCHMARK_CAPTURE(conversion, swresample_48_kHz, makeSwresample, 48000.0)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(conversion, swresample_44_1_kHz, makeSwresample, 44100.0)->Unit(benchmark::kMicrosecond);
#endif

BENCHMARK_MAIN();
