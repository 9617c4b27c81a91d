#pragma once

#include "sandbox/backend/Database.h"

namespace sandbox {

/// Makes the tables of an empty database, within the transaction of the caller; true when it did. Throws
/// std::runtime_error when the database is of another version.
bool makeSchema(Database &database);

} // namespace sandbox
