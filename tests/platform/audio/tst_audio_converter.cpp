#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <numbers>

#include "platform/audio/AudioConverter.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

using namespace vynlex;

using SampleType = AudioFormat::SampleType;

namespace {

const AudioFormat speechFormat{16000, 1, SampleType::Int16};

qsizetype capacity(qsizetype frames, double rateHz)
{
    return static_cast<qsizetype>(16000.0 * (static_cast<double>(frames) / rateHz));
}

double sine(double frequencyHz, double rateHz, double position)
{
    return std::sin(2 * std::numbers::pi * frequencyHz * position / rateHz);
}

double decibels(double ratio)
{
    return 20 * std::log10(ratio);
}

template<typename Sample> void append(QByteArray &bytes, Sample sample)
{
    bytes.append(reinterpret_cast<const char *>(&sample), sizeof sample);
}

PcmBuffer bufferOf(const AudioFormat &format, qsizetype frames, const std::function<double(qsizetype, int)> &valueAt)
{
    PcmBuffer buffer{format, {}};
    for (qsizetype i = 0; i < frames; ++i) {
        for (int channel = 0; channel < format.channelCount; ++channel) {
            if (format.sampleType == SampleType::Int16)
                append(buffer.data, static_cast<std::int16_t>(std::lrint(valueAt(i, channel) * 32767)));
            else
                append(buffer.data, static_cast<float>(valueAt(i, channel)));
        }
    }
    return buffer;
}

struct Converted {
    std::vector<double> samples;
    std::vector<double> positions; ///< Of each sample, in frames of the input, without the filter's delay.
};

/// A sine of amplitude 0.9, cut into buffers of the given sizes in turn.
Converted convertSine(const AudioFormat &input, double frequencyHz, const std::vector<qsizetype> &sizes, int buffers)
{
    auto converter = AudioConverter::create(input, speechFormat).value();
    Converted all;
    qsizetype start = 0;
    for (int j = 0; j < buffers; ++j) {
        const qsizetype frames = sizes[static_cast<std::size_t>(j) % sizes.size()];
        const qsizetype count = capacity(frames, input.sampleRateHz);
        const PcmBuffer buffer = bufferOf(input, frames, [&](qsizetype i, int) {
            return 0.9 * sine(frequencyHz, input.sampleRateHz, static_cast<double>(start + i));
        });
        const auto converted = converter->convert(buffer, count);
        if (!converted || converted->frameLength() != count || converted->format != speechFormat)
            qFatal("conversion failed: %s", converted ? "wrong size" : qPrintable(converted.error()));
        for (qsizetype i = 0; i < count; ++i) {
            std::int16_t sample = 0;
            std::memcpy(&sample, converted->data.constData() + 2 * i, sizeof sample);
            all.samples.push_back(sample / 32767.0);
            all.positions.push_back(static_cast<double>(start) +
                                    static_cast<double>(i * frames) / static_cast<double>(count));
        }
        start += frames;
    }
    return all;
}

double latencyFrames(double rateHz)
{
    return rateHz == 16000 ? 0 : std::floor(80 * std::max(1.0, rateHz / 16000)) + 16;
}

} // namespace

class TestAudioConverter : public QObject {
    Q_OBJECT

private slots:
    /// Every sample is where the ideal sine has it: nothing is dropped, repeated or bent at an edge.
    void aSineStaysWhole_data()
    {
        addRows<double, int, bool, QVector<int>>({
            {"48 kHz", 48000.0, 1, false, QVector<int>{2048}},
            {"44.1 kHz", 44100.0, 1, false, QVector<int>{2048}},
            {"48 kHz, stereo, float", 48000.0, 2, true, QVector<int>{2048}},
            {"192 kHz, stereo", 192000.0, 2, false, QVector<int>{2048}},
            {"8 kHz", 8000.0, 1, false, QVector<int>{2048}},
            {"many sizes", 44100.0, 1, false, QVector<int>{2048, 441, 997, 64, 4096, 333}},
        });
    }
    void aSineStaysWhole()
    {
        const auto [rateHz, channels, isFloat, sizes] = currentRow<double, int, bool, QVector<int>>();
        const AudioFormat input{rateHz, channels, isFloat ? SampleType::Float32 : SampleType::Int16};
        const Converted converted = convertSine(input, 1000, {sizes.begin(), sizes.end()}, 24);

        double worst = 0;
        for (std::size_t i = 400; i < converted.samples.size(); ++i) { // beyond the filter's onset
            const double ideal = 0.9 * sine(1000, rateHz, converted.positions[i] - latencyFrames(rateHz));
            worst = std::max(worst, std::abs(converted.samples[i] - ideal));
        }
        qInfo("worst error %.1f dB", decibels(worst));
        QVERIFY2(worst < 0.0001, qPrintable(QString::number(worst)));
    }

