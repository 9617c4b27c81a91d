#include "sandbox/server/RandomId.h"

#include <openssl/rand.h>

#include <array>
#include <stdexcept>

namespace sandbox {

namespace {

std::string hexDigits(const std::array<unsigned char, 16> &bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0x0FU];
    }
    return text;
}

std::array<unsigned char, 16> randomBytes()
{
    std::array<unsigned char, 16> bytes{};
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1)
        throw std::runtime_error("the system has no random bytes to give");
    return bytes;
}

} // namespace

std::string randomHexId()
{
    return hexDigits(randomBytes());
}

std::string randomGuid()
{
    auto bytes = randomBytes();
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U); // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U); // the usual variant
    std::string text = hexDigits(bytes);
    for (const std::size_t place : {8U, 13U, 18U, 23U})
        text.insert(place, 1, '-');
    return text;
}

} // namespace sandbox
