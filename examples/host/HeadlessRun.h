#pragma once

#include <QString>

#include <functional>

#include <tl/expected.hpp>

#include "ConversationPlayer.h"
#include "Options.h"

namespace host {

/// Plays what the options ask for, and writes transcript, pictures and sound into the output folder. An error is one
/// clear line; the transcript holds the turns that came through. `holdTranslation` makes the next translation take a
/// while and may be empty.
tl::expected<void, QString> runHeadless(const Options &options, Stage &stage, Room &room,
                                        const std::function<void()> &holdTranslation);

} // namespace host
