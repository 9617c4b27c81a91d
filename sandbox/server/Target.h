#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sandbox {

/// The path and the parameters of a request target, percent-decoded.
struct Target {
    std::string path;
    std::vector<std::pair<std::string, std::string>> query;

    /// Nothing when the target is not of the form "/path?query" or a percent sequence is broken.
    static std::optional<Target> parse(std::string_view target);

    /// The first parameter of that name, letter case aside; nullptr when there is none.
    [[nodiscard]] const std::string *first(std::string_view name) const;
    [[nodiscard]] std::vector<std::string> all(std::string_view name) const;
};

} // namespace sandbox
