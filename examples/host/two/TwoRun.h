#pragma once

#include <QString>

#include <tl/expected.hpp>

#include "Options.h"

namespace host {

/// Two people with a device each, on one sandbox: in windows, until both are closed; headless, they send voice messages
/// to each other, and transcript, pictures and sound go into the output folder. The first thing that goes wrong ends it
/// all with one clear line; the transcript then holds the messages that came through.
tl::expected<void, QString> runTwo(const Options &options);

} // namespace host
