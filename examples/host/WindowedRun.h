#pragma once

#include <QString>

#include <optional>

#include "Room.h"
#include "Stage.h"

namespace host {

/// Where a device's window stands among those of the others, beginning with 0 at the left; one that stands alone is
/// placed by the desktop.
struct WindowPlace {
    QString title;
    std::optional<int> fromLeft;
};

/// Shows the window until it is closed; with `needsVoice`, a panel beside the phone offers sentences to say. Returns
/// the process's exit code.
int runWindowed(Stage &stage, Room &room, const WindowPlace &place, bool needsVoice);

} // namespace host
