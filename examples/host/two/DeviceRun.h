#pragma once

#include "Device.h"
#include "Options.h"
#include "Room.h"
#include "Stage.h"

namespace host {

/// The device of one of two people: does what the process asks that started this one, until that closes the input, or
/// the user the window. Returns the process's exit code.
int runDevice(const Options &options, Stage &stage, Room &room, const Device &device);

} // namespace host
