#include "sandbox/backend/SessionTokens.h"

#include <jwt.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "sandbox/server/RandomId.h"

namespace sandbox {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t keySize = 64; // hexadecimal digits: 256 bits, as long as the hash

using Jwt = std::unique_ptr<jwt_t, decltype(&jwt_free)>;

[[noreturn]] void failOnFile(const fs::path &file, const char *what)
{
    throw std::runtime_error(file.string() + ": " + what + ": " + std::strerror(errno));
}

std::string newKey()
{
    return randomHexId() + randomHexId();
}

/// A key that another process has made at the same moment stays.
void makeKeyFile(const fs::path &file)
{
    const fs::path draft = file.string() + "." + randomHexId();
    const std::string key = newKey();
    const int descriptor = open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (descriptor < 0)
        failOnFile(draft, "cannot be made");
    const bool written =
        write(descriptor, key.data(), key.size()) == static_cast<ssize_t>(key.size()) && fsync(descriptor) == 0;
    close(descriptor);
    const bool named = written && (link(draft.c_str(), file.c_str()) == 0 || errno == EEXIST);
    const int reason = errno;
    unlink(draft.c_str());
    errno = reason;
    if (!named)
        failOnFile(file, "cannot be written");
}

std::string keyIn(const fs::path &folder)
{
    if (folder.empty())
        return newKey();
    fs::create_directories(folder);
    const fs::path file = folder / "session-key";
    if (!fs::exists(file))
        makeKeyFile(file);
    std::ifstream stream(file);
    std::string key{std::istreambuf_iterator<char>(stream), {}};
    if (!stream || key.size() != keySize)
        throw std::runtime_error(file.string() + ": not a key of this program; remove it to sign everybody out");
    return key;
}

const unsigned char *bytes(const std::string &key)
{
    return reinterpret_cast<const unsigned char *>(key.data());
}

} // namespace

SessionTokens::SessionTokens(const fs::path &folder, std::chrono::seconds lifetime)
    : m_key(keyIn(folder))
    , m_lifetime(lifetime)
{
}

SessionTokens::Issued SessionTokens::issue(const std::string &userId, Instant at) const
{
    const auto issued = std::chrono::floor<std::chrono::seconds>(at);
    const auto expires = issued + m_lifetime;
    jwt_t *made = nullptr;
    if (jwt_new(&made) != 0)
        throw std::bad_alloc();
    const Jwt jwt(made, jwt_free);
    const bool filled = jwt_add_grant(made, "userId", userId.c_str()) == 0 &&
                        jwt_add_grant_int(made, "iat", issued.time_since_epoch().count()) == 0 &&
                        jwt_add_grant_int(made, "exp", expires.time_since_epoch().count()) == 0 &&
                        jwt_set_alg(made, JWT_ALG_HS256, bytes(m_key), static_cast<int>(m_key.size())) == 0;
    const std::unique_ptr<char, decltype(&std::free)> text(filled ? jwt_encode_str(made) : nullptr, std::free);
    if (!text)
        throw std::runtime_error("cannot make a token");
    return {text.get(), expires};
}

tl::expected<std::string, SessionTokens::Refusal> SessionTokens::userOf(const std::string &token, Instant at) const
{
    jwt_t *read = nullptr;
    if (jwt_decode(&read, token.c_str(), bytes(m_key), static_cast<int>(m_key.size())) != 0)
        return tl::unexpected(Refusal::NotOurs);
    const Jwt jwt(read, jwt_free);
    const char *userId = jwt_get_grant(read, "userId");
    if (jwt_get_alg(read) != JWT_ALG_HS256 || !userId) // a token without a signature has another algorithm
        return tl::unexpected(Refusal::NotOurs);
    if (std::chrono::floor<std::chrono::seconds>(at).time_since_epoch().count() >= jwt_get_grant_int(read, "exp"))
        return tl::unexpected(Refusal::Expired);
    return userId;
}

} // namespace sandbox
