#pragma once

#include <chrono>

namespace faults {

/// People converse, chat and open screens for so long, while services fail at random. At the end memory, threads, file
/// descriptors and the database are as they were, or the exit code says that they are not. Reports to standard error.
int playLongRun(std::chrono::minutes length, unsigned seed);

} // namespace faults
