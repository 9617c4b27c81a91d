#include <QJsonDocument>
#include <QJsonObject>

#include "chat/VLWebSocketManager.h"
#include "chat/WireText.h"
#include "tests/fakes/TestPlatform.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/fuzz/Property.h"
#include "tests/fuzz/TwoParsers.h"

using namespace Qt::StringLiterals;

namespace vynlex::fuzz {
namespace {

/// A session that is not connected keeps what it would send, which is how its acknowledgements are seen.
struct Session {
    TestPlatform platform;
    VLWebSocketManager manager{VLApiServer::staging, u"h.p.s"_s};
    std::vector<VLChatMessage> heard;

    Session()
    {
        manager.isConnectedToNetwork = true;
        manager.onNewChatMessage = [this](const VLChatMessage &message) {
            require(manager.pendingRequests.size() == 1, "a message is acknowledged before it is handed on");
            heard.push_back(message);
        };
        manager.connect();
    }
};

/// The rules for a message, told once more in Qt's words: only identifiers are insisted on.
bool hasIdentifiers(const QJsonValue &message)
{
    return message["_id"_L1].isString() && message["threadId"_L1].isString();
}

/// Deliberately the end of the process.
bool hasImpossibleAuthor(const QJsonValue &message)
{
    const QJsonValue author = message["createdBy"_L1];
    return hasIdentifiers(message) && !author.isUndefined() && !author.isNull() && !author.isString();
}

void requireRules(const VLChatMessage &message, const QJsonValue &json)
{
    const bool system = json["type"_L1] == QJsonValue(u"system"_s);
    const QJsonValue component = json[system ? "systemComponent"_L1 : "messageComponent"_L1];
    const QString text = component[system ? "message"_L1 : "text"_L1].toString();
    require(message.id == json["_id"_L1].toString() && message.threadId == json["threadId"_L1].toString() &&
                message.creatorId == json["createdBy"_L1].toString(),
            "a message is told by its identifiers");
    require(message.isSystemMessage == system && message.messageText == text, "its type says where its text stands");
    require(!(system ? message.attachments.has_value() : message.addedUsers || message.removedUsers),
            "nothing is taken from the other component");
    require(!message.isIncomingMessage, "the backend does not say who reads");
}

void receive(const QByteArray &frame, const TwoParsers &parsed)
{
    static Session session;
    session.heard.clear();
    session.manager.pendingRequests.clear();
    const bool ended = endsDeliberately(
        [&] { session.manager.didReceive(websocket::Text{frame}, *session.manager.socketConnection); });

    const bool isObject = parsed.tree() && parsed.tree()->root().isObject();
    require(session.manager.pendingRequests.size() == (isObject ? 1 : 0), "objects are acknowledged, each once");
    if (!isObject)
        return;
    const QString event = parsed.tree()->root().find("event"_L1).text().value_or(QString());
    require(session.manager.pendingRequests.front().data.at(u"originalEvent"_s) == event,
            "under the name it came with");
    require(!ended || event == "chatMessage"_L1, "only a chat message is looked into");
    require(session.heard.empty() || event == "chatMessage"_L1, "only chat messages are handed on");
}

void requireWireText(const QString &text)
{
    const WireText wireText = decodeWireText(text);
    if (text.count("##"_L1) != 1 && wireText.languageCode == "en-IN"_L1)
        require(wireText.text == text || encodeWireText(wireText) == text, "what is no wire text is taken whole");
    else
        require(encodeWireText(wireText) == text, "wire text is two parts");
}

} // namespace

void chat(const QByteArray &bytes)
{
    requireWireText(QString::fromUtf8(bytes));
    const TwoParsers text(bytes);
    receive(bytes, text);
    endsDeliberately([&] { (void)text.read<VLThreadChatMessages>(); });
    endsDeliberately([&] { (void)text.read<SocketResponse<VLChatMessage>>(); });

    const QJsonObject json = QJsonDocument::fromJson(bytes).object();
    std::optional<VLChatMessage> message;
    const bool ended = endsDeliberately([&] {
        if (auto read = text.read<VLChatMessage>())
            message = std::move(*read);
    });
    if (!text.isComparable())
        return;
    require(ended == hasImpossibleAuthor(json), "an author that is no text ends the process, and nothing else does");
    require(message.has_value() == (hasIdentifiers(json) && !ended), "identifiers alone decide");
    if (message)
        requireRules(*message, json);
}

} // namespace vynlex::fuzz
