#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/server/Router.h"
#include "sandbox/server/Subscription.h"

namespace sandbox {

enum class RecognitionMode { Dictation, Conversation, Interactive };

/// By its name in any letter case ("dictation"); nothing for other words.
[[nodiscard]] std::optional<RecognitionMode> recognitionModeNamed(std::string_view name);

/// What a recogniser asks for in the address of its connection.
struct RecognitionParameters {
    std::optional<RecognitionMode> mode; ///< absent: the path leaves it to the messages
    std::string locale;
    bool detailed = false;
    std::optional<std::chrono::milliseconds> initialSilence; ///< absent: as the mode has it
};

/// The refusal of an upgrade without a good key (401), without a connection id (400) or, for recognition, with a
/// language or format that the service does not have (400). Nothing when all is well. Key and id may come as headers
/// or as parameters: browsers cannot set headers.
[[nodiscard]] std::optional<HttpResponse> refusalOf(const HttpRequest &request, const Subscription &subscription);
[[nodiscard]] std::optional<HttpResponse> recognitionRefusalOf(const HttpRequest &request,
                                                               const Subscription &subscription);

/// Of a request that was not refused.
[[nodiscard]] RecognitionParameters recognitionParametersOf(const HttpRequest &request);

} // namespace sandbox
