#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/backend/BackendApi.h"
#include "sandbox/backend/SocketSession.h"
#include "sandbox/server/Server.h"
#include "sandbox/server/Subscription.h"

namespace sandbox {

/// The keys accepted when none is given. They are no secret: the demo host uses them, and no real service knows them.
inline constexpr std::string_view defaultSpeechKey = "sandbox-speech-key";
inline constexpr std::string_view defaultTranslatorKey = "sandbox-translator-key";

struct Options {
    ServerOptions server;
    Subscription speech;
    Subscription translator;
    BackendOptions backend;
    SocketLimits socket;
    std::optional<std::filesystem::path> phrasebook; ///< absent: the one that comes with the sandbox
    bool stopWithStandardInput = false;
    bool help = false;
    bool version = false;

    /// Throws std::invalid_argument with one line that says what is wrong.
    static Options parse(const std::vector<std::string> &arguments);
};

[[nodiscard]] std::string_view usage();

} // namespace sandbox
