#include "sandbox/backend/PhoneNumber.h"

#include <cstddef>

namespace sandbox {

std::string phoneKey(std::string_view number)
{
    constexpr std::size_t countedDigits = 10; // of an Indian number without country code or trunk prefix
    std::string digits;
    for (const char c : number) {
        if (c >= '0' && c <= '9')
            digits += c;
    }
    return digits.size() > countedDigits ? digits.substr(digits.size() - countedDigits) : digits;
}

} // namespace sandbox
