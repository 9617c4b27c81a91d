#pragma once

#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <optional>

namespace vynlex {

/// What the kit keeps of the signed-in user for the life of the process.
///
/// Main thread.
class VLApiManager {
public:
    VLApiManager() = default;

    static VLApiManager &shared();

    /// The host's keys; absent until the host sets the kit up, and the last record wins. The services copy what they
    /// need when they are made or asked, so a later record does not reach a recogniser that exists already.
    std::optional<VLTranslationConfig> translatedConfig;
};

} // namespace vynlex
