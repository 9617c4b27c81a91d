#include "sandbox/speech/WaveHeader.h"

#include <cstddef>
#include <cstdint>

#include "sandbox/speech/SpeechMessage.h"

namespace sandbox {
namespace {

constexpr std::size_t riffBytes = 12;       // "RIFF", size, "WAVE"
constexpr std::size_t chunkHeaderBytes = 8; // name, size
constexpr std::size_t formatBytes = 16;

std::uint32_t littleEndian(std::string_view bytes, std::size_t offset, std::size_t count)
{
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;)
        value = (value << 8) | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

[[noreturn]] void refuse(const std::string &reason)
{
    throw ProtocolError(ProtocolError::invalidData, reason);
}

void checkFormat(std::string_view format)
{
    const auto encoding = littleEndian(format, 0, 2);
    const auto channels = littleEndian(format, 2, 2);
    const auto rateHz = littleEndian(format, 4, 4);
    const auto frameBytes = littleEndian(format, 12, 2);
    const auto bits = littleEndian(format, 14, 2);
    if (encoding != 1 || channels != 1 || rateHz != 16000 || bits != 16 || frameBytes != 2)
        refuse("Unsupported audio format: it must be 16 kHz, 16-bit, mono PCM.");
}

} // namespace

bool beginsWithWaveHeader(std::string_view body)
{
    return body.starts_with("RIFF");
}

std::string_view withoutWaveHeader(std::string_view body)
{
    if (body.size() < riffBytes || !beginsWithWaveHeader(body) || body.substr(8, 4) != "WAVE")
        refuse("The audio of a turn does not begin with a RIFF header.");
    bool formatSeen = false;
    std::string_view rest = body.substr(riffBytes);
    while (rest.size() >= chunkHeaderBytes) {
        const std::string_view name = rest.substr(0, 4);
        const std::size_t size = littleEndian(rest, 4, 4);
        rest.remove_prefix(chunkHeaderBytes);
        if (name == "data") {
            if (!formatSeen)
                break;
            return rest;
        }
        const std::size_t padded = size + size % 2;
        if (padded > rest.size())
            break;
        if (name == "fmt ") {
            if (size < formatBytes)
                break;
            checkFormat(rest);
            formatSeen = true;
        }
        rest.remove_prefix(padded);
    }
    refuse("The RIFF header of the audio is incomplete.");
}

std::string streamWaveHeader(int sampleRateHz)
{
    constexpr std::uint32_t unknown = 0xffffffff;
    const auto rate = static_cast<std::uint32_t>(sampleRateHz);
    std::string header;
    const auto put = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            header.push_back(static_cast<char>((value >> (8 * i)) & 0xff));
    };
    header += "RIFF";
    put(unknown, 4);
    header += "WAVEfmt ";
    put(formatBytes, 4);
    put(1, 2); // PCM
    put(1, 2); // one channel
    put(rate, 4);
    put(rate * 2, 4);
    put(2, 2);
    put(16, 2);
    header += "data";
    put(unknown, 4);
    return header;
}

} // namespace sandbox
