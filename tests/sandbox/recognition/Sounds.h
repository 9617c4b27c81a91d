#pragma once

#include "sandbox/synthesis/EspeakEngine.h"
#include "sandbox/synthesis/Resampler.h"

#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// Sound made by the tests themselves: 16 kHz, 16-bit, mono.
namespace sounds {

using Samples = std::vector<std::int16_t>;

inline Samples silence(int ms)
{
    return Samples(static_cast<std::size_t>(ms) * 16, 0);
}

inline Samples noise(int ms, double rms, unsigned seed = 1)
{
    std::mt19937 random(seed);
    std::normal_distribution<double> normal(0, rms);
    auto samples = silence(ms);
    for (auto &s : samples)
        s = static_cast<std::int16_t>(std::lround(normal(random)));
    return samples;
}

inline Samples speech(const std::string &text, const std::string &voice, int wordsPerMinute = 155, int pitch = 50)
{
    auto &engine = sandbox::EspeakEngine::instance();
    sandbox::Resampler resampler(engine.sampleRateHz(), 16000);
    Samples samples;
    engine.speak(text, {voice, wordsPerMinute, pitch}, false, [&](auto piece) {
        const auto part = resampler.process(piece);
        samples.insert(samples.end(), part.begin(), part.end());
        return true;
    });
    const auto tail = resampler.finish();
    samples.insert(samples.end(), tail.begin(), tail.end());
    return samples;
}

inline Samples operator+(Samples first, const Samples &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

} // namespace sounds
