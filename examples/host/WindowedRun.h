#pragma once

#include "Room.h"
#include "Stage.h"

namespace host {

/// Shows the window until it is closed; with `needsVoice`, a panel beside the phone offers sentences to say. Returns
/// the process's exit code.
int runWindowed(Stage &stage, Room &room, bool needsVoice);

} // namespace host
