#pragma once

#include <boost/json/object.hpp>

#include <chrono>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

#include "sandbox/backend/ApiError.h"
#include "sandbox/backend/Conversations.h"
#include "sandbox/backend/Database.h"
#include "sandbox/backend/Directory.h"
#include "sandbox/backend/Push.h"
#include "sandbox/backend/Seed.h"
#include "sandbox/backend/SessionTokens.h"

namespace sandbox {

struct BackendOptions {
    std::filesystem::path dataFolder; ///< empty: everything in memory
    std::filesystem::path seed = defaultSeedFile();
    std::chrono::seconds tokenLifetime = std::chrono::hours(24);
};

/// What a request says, free of HTTP's own matters. Headers that are not there are absent.
struct ApiRequest {
    std::string method;
    std::string path; ///< "/api/..."
    std::vector<std::pair<std::string, std::string>> query;
    std::optional<std::string> contentType;
    std::optional<std::string> deviceId;
    std::optional<std::string> source; ///< "x-source"
    std::optional<std::string> authorization;
    std::string body;
};

struct ApiAnswer {
    unsigned status = 200;
    std::string body; ///< JSON
};

/// The REST interface of docs/confera-api.json over a database of users, calls and conversations.
///
/// Every request is checked in this order: path, method, content type, device id, who calls, query and body. A request
/// of somebody who waits for admission is refused then, but for the exchange of the web token, which tells who somebody
/// is and no more. What happens in a thread is told to both of its members, whoever did it: a request does not say
/// which of the caller's sessions it comes with.
class BackendApi {
public:
    /// Opens or makes "backend.sqlite" in the data folder; a new one gets the seed. Throws std::runtime_error.
    explicit BackendApi(const BackendOptions &options);

    /// Any thread; may wait for the disk. What it has acknowledged is on disk.
    [[nodiscard]] ApiAnswer answer(const ApiRequest &request);

    /// Whom a JWT names; refused as a request with it would be. Any thread; may wait for the disk.
    [[nodiscard]] tl::expected<BackendUser, ApiError> userOf(const std::string &token);

    /// What the requests so far give members to hear, in the order in which it came onto the disk; each once. Any
    /// thread; never waits for the disk.
    [[nodiscard]] std::vector<Push> takePushes();

private:
    struct Context {
        const ApiRequest &request;
        BackendUser caller;
        std::string threadId;
    };
    using Result = tl::expected<boost::json::object, ApiError>;
    struct Operation;
    static const std::vector<Operation> &operations();

    Result handled(const ApiRequest &request);
    tl::expected<BackendUser, ApiError> callerOf(const std::optional<std::string> &token);
    tl::expected<ThreadRecord, ApiError> threadOf(const Context &context);
    void tell(const ThreadRecord &thread, std::string_view event, const boost::json::object &data);

    Result getToken(const Context &context);
    Result appendContacts(const Context &context);
    Result getContacts(const Context &context);
    Result getCalls(const Context &context);
    Result getPrivateThread(const Context &context);
    Result getMessages(const Context &context);
    Result sendMessage(const Context &context);

    std::mutex m_mutex; ///< one request at a time: requests are short, and one database connection serves all
    SessionTokens m_tokens;
    Database m_database;
    Directory m_directory;
    Conversations m_conversations;

    std::mutex m_pushMutex; ///< taken for moments only
    std::vector<Push> m_pushes;
};

} // namespace sandbox
