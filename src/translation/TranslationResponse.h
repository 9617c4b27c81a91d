#pragma once

#include <QString>

#include <optional>
#include <tuple>
#include <vector>

#include "platform/json/Record.h"

namespace vynlex {

struct DetectedLanguage {
    QString language;
    double score = 0;

    bool operator==(const DetectedLanguage &) const = default;
};

struct Translation {
    QString text;
    QString to;

    bool operator==(const Translation &) const = default;
};

/// One element of the translator's answer.
struct TranslationResponse {
    std::optional<DetectedLanguage> detectedLanguage;
    std::optional<std::vector<Translation>> translations;

    bool operator==(const TranslationResponse &) const = default;
};

template<>
inline constexpr auto fields<DetectedLanguage> = std::tuple{
    required("language", &DetectedLanguage::language),
    required("score", &DetectedLanguage::score),
};
template<>
inline constexpr auto fields<Translation> = std::tuple{
    required("text", &Translation::text),
    required("to", &Translation::to),
};
template<>
inline constexpr auto fields<TranslationResponse> = std::tuple{
    optional("detectedLanguage", &TranslationResponse::detectedLanguage),
    optional("translations", &TranslationResponse::translations),
};

} // namespace vynlex
