#include "sandbox/server/Target.h"

#include <boost/beast/core/string.hpp>

#include <algorithm>
#include <charconv>

namespace sandbox {

namespace {

std::optional<std::string> percentDecoded(std::string_view text, bool plusIsSpace)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+' && plusIsSpace) {
            out += ' ';
        } else if (text[i] != '%') {
            out += text[i];
        } else {
            unsigned value = 0;
            if (i + 2 >= text.size())
                return std::nullopt;
            const char *begin = text.data() + i + 1;
            const auto [end, error] = std::from_chars(begin, begin + 2, value, 16);
            if (error != std::errc{} || end != begin + 2)
                return std::nullopt;
            out += static_cast<char>(value);
            i += 2;
        }
    }
    return out;
}

} // namespace

std::optional<Target> Target::parse(std::string_view target)
{
    if (!target.starts_with('/'))
        return std::nullopt;
    const auto question = target.find('?');
    const auto path = percentDecoded(target.substr(0, question), false);
    if (!path)
        return std::nullopt;

    Target result{*path, {}};
    std::string_view rest = question == std::string_view::npos ? std::string_view{} : target.substr(question + 1);
    while (!rest.empty()) {
        const auto end = std::min(rest.find('&'), rest.size());
        const std::string_view pair = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (pair.empty())
            continue;
        const auto equals = std::min(pair.find('='), pair.size());
        const auto name = percentDecoded(pair.substr(0, equals), true);
        const auto value = percentDecoded(pair.substr(std::min(equals + 1, pair.size())), true);
        if (!name || !value)
            return std::nullopt;
        result.query.emplace_back(*name, *value);
    }
    return result;
}

const std::string *Target::first(std::string_view name) const
{
    const auto found = std::find_if(query.begin(), query.end(),
                                    [&](const auto &pair) { return boost::beast::iequals(pair.first, name); });
    return found == query.end() ? nullptr : &found->second;
}

std::vector<std::string> Target::all(std::string_view name) const
{
    std::vector<std::string> values;
    for (const auto &[key, value] : query) {
        if (boost::beast::iequals(key, name))
            values.push_back(value);
    }
    return values;
}

} // namespace sandbox
