#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include <tl/expected.hpp>

#include "sandbox/backend/WireTime.h"

namespace sandbox {

/// The JWTs (HS256) with which callers show who they are: "userId", "iat" and "exp". Any thread.
class SessionTokens {
public:
    /// The signing key is kept in `folder`, readable by its owner only, and made when it is not there; in memory when
    /// `folder` is empty. Throws std::runtime_error when that fails.
    SessionTokens(const std::filesystem::path &folder, std::chrono::seconds lifetime);

    struct Issued {
        std::string token;
        Instant expires;
    };
    [[nodiscard]] Issued issue(const std::string &userId, Instant at) const;

    enum class Refusal { NotOurs, Expired };
    /// Whom the token was issued to.
    [[nodiscard]] tl::expected<std::string, Refusal> userOf(const std::string &token, Instant at) const;

private:
    std::string m_key;
    std::chrono::seconds m_lifetime;
};

} // namespace sandbox
