#pragma once

#include <tl/expected.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/server/Router.h"
#include "sandbox/server/Subscription.h"
#include "sandbox/translation/TranslatorError.h"

namespace sandbox {

/// What a client asks of "translate": every text into every target language.
struct TranslateRequest {
    std::optional<std::string> from; ///< absent: to be detected
    std::vector<std::string> to;
    std::vector<std::string> texts;

    /// Characters times target languages: what the service charges for.
    [[nodiscard]] std::size_t meteredCharacters() const;

    /// The service's limits for one request (its page "service limits"): 1,000 texts; 50,000 characters in a text, and
    /// in all of them times the number of target languages.
    static constexpr std::size_t mostTexts = 1000;
    static constexpr std::size_t mostCharacters = 50'000;

    /// Checks, in this order, credentials, method, content type, parameters and body.
    ///
    /// Key and region come in the headers Ocp-Apim-Subscription-Key and Ocp-Apim-Subscription-Region, or in the
    /// parameters Subscription-Key and Subscription-Region. The languages are those of the phrasebook.
    static tl::expected<TranslateRequest, TranslatorError> parse(const HttpRequest &request,
                                                                 const Subscription &subscription);
};

} // namespace sandbox
