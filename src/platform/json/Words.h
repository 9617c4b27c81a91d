#pragma once

#include <QLatin1String>
#include <QStringView>

#include <algorithm>
#include <array>
#include <optional>
#include <type_traits>
#include <utility>

namespace vynlex {

/// The text of each case of an enumeration, in its order: an array of pairs, specialised beside the enumeration.
template<typename Enumeration> inline constexpr auto words = nullptr;

template<typename Enumeration>
concept Worded = std::is_enum_v<Enumeration> && !std::is_same_v<decltype(words<Enumeration>), const std::nullptr_t>;

template<Worded Enumeration> constexpr QLatin1StringView wordOf(Enumeration value)
{
    const auto found = std::ranges::find(words<Enumeration>, value, [](const auto &entry) { return entry.first; });
    return found == words<Enumeration>.end() ? QLatin1StringView() : found->second;
}

/// Letter case counts; none for any other text.
template<Worded Enumeration> std::optional<Enumeration> fromWord(QStringView text)
{
    const auto found =
        std::ranges::find_if(words<Enumeration>, [&](const auto &entry) { return entry.second == text; });
    if (found == words<Enumeration>.end())
        return std::nullopt;
    return found->first;
}

} // namespace vynlex
