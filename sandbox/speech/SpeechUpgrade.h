#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "sandbox/server/Router.h"
#include "sandbox/server/Subscription.h"

namespace sandbox {

/// What a recogniser asks for in the address of its connection.
struct RecognitionParameters {
    enum class Mode { Dictation, Conversation, Interactive };

    Mode mode = Mode::Conversation;
    std::string locale;
    bool detailed = false;
};

/// The refusal of an upgrade without a good key (401), without a connection id (400) or, for recognition, with a
/// language or format that the service does not have (400). Nothing when all is well.
[[nodiscard]] std::optional<HttpResponse> refusalOf(const HttpRequest &request, const Subscription &subscription);
[[nodiscard]] std::optional<HttpResponse> recognitionRefusalOf(const HttpRequest &request,
                                                               const Subscription &subscription);

/// Of a request that was not refused.
[[nodiscard]] RecognitionParameters recognitionParametersOf(const HttpRequest &request);

} // namespace sandbox
