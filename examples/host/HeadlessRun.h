#pragma once

#include <QString>

#include <tl/expected.hpp>

#include "ConversationPlayer.h"
#include "Options.h"

namespace host {

/// Plays what the options ask for, and writes transcript, pictures and sound into the output folder. An error is one
/// clear line; the transcript then holds the turns that came through before.
tl::expected<void, QString> runHeadless(const Options &options, Stage &stage, Room &room);

} // namespace host
