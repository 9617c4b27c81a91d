#include "sandbox/synthesis/Resampler.h"

#include <stdexcept>
#include <string>

#include <speex/speex_resampler.h>

namespace sandbox {

void Resampler::Deleter::operator()(SpeexResamplerState_ *state) const
{
    speex_resampler_destroy(state);
}

Resampler::Resampler(int inputRateHz, int outputRateHz)
    : m_ratio(static_cast<double>(outputRateHz) / inputRateHz)
{
    constexpr int quality = 8;
    for (const int rate : {inputRateHz, outputRateHz})
        if (rate < 8000 || rate > 192000)
            throw std::invalid_argument("no sample rate: " + std::to_string(rate) + " Hz");
    if (inputRateHz == outputRateHz)
        return;
    int error = RESAMPLER_ERR_SUCCESS;
    m_state.reset(speex_resampler_init(1, static_cast<spx_uint32_t>(inputRateHz),
                                       static_cast<spx_uint32_t>(outputRateHz), quality, &error));
    if (!m_state)
        throw std::runtime_error(speex_resampler_strerror(error));
    speex_resampler_skip_zeros(m_state.get());
}

std::vector<std::int16_t> Resampler::process(std::span<const std::int16_t> input)
{
    if (!m_state)
        return {input.begin(), input.end()};
    std::vector<std::int16_t> output;
    while (!input.empty()) {
        const auto start = output.size();
        output.resize(start + static_cast<std::size_t>(static_cast<double>(input.size()) * m_ratio) + 16);
        auto taken = static_cast<spx_uint32_t>(input.size());
        auto made = static_cast<spx_uint32_t>(output.size() - start);
        speex_resampler_process_int(m_state.get(), 0, input.data(), &taken, output.data() + start, &made);
        output.resize(start + made);
        input = input.subspan(taken);
    }
    return output;
}

std::vector<std::int16_t> Resampler::finish()
{
    if (!m_state)
        return {};
    return process(std::vector<std::int16_t>(static_cast<std::size_t>(speex_resampler_get_input_latency(m_state.get())),
                                             std::int16_t{0}));
}

} // namespace sandbox
