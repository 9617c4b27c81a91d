#pragma once

#include <QByteArray>

#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

#include "platform/audio/PcmBuffer.h"

/// Sounds to test with, in the units of full scale.
namespace vynlex::waves {

inline double sine(double frequencyHz, double rateHz, double position)
{
    return std::sin(2 * std::numbers::pi * frequencyHz * position / rateHz);
}

inline QByteArray int16Bytes(const std::vector<double> &samples)
{
    QByteArray bytes;
    for (const double value : samples) {
        const auto sample = static_cast<std::int16_t>(std::lrint(value * 32767));
        bytes.append(reinterpret_cast<const char *>(&sample), sizeof sample);
    }
    return bytes;
}

inline std::vector<double> int16Samples(const QByteArray &bytes)
{
    std::vector<double> samples;
    for (qsizetype i = 0; i + 1 < bytes.size(); i += 2) {
        std::int16_t sample = 0;
        std::memcpy(&sample, bytes.constData() + i, sizeof sample);
        samples.push_back(sample / 32767.0);
    }
    return samples;
}

/// The strength of one frequency, 1 for a sine of full scale; a Blackman-Harris window keeps other frequencies out.
inline double amplitude(const std::vector<double> &samples, double frequencyHz, double rateHz)
{
    double re = 0;
    double im = 0;
    double weight = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double phase = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(samples.size());
        const double window =
            0.35875 - 0.48829 * std::cos(phase) + 0.14128 * std::cos(2 * phase) - 0.01168 * std::cos(3 * phase);
        const double angle = 2 * std::numbers::pi * frequencyHz * static_cast<double>(i) / rateHz;
        re += samples[i] * window * std::cos(angle);
        im += samples[i] * window * std::sin(angle);
        weight += window;
    }
    return 2 * std::hypot(re, im) / weight;
}

inline double decibels(double ratio)
{
    return 20 * std::log10(ratio);
}

} // namespace vynlex::waves
