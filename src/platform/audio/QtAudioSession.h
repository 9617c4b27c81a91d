#pragma once

#include "platform/audio/AudioSession.h"

namespace vynlex {

/// The session of platforms on which applications share the sound devices without arrangement: the sound server mixes
/// them and routes them by the user's choice. Every setting is accepted.
class QtAudioSession final : public AudioSession {
public:
    tl::expected<void, QString> setCategory(Category, Mode, Option) override { return {}; }
    tl::expected<void, QString> setActive(bool) override { return {}; }
};

} // namespace vynlex
