#pragma once

#include <chrono>

namespace faults {

/// Keeps 200 sockets open and sends 50 messages a second for so long, while the sandbox is killed again and again. No
/// message that it has acknowledged may be missing from its data or stand there twice, and none is pushed twice over
/// one socket. Reports to standard error; the exit code says whether that holds.
int playLoad(std::chrono::seconds length, unsigned seed);

} // namespace faults
