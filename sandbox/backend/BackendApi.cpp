#include "sandbox/backend/BackendApi.h"

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <limits>
#include <string_view>

#include "sandbox/backend/AnswerJson.h"
#include "sandbox/backend/ObjectId.h"
#include "sandbox/backend/RequestReader.h"
#include "sandbox/backend/Schema.h"
#include "sandbox/server/RandomId.h"

namespace sandbox {

namespace json = boost::json;
namespace fs = std::filesystem;

namespace {

constexpr int anyOffset = std::numeric_limits<int>::max();
constexpr int mostContactsInPage = 1000;
constexpr int mostCallsInPage = 200;
constexpr int mostMessagesInPage = 150;
constexpr std::size_t mostUploadedContacts = 10'000;
constexpr std::size_t longestText = 10'000;
constexpr std::size_t mostAttachments = 20;
constexpr std::chrono::days refreshTokenLifetime{30};
constexpr std::string_view knownSource = "myvyn-vynevents";

fs::path databaseFile(const fs::path &folder)
{
    if (folder.empty())
        return {};
    fs::create_directories(folder);
    return folder / "backend.sqlite";
}

bool isJson(std::string_view contentType)
{
    std::string_view type = contentType.substr(0, contentType.find(';'));
    while (type.ends_with(' '))
        type.remove_suffix(1);
    std::string lower(type);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower == "application/json";
}

/// What a "*" in the pattern stands for, empty when there is none; nothing when the path is not of the pattern.
std::optional<std::string> matched(std::string_view pattern, std::string_view path)
{
    const auto star = pattern.find('*');
    if (star == std::string_view::npos)
        return pattern == path ? std::optional<std::string>("") : std::nullopt;
    const std::string_view before = pattern.substr(0, star);
    const std::string_view after = pattern.substr(star + 1);
    if (path.size() <= before.size() + after.size() || !path.starts_with(before) || !path.ends_with(after))
        return std::nullopt;
    const std::string_view middle = path.substr(before.size(), path.size() - before.size() - after.size());
    return middle.find('/') == std::string_view::npos ? std::optional<std::string>(middle) : std::nullopt;
}

template<class Record, class ToJson> json::array listed(const std::vector<Record> &records, const ToJson &toJson)
{
    json::array array;
    for (const auto &record : records)
        array.push_back(toJson(record));
    return array;
}

bool contains(const std::vector<std::string> &texts, std::string_view text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

struct SentMessage {
    std::string text;
    std::vector<SentAttachment> attachments;
};

tl::expected<SentMessage, ApiError> readMessage(const std::string &body)
{
    const auto value = parseBody(body);
    if (!value)
        return tl::unexpected(value.error());
    SentMessage message;
    FieldErrors errors;
    {
        ObjectReader outer(*value, "", errors);
        if (const json::value *component = outer.member("messageComponent")) {
            ObjectReader inner(*component, "messageComponent", errors);
            message.text = inner.text("text", longestText);
            std::size_t index = 0;
            for (const auto &element : inner.array("attachments", mostAttachments)) {
                ObjectReader file(element, inner.pathOf("attachments", index++), errors);
                message.attachments.push_back(
                    {file.text("fileID"), file.text("fileName"), file.text("fileSize"), file.text("fileURL")});
            }
        }
    }
    if (!errors.empty())
        return tl::unexpected(ApiError::invalidBody(errors));
    return message;
}

} // namespace

struct BackendApi::Operation {
    std::string_view method;
    std::string_view path;
    Result (BackendApi::*answer)(const Context &);
    bool isForCallers = true; ///< otherwise for anybody
};

const std::vector<BackendApi::Operation> &BackendApi::operations()
{
    static const std::vector<Operation> all{
        {"POST", "/api/externalservertp/get-token", &BackendApi::getToken, false},
        {"PUT", "/api/contacts/append", &BackendApi::appendContacts},
        {"GET", "/api/contacts/all", &BackendApi::getContacts},
        {"GET", "/api/calls", &BackendApi::getCalls},
        {"POST", "/api/chat/thread", &BackendApi::getPrivateThread},
        {"GET", "/api/chat/thread/*/messages", &BackendApi::getMessages},
        {"POST", "/api/chat/thread/*/messages", &BackendApi::sendMessage},
    };
    return all;
}

BackendApi::BackendApi(const BackendOptions &options)
    : m_tokens(options.dataFolder, options.tokenLifetime)
    , m_database(databaseFile(options.dataFolder))
    , m_directory(m_database)
    , m_conversations(m_database)
{
    Transaction transaction(m_database);
    if (makeSchema(m_database))
        loadSeed(options.seed, m_database);
    transaction.commit();
}

ApiAnswer BackendApi::answer(const ApiRequest &request)
{
    const auto result = handled(request);
    if (!result)
        return {result.error().status, json::serialize(result.error().body())};
    return {200, json::serialize(*result)};
}

BackendApi::Result BackendApi::handled(const ApiRequest &request)
{
    const Operation *operation = nullptr;
    std::optional<std::string> threadId;
    for (const auto &candidate : operations()) {
        const auto found = matched(candidate.path, request.path);
        if (!found)
            continue;
        threadId = found;
        if (candidate.method == request.method)
            operation = &candidate;
    }
    if (!threadId)
        return tl::unexpected(ApiError::notFound("There is nothing at this address."));
    if (!operation)
        return tl::unexpected(ApiError::methodNotAllowed());
    if (!request.contentType || !isJson(*request.contentType))
        return tl::unexpected(ApiError::unsupportedMediaType());
    if (!request.deviceId)
        return tl::unexpected(ApiError::badRequest("The header deviceId is missing."));

    const std::scoped_lock lock(m_mutex);
    Context context{request, {}, *threadId};
    if (operation->isForCallers) {
        auto caller = callerOf(request.authorization);
        if (!caller)
            return tl::unexpected(caller.error());
        context.caller = *std::move(caller);
    }
    if (request.method == "GET" && !request.body.empty())
        return tl::unexpected(ApiError::badRequest("A GET request has no body."));
    if (request.method != "GET" && !request.query.empty())
        return tl::unexpected(ApiError::invalidQuery("unknown parameter '" + request.query.front().first + "'"));
    return (this->*operation->answer)(context);
}

tl::expected<BackendUser, ApiError> BackendApi::userOf(const std::string &token)
{
    const std::scoped_lock lock(m_mutex);
    return callerOf(token);
}

std::vector<Push> BackendApi::takePushes()
{
    const std::scoped_lock lock(m_pushMutex);
    return std::exchange(m_pushes, {});
}

void BackendApi::tell(const ThreadRecord &thread, std::string_view event, const json::object &data)
{
    Push push;
    for (const auto &member : thread.members)
        push.userIds.push_back(member.id);
    push.frame.event = event;
    push.frame.text =
        std::make_shared<const std::string>(json::serialize(json::object{{"event", event}, {"data", data}}));
    const std::scoped_lock lock(m_pushMutex);
    m_pushes.push_back(std::move(push));
}

tl::expected<BackendUser, ApiError> BackendApi::callerOf(const std::optional<std::string> &token)
{
    if (!token)
        return tl::unexpected(ApiError::unauthorized());
    const auto userId = m_tokens.userOf(*token, now());
    if (!userId) {
        return tl::unexpected(userId.error() == SessionTokens::Refusal::Expired ? ApiError::tokenExpired()
                                                                                : ApiError::unauthorized());
    }
    auto user = m_directory.user(*userId);
    if (!user)
        return tl::unexpected(ApiError::unauthorized());
    if (user->isWaiting)
        return tl::unexpected(ApiError::waiting());
    return *std::move(user);
}

tl::expected<ThreadRecord, ApiError> BackendApi::threadOf(const Context &context)
{
    auto thread = m_conversations.thread(context.threadId);
    if (!thread)
        return tl::unexpected(ApiError::notFound("There is no such conversation."));
    if (!thread->hasMember(context.caller.id))
        return tl::unexpected(ApiError::forbidden("You are not a member of this conversation."));
    return *std::move(thread);
}

BackendApi::Result BackendApi::getToken(const Context &context)
{
    if (context.request.source != knownSource)
        return tl::unexpected(ApiError::forbidden("The header x-source is missing or unknown."));
    const auto value = parseBody(context.request.body);
    if (!value)
        return tl::unexpected(value.error());
    FieldErrors errors;
    const std::string webToken = ObjectReader(*value, "", errors).text("jwt");
    if (errors.empty() && webToken.empty())
        errors.push_back({"jwt", "must not be empty"});
    if (!errors.empty())
        return tl::unexpected(ApiError::invalidBody(errors));

    const auto user = m_directory.userOfWebToken(webToken);
    if (!user)
        return tl::unexpected(ApiError::unauthorized());
    const Instant moment = now();
    const auto issued = m_tokens.issue(user->id, moment);
    json::object tokens;
    tokens["jwt"] = issued.token;
    tokens["refToken"] = randomHexId(); // no operation takes it
    tokens["jwt_expires_on"] = toWireTime(issued.expires);
    tokens["reftoken_expires_on"] = toWireTime(moment + refreshTokenLifetime);
    return tokens;
}

BackendApi::Result BackendApi::appendContacts(const Context &context)
{
    const auto value = parseBody(context.request.body);
    if (!value)
        return tl::unexpected(value.error());
    std::vector<KnownNumber> numbers;
    FieldErrors errors;
    {
        ObjectReader body(*value, "", errors);
        const json::array &contacts = body.array("contacts");
        if (contacts.size() > mostUploadedContacts)
            return tl::unexpected(ApiError::tooLarge("Too many contacts in one request."));
        for (const auto &element : contacts) {
            ObjectReader contact(element, body.pathOf("contacts", numbers.size()), errors);
            numbers.push_back({contact.text("name"), contact.text("phoneNo")});
            if (numbers.back().digits.find_first_not_of("0123456789") != std::string::npos)
                contact.complain(contact.pathOf("phoneNo"), "must be digits only");
        }
    }
    if (!errors.empty())
        return tl::unexpected(ApiError::invalidBody(errors));
    m_directory.addKnownNumbers(context.caller.id, numbers);
    json::object done;
    done["success"] = true;
    return done;
}

BackendApi::Result BackendApi::getContacts(const Context &context)
{
    QueryReader query(context.request.query);
    const PageRange range{query.integer("offset", 0, anyOffset, 0),
                          query.integer("limit", 1, mostContactsInPage, mostContactsInPage)};
    const auto search = query.text("search");
    if (const auto problem = query.problem())
        return tl::unexpected(*problem);

    const auto page = m_directory.contacts(context.caller.id, search.value_or(""), range);
    json::object answer;
    answer["moreAvailable"] = page.moreAfter(range);
    answer["total"] = page.total;
    answer["contacts"] = listed(page.records, contactJson);
    return answer;
}

BackendApi::Result BackendApi::getCalls(const Context &context)
{
    QueryReader query(context.request.query);
    const auto categories = query.words("callCategory", {"one_to_one_call", "group_call", "missed_call"});
    const PageRange range{query.integer("offset", 0, anyOffset), query.integer("limit", 1, mostCallsInPage)};
    if (const auto problem = query.problem())
        return tl::unexpected(*problem);

    const Directory::CallFilter filter{contains(categories, "one_to_one_call"), contains(categories, "group_call"),
                                       contains(categories, "missed_call")};
    const auto page = m_directory.calls(context.caller.id, filter, range);
    json::object answer;
    answer["totalCount"] = page.total;
    answer["moreAvailable"] = page.moreAfter(range);
    answer["callHistory"] =
        listed(page.records, [&](const CallRecord &call) { return callJson(call, context.caller.id); });
    return answer;
}

BackendApi::Result BackendApi::getPrivateThread(const Context &context)
{
    const auto value = parseBody(context.request.body);
    if (!value)
        return tl::unexpected(value.error());
    FieldErrors errors;
    std::vector<std::string> members;
    std::string about;
    {
        ObjectReader body(*value, "", errors);
        members = body.texts("members", 2, 2);
        about = body.text("context");
        const auto admins = body.texts("admins", 1, 2);
        if (errors.empty()) {
            if (members[0] == members[1])
                body.complain(body.pathOf("members", 1), "must be another than the first");
            if (!contains(members, about))
                body.complain(body.pathOf("context"), "must be one of the members");
            for (std::size_t i = 0; i < admins.size(); ++i) {
                if (!contains(members, admins[i]))
                    body.complain(body.pathOf("admins", i), "must be one of the members");
                else if (i > 0 && admins[i] == admins[i - 1])
                    body.complain(body.pathOf("admins", i), "must be another than the first");
            }
            for (std::size_t i = 0; i < members.size(); ++i) {
                if (!m_directory.user(members[i]))
                    body.complain(body.pathOf("members", i), "is nobody here");
            }
        }
    }
    if (!errors.empty())
        return tl::unexpected(ApiError::invalidBody(errors));
    if (!contains(members, context.caller.id))
        return tl::unexpected(ApiError::forbidden("You are not one of the two."));
    const Instant moment = now();
    const auto fresh = newObjectId(moment);
    const ThreadRecord thread =
        m_conversations.privateThread({fresh, members[0], members[1], about, context.caller.id, moment});
    json::object answer = threadJson(thread);
    if (thread.id == fresh)
        tell(thread, pushEvents::threadMade, answer);
    return answer;
}

BackendApi::Result BackendApi::getMessages(const Context &context)
{
    QueryReader query(context.request.query);
    const PageRange range{query.integer("offset", 0, anyOffset), query.integer("limit", 1, mostMessagesInPage)};
    if (const auto problem = query.problem())
        return tl::unexpected(*problem);
    const auto thread = threadOf(context);
    if (!thread)
        return tl::unexpected(thread.error());

    const auto page = m_conversations.messages(thread->id, context.caller.id, range);
    json::object answer;
    answer["messages"] = listed(page.records, messageJson);
    answer["moreAvailable"] = page.moreAfter(range);
    answer["totalCount"] = page.total;
    answer["unreadCount"] = page.unread;
    for (const auto &message : m_conversations.markRead(page.records, context.caller.id))
        tell(*thread, pushEvents::messageChanged, messageJson(message));
    return answer;
}

BackendApi::Result BackendApi::sendMessage(const Context &context)
{
    const auto thread = threadOf(context);
    if (!thread)
        return tl::unexpected(thread.error());
    const auto sent = readMessage(context.request.body);
    if (!sent)
        return tl::unexpected(sent.error());

    MessageRecord message;
    message.createdAt = now();
    message.id = newObjectId(message.createdAt);
    message.threadId = thread->id;
    message.creatorId = context.caller.id;
    message.component = messageComponent(sent->text, sent->attachments);
    message.attachmentCount = static_cast<std::int64_t>(sent->attachments.size());
    for (const auto &member : thread->members) {
        if (member.id != context.caller.id)
            message.recipients.push_back({member.id, true});
    }
    json::object answer = messageJson(m_conversations.send(message));
    tell(*thread, pushEvents::messageSent, answer);
    return answer;
}

} // namespace sandbox
