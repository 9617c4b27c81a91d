#pragma once

namespace vynlex {

/// Who uses the backend. Nothing that is sent depends on it.
enum class VLCurrentUserType { guest, loggedIn };

} // namespace vynlex
