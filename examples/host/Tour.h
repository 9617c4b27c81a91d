#pragma once

#include <QString>

#include <tl/expected.hpp>

#include "Device.h"
#include "Options.h"
#include "Room.h"
#include "SandboxProcess.h"
#include "Stage.h"

namespace host {

/// Visits every screen of the kit in every state, live on the sandbox and as a user would come there: from the host's
/// page through home, conversation and chat, and back. Writes a page on it (index.html), the transcript of the
/// conversation, pictures and sound into the output folder.
///
/// The first step that does not come through ends it; an error is one clear line, and the page has what came before.
tl::expected<void, QString> runTour(const Options &options, Stage &stage, Room &room, const Device &device,
                                    const examples::SandboxProcess &sandbox);

} // namespace host
