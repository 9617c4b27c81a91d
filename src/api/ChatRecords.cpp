#include "api/ChatRecords.h"

#include "platform/dispatch/FatalError.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

struct MessageComponent {
    QString text;
    std::optional<std::vector<VLChatMessageAttachment>> attachments;
};

/// Its "action" is not read: there is one, so that the message's field holds it already.
struct SystemComponent {
    QString message;
    std::optional<std::vector<VLChatUser>> usersAdded;
    std::optional<std::vector<VLChatUser>> usersRemoved;
};

QString creatorOf(const JsonView &message)
{
    const JsonView creator = message.find("createdBy"_L1);
    auto text = creator.text();
    if (!text && !creator.isMissing() && !creator.isNull())
        fatalError(u"ChatRecords.cpp: the \"createdBy\" of a VLChatMessage is neither text nor null; the backend must "
                   "send a user id."_s);
    return std::move(text).value_or(QString());
}

} // namespace

template<>
inline constexpr auto fields<MessageComponent> = std::tuple{
    lenient("text", &MessageComponent::text),
    lenient("attachments", &MessageComponent::attachments),
};
template<>
inline constexpr auto fields<SystemComponent> = std::tuple{
    lenient("message", &SystemComponent::message),
    lenient("usersAdded", &SystemComponent::usersAdded),
    lenient("usersRemoved", &SystemComponent::usersRemoved),
};

bool json::Reader<VLChatMessage>::read(const JsonView &json, VLChatMessage &message, Failure *failure)
{
    if (!json.isObject())
        return fail(failure, json, "expected an object");
    if (!readFields(json, message, failure))
        return false;
    message.creatorId = creatorOf(json);
    message.isSystemMessage = message.messageType == VLChatMessageType::system;
    // All of a component is lenient: reading one fails only when it is no object, which is as if it were not there.
    if (message.isSystemMessage) {
        SystemComponent component;
        Reader<SystemComponent>::read(json.find("systemComponent"_L1), component, nullptr);
        message.messageText = std::move(component.message);
        message.addedUsers = std::move(component.usersAdded);
        message.removedUsers = std::move(component.usersRemoved);
    } else {
        MessageComponent component;
        Reader<MessageComponent>::read(json.find("messageComponent"_L1), component, nullptr);
        message.messageText = std::move(component.text);
        message.attachments = std::move(component.attachments);
    }
    return true;
}

} // namespace vynlex
