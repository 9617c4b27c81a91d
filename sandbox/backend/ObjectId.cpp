#include "sandbox/backend/ObjectId.h"

#include <array>
#include <cstdint>
#include <cstdio>

#include "sandbox/server/RandomId.h"

namespace sandbox {

std::string newObjectId(Instant made)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(made).time_since_epoch().count();
    std::array<char, 9> time{};
    std::snprintf(time.data(), time.size(), "%08x", static_cast<unsigned>(static_cast<std::uint32_t>(seconds)));
    return time.data() + randomHexId().substr(0, 16);
}

} // namespace sandbox
