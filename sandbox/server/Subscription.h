#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

/// The keys that a service accepts, and the regions in which they are good.
struct Subscription {
    std::vector<std::string> keys;
    std::vector<std::string> regions; ///< empty: any

    [[nodiscard]] bool acceptsKey(std::string_view key) const
    {
        return std::find(keys.begin(), keys.end(), key) != keys.end();
    }
    [[nodiscard]] bool acceptsRegion(std::string_view region) const
    {
        return regions.empty() || std::find(regions.begin(), regions.end(), region) != regions.end();
    }
};

} // namespace sandbox