    void theToneIsKeptAndWhatCannotBeHeardIsRejected_data()
    {
        addRows<double>({{"48 kHz", 48000.0}, {"44.1 kHz", 44100.0}});
    }
    void theToneIsKeptAndWhatCannotBeHeardIsRejected()
    {
        const auto [rateHz] = currentRow<double>();
        const AudioFormat input{rateHz, 1, SampleType::Float32};
        const auto peak = [&](double frequencyHz) {
            const Converted converted = convertSine(input, frequencyHz, {2048}, 24);
            double highest = 0;
            for (std::size_t i = 1000; i < converted.samples.size(); ++i) // beyond the filter's onset
                highest = std::max(highest, std::abs(converted.samples[i]));
            return highest;
        };
        for (const double frequency : {60.0, 300.0, 1000.0, 3400.0, 6000.0, 7000.0}) {
            const double gain = decibels(peak(frequency) / 0.9);
            QVERIFY2(std::abs(gain) < 0.05, qPrintable(QStringLiteral("%1 Hz: %2 dB").arg(frequency).arg(gain)));
        }
        for (const double frequency : {8500.0, 9000.0, 11000.0, 15900.0, 20000.0}) {
            // A step of 16 bits is -90.3 dB, so nothing but the last bit may move.
            const double leak = peak(frequency);
            QVERIFY2(leak <= 1.01 / 32767,
                     qPrintable(QStringLiteral("%1 Hz leaks %2 dB").arg(frequency).arg(decibels(leak))));
        }
    }

    void equalRatesPassSamplesUnchangedAndTwoChannelsBecomeTheirMean()
    {
        auto converter = AudioConverter::create(speechFormat, speechFormat).value();
        const PcmBuffer first =
            bufferOf(speechFormat, 1001, [](qsizetype i, int) { return sine(321, 16000, static_cast<double>(i)); });
        // The duration of 1001 frames, rounded, times the rate, truncated, is 1000: the frame left behind is not lost.
        const PcmBuffer a = converter->convert(first, 1000).value();
        const PcmBuffer b = converter->convert(first, 1001).value();
        QCOMPARE(a.data + b.data, first.data + first.data.chopped(2));

        const AudioFormat stereo{16000, 2, SampleType::Float32};
        const PcmBuffer both = bufferOf(stereo, 100, [](qsizetype, int channel) { return channel == 0 ? 0.5 : -0.25; });
        const PcmBuffer mono = AudioConverter::create(stereo, speechFormat).value()->convert(both, 100).value();
        QCOMPARE(mono.data, QByteArray("\x00\x10", 2).repeated(100)); // an eighth
    }

    void brokenSamplesDoNotStay()
    {
        const AudioFormat input{48000, 1, SampleType::Float32};
        auto converter = AudioConverter::create(input, speechFormat).value();
        const auto feed = [&](double value) {
            return converter->convert(bufferOf(input, 480, [=](qsizetype, int) { return value; }), 160).value().data;
        };
        feed(std::numeric_limits<double>::quiet_NaN());
        feed(std::numeric_limits<double>::infinity());
        feed(0);
        feed(0);
        QCOMPARE(feed(0), QByteArray(320, '\0'));
    }

    void aFewFramesMakeNoneOrOne()
    {
        const AudioFormat input{48000, 1, SampleType::Int16};
        auto converter = AudioConverter::create(input, speechFormat).value();
        for (const int frames : {1, 2, 3, 5, 1, 7, 31, 2048, 0, 1}) {
            const auto converted =
                converter->convert({input, QByteArray(2L * frames, '\x10')}, capacity(frames, 48000));
            QVERIFY2(converted, qPrintable(converted ? QString() : converted.error()));
            QCOMPARE(converted->frameLength(), capacity(frames, 48000));
        }
    }

    void formatsWithoutAFilterAreRefused()
    {
        using Formats = std::pair<AudioFormat, AudioFormat>;
        for (const auto &[input, output] : {Formats{{0, 1, SampleType::Int16}, speechFormat}, // no microphone
                                            {{192001, 1, SampleType::Int16}, speechFormat},
                                            {{48000, 0, SampleType::Int16}, speechFormat},
                                            {{48000, 1, SampleType::Int16}, {16000, 2, SampleType::Int16}},
                                            {{48000, 1, SampleType::Int16}, {96000, 1, SampleType::Int16}},
                                            {speechFormat, {16000, 1, SampleType::Float32}}}) {
            const auto converter = AudioConverter::create(input, output);
            QVERIFY(!converter && converter.error().startsWith("No converter exists"));
        }
    }

    void aBufferThatDoesNotFitIsRefusedAndTheNextOneIsConverted()
    {
        const AudioFormat input{48000, 2, SampleType::Int16};
        auto converter = AudioConverter::create(input, speechFormat).value();
        const QByteArray data(4L * 480, '\0');
        QVERIFY(!converter->convert({{44100, 2, SampleType::Int16}, data}, 174));
        QVERIFY(!converter->convert({{48000, 1, SampleType::Int16}, data}, 320));
        QVERIFY(!converter->convert({input, data + "x"}, 160));
        QVERIFY(!converter->convert({input, data}, 480));
        QVERIFY(!converter->convert({input, data}, -1));
        QVERIFY(!converter->convert({input, {}}, 1));
        QCOMPARE(converter->convert({input, data}, 160).value().data, QByteArray(320, '\0'));
    }
};

template struct vynlex::InSuite<TestAudioConverter>;

#include "tst_audio_converter.moc"
