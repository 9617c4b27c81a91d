#pragma once

#include "platform/json/Words.h"

namespace vynlex {

enum class VLHTTPMethod { get, post, put, delete_ };

template<>
inline constexpr auto words<VLHTTPMethod> = std::array{
    std::pair{VLHTTPMethod::get, QLatin1StringView("GET")},
    std::pair{VLHTTPMethod::post, QLatin1StringView("POST")},
    std::pair{VLHTTPMethod::put, QLatin1StringView("PUT")},
    std::pair{VLHTTPMethod::delete_, QLatin1StringView("DELETE")},
};

} // namespace vynlex
