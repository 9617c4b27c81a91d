#include "sandbox/backend/Seed.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/backend/AnswerJson.h"
#include "sandbox/backend/Conversations.h"
#include "sandbox/backend/Directory.h"
#include "sandbox/backend/WireTime.h"

namespace sandbox {

namespace json = boost::json;

namespace {

std::string text(const json::object &object, const char *key)
{
    const auto *found = object.if_contains(key);
    if (!found || !found->is_string())
        throw std::runtime_error(std::string("\"") + key + "\" is no text");
    return std::string(found->get_string());
}

std::string textOrNothing(const json::object &object, const char *key)
{
    return object.contains(key) ? text(object, key) : std::string();
}

bool flag(const json::object &object, const char *key)
{
    const auto *found = object.if_contains(key);
    return found && found->is_bool() && found->get_bool();
}

const json::array &array(const json::object &object, const char *key)
{
    const auto *found = object.if_contains(key);
    if (!found || !found->is_array())
        throw std::runtime_error(std::string("\"") + key + "\" is no array");
    return found->get_array();
}

Instant time(const json::object &object, const char *key)
{
    const auto instant = fromWireTime(text(object, key));
    if (!instant)
        throw std::runtime_error(std::string("\"") + key + "\" is not a time as in 2026-01-31T09:15:00.000+0000");
    return *instant;
}

/// Calls `add` for each object of the array; what it throws gets the place in front.
template<class Add> void each(const json::object &object, const char *key, const Add &add)
{
    const json::array &all = array(object, key);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::string place = std::string(key) + "[" + std::to_string(i) + "]";
        if (!all[i].is_object())
            throw std::runtime_error(place + ": no object");
        try {
            add(all[i].get_object());
        } catch (const std::exception &error) {
            throw std::runtime_error(place + ": " + error.what());
        }
    }
}

class Loader {
public:
    explicit Loader(Database &database)
        : m_directory(database)
        , m_conversations(database)
    {
    }

    void addUser(const json::object &seed)
    {
        BackendUser user;
        user.id = text(seed, "id");
        user.name = text(seed, "name");
        user.lname = text(seed, "lname");
        user.phoneNo = text(seed, "phoneNo");
        user.emailId = textOrNothing(seed, "emailId");
        user.roleIds = json::serialize(array(seed, "roleIds"));
        user.hasPicture = flag(seed, "picture");
        user.isWaiting = textOrNothing(seed, "state") == "waiting";
        m_directory.addUser(user, "web-token-" + user.id);
    }

    void addCall(const json::object &seed)
    {
        CallRecord call;
        call.id = text(seed, "id");
        call.category = text(seed, "category");
        if (call.category != "one_to_one_call" && call.category != "group_call")
            throw std::runtime_error("unknown category " + call.category);
        call.owner = knownUser(text(seed, "owner"));
        call.title = textOrNothing(seed, "title");
        call.startedAt = time(seed, "startedAt");
        call.endedAt = call.startedAt + std::chrono::seconds(seed.at("seconds").to_number<int>());
        each(seed, "members", [&](const json::object &member) {
            call.members.push_back({knownUser(text(member, "userId")), flag(member, "missed")});
        });
        m_directory.addCall(call);
    }

    void addThread(const json::object &seed)
    {
        const json::array &members = array(seed, "members");
        if (members.size() != 2 || !members[0].is_string() || !members[1].is_string())
            throw std::runtime_error("\"members\" are not two ids");
        const std::string first(members[0].get_string());
        const std::string second(members[1].get_string());
        m_conversations.privateThread({text(seed, "id"), first, second, second, first, time(seed, "createdAt")});
        each(seed, "messages", [&](const json::object &message) {
            MessageRecord record;
            record.id = text(message, "id");
            record.threadId = text(seed, "id");
            record.creatorId = text(message, "by");
            record.createdAt = time(message, "at");
            if (record.creatorId != first && record.creatorId != second)
                throw std::runtime_error("by nobody of the thread");
            record.recipients = {{record.creatorId == first ? second : first, flag(message, "unread")}};
            fillIn(record, message);
            m_conversations.add(record);
        });
    }

private:
    void fillIn(MessageRecord &record, const json::object &message)
    {
        if (const auto *system = message.if_contains("system")) {
            const json::object &what = system->as_object();
            record.isSystem = true;
            record.component = systemComponent(text(what, "message"), knownUsers(array(what, "usersAdded")),
                                               knownUsers(array(what, "usersRemoved")));
            return;
        }
        std::vector<SentAttachment> attachments;
        if (message.contains("attachments")) {
            each(message, "attachments", [&](const json::object &file) {
                attachments.push_back(
                    {text(file, "fileID"), text(file, "fileName"), text(file, "fileSize"), text(file, "fileURL")});
            });
        }
        record.component = messageComponent(text(message, "text"), attachments);
        record.attachmentCount = static_cast<std::int64_t>(attachments.size());
    }

    BackendUser knownUser(const std::string &id)
    {
        auto user = m_directory.user(id);
        if (!user)
            throw std::runtime_error("there is no user " + id);
        return *std::move(user);
    }

    std::vector<BackendUser> knownUsers(const json::array &ids)
    {
        std::vector<BackendUser> users;
        for (const auto &id : ids)
            users.push_back(knownUser(std::string(id.as_string())));
        return users;
    }

    Directory m_directory;
    Conversations m_conversations;
};

} // namespace

std::filesystem::path defaultSeedFile()
{
    return SANDBOX_SEED_FILE;
}

void loadSeed(const std::filesystem::path &file, Database &database)
{
    std::ifstream stream(file);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    if (!stream.is_open() || stream.bad())
        throw std::runtime_error(file.string() + ": cannot be read");
    boost::system::error_code error;
    const json::value value = json::parse(content, error);
    if (error || !value.is_object())
        throw std::runtime_error(file.string() + ": not a JSON object");
    const json::object &seed = value.get_object();
    Loader loader(database);
    try {
        each(seed, "users", [&](const json::object &user) { loader.addUser(user); });
        each(seed, "calls", [&](const json::object &call) { loader.addCall(call); });
        each(seed, "threads", [&](const json::object &thread) { loader.addThread(thread); });
    } catch (const std::exception &wrong) {
        throw std::runtime_error(file.string() + ": " + wrong.what());
    }
}

} // namespace sandbox
