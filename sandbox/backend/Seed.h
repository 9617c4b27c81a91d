#pragma once

#include <filesystem>

#include "sandbox/backend/Database.h"

namespace sandbox {

/// The file that comes with the sandbox.
[[nodiscard]] std::filesystem::path defaultSeedFile();

/// Fills an empty database from a file of users, calls and threads with their messages (oldest first). The web token of
/// a user is "web-token-" and the user's id. The file's "deviceContacts" are not the backend's: an address book for a
/// device that plays with it. Within the transaction of the caller. Throws std::runtime_error with file and place.
void loadSeed(const std::filesystem::path &file, Database &database);

} // namespace sandbox
