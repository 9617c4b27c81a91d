#pragma once

#include <QString>

#include <array>
#include <tl/expected.hpp>

#include "Device.h"
#include "Options.h"
#include "Room.h"
#include "Stage.h"

namespace host {

/// Sentences of the phrasebook that make a small conversation, the speaker's first, then one after the other.
inline constexpr std::array smallConversation = {"greet.howareyou", "greet.fine", "dir.station", "meet.wait"};

/// Plays the turns that the options ask for on the conversation screen, and writes transcript, pictures and sound into
/// the output folder. An error is one clear line; the transcript holds the turns that came through.
tl::expected<void, QString> runTurns(const Options &options, Stage &stage, Room &room, const Device &device);

} // namespace host
