#pragma once

#include <QString>

#include <tl/expected.hpp>

namespace vynlex {

/// Port: how this application shares the device's audio with others.
///
/// Any thread. A platform without such a notion accepts every setting and does nothing.
class AudioSession {
public:
    enum class Category { PlayAndRecord };
    enum class Mode { VoiceChat };
    enum class Option { DefaultToSpeaker };

    virtual ~AudioSession() = default;

    virtual tl::expected<void, QString> setCategory(Category category, Mode mode, Option option) = 0;
    virtual tl::expected<void, QString> setActive(bool active) = 0;
};

} // namespace vynlex
