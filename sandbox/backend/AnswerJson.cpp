#include "sandbox/backend/AnswerJson.h"

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <chrono>
#include <utility>

namespace sandbox {

namespace json = boost::json;

namespace {

json::object pictureOf(const BackendUser &user)
{
    json::object meta;
    meta["imageId"] = "picture-" + user.id;
    meta["mimeType"] = "image/jpeg";
    return meta;
}

json::object callMember(const BackendUser &user, const char *role, bool missed)
{
    json::object member;
    member["userId"] = user.id;
    member["type"] = "user";
    member["phoneNo"] = user.phoneNo;
    member["name"] = user.name;
    member["lname"] = user.lname;
    if (user.hasPicture)
        member["imageMeta"] = pictureOf(user);
    member["callRole"] = role;
    member["status"] = missed ? "missed" : "joined";
    member["inAnActiveCall"] = false;
    return member;
}

/// "modifiedAt" of a thread is the interface's only time that is a number, counted from 2001.
double secondsSince2001(Instant instant)
{
    constexpr std::chrono::sys_days epoch = std::chrono::year(2001) / std::chrono::January / 1;
    return std::chrono::duration<double>(instant - epoch).count();
}

json::array chatUsers(const std::vector<BackendUser> &users)
{
    json::array array;
    for (const auto &user : users) {
        json::object one;
        one["userId"] = user.id;
        one["name"] = user.name;
        one["lname"] = user.lname;
        array.push_back(std::move(one));
    }
    return array;
}

} // namespace

json::object contactJson(const BackendUser &user)
{
    json::object contact;
    contact["id"] = user.id;
    contact["name"] = user.name;
    contact["lname"] = user.lname;
    contact["phoneNo"] = user.phoneNo;
    contact["roleIds"] = json::parse(user.roleIds);
    return contact;
}

json::object callJson(const CallRecord &call, std::string_view callerId)
{
    const bool group = call.category == "group_call";
    const auto self = std::find_if(call.members.begin(), call.members.end(),
                                   [&](const auto &member) { return member.user.id == callerId; });
    json::array members;
    members.push_back(callMember(call.owner, "host", false));
    for (const auto &member : call.members)
        members.push_back(callMember(member.user, "participant", member.missed));

    json::object object;
    object["_id"] = call.id;
    object["title"] = call.title;
    object["roomId"] = "room-" + call.id;
    object["userId"] = call.owner.id;
    if (group)
        object["groupId"] = "group-" + call.id;
    object["isActive"] = false;
    object["groupModified"] = false;
    object["startMeeting"] = toWireTime(call.startedAt);
    object["manualIps"] = json::array{};
    object["conferaId"] = call.id;
    object["isOneToOne"] = !group;
    object["isCurrentlyRecording"] = false;
    object["isRecordedFlag"] = false;
    object["endMeeting"] = toWireTime(call.endedAt);
    object["cOn"] = toWireTime(call.startedAt);
    object["mOn"] = toWireTime(call.endedAt);
    object["__v"] = 0;
    object["isPersonal"] = false;
    object["forScheduledMeeting"] = false;
    object["isPinEnabled"] = false;
    object["ownerName"] = call.owner.lname.empty() ? call.owner.name : call.owner.name + " " + call.owner.lname;
    object["ownerPhoneNo"] = call.owner.phoneNo;
    object["ownerEmailId"] = call.owner.emailId;
    object["ownerTenantId"] = "confera";
    if (call.owner.hasPicture)
        object["imageMeta"] = pictureOf(call.owner);
    object["isMissedCall"] = self != call.members.end() && self->missed;
    object["members"] = std::move(members);
    object["typeOfCall"] = call.category;
    return object;
}

json::object threadJson(const ThreadRecord &thread)
{
    json::array members;
    for (const auto &member : thread.members) {
        json::object one;
        one["_id"] = member.id;
        one["name"] = member.name;
        one["lname"] = member.lname;
        members.push_back(std::move(one));
    }
    json::object object;
    object["_id"] = thread.id;
    object["name"] = "";
    object["status"] = "active";
    object["context"] = thread.context;
    object["conferaId"] = "";
    object["createdBy"] = thread.creatorId;
    object["isRestrictedChat"] = false;
    object["update"] = false;
    object["numberOfAttachments"] = thread.attachmentCount;
    object["createdAt"] = toWireTime(thread.createdAt);
    object["modifiedAt"] = secondsSince2001(thread.modifiedAt);
    object["members"] = std::move(members);
    return object;
}

json::object messageJson(const MessageRecord &message)
{
    json::array recipients;
    for (const auto &recipient : message.recipients) {
        json::object one;
        one["userId"] = recipient.userId;
        one["isDeleted"] = false;
        one["isUnread"] = recipient.isUnread;
        recipients.push_back(std::move(one));
    }
    json::object object;
    object["_id"] = message.id;
    object["threadId"] = message.threadId;
    object["conferaId"] = "";
    object["type"] = message.isSystem ? "system" : "message";
    object["createdBy"] = message.creatorId;
    object["creatorsName"] = message.creatorsName;
    object["creatorsLName"] = message.creatorsLName;
    object["cOn"] = toWireTime(message.createdAt);
    object[message.isSystem ? "systemComponent" : "messageComponent"] = json::parse(message.component);
    object["recipients"] = std::move(recipients);
    return object;
}

std::string messageComponent(std::string_view text, const std::vector<SentAttachment> &attachments)
{
    json::array array;
    for (const auto &attachment : attachments) {
        json::object one;
        one["fileID"] = attachment.fileId;
        one["fileName"] = attachment.fileName;
        one["fileSize"] = attachment.fileSize;
        one["downloadURL"] = attachment.fileUrl;
        for (const char *key : {"imageTrancodedURL", "streamingURL", "documentURL"})
            one[key] = ""; // nothing is transcoded here
        array.push_back(std::move(one));
    }
    json::object component;
    component["text"] = text;
    component["attachments"] = std::move(array);
    return json::serialize(component);
}

std::string systemComponent(std::string_view text, const std::vector<BackendUser> &added,
                            const std::vector<BackendUser> &removed)
{
    json::object component;
    component["message"] = text;
    component["usersAdded"] = chatUsers(added);
    component["usersRemoved"] = chatUsers(removed);
    component["action"] = "usermod";
    return json::serialize(component);
}

} // namespace sandbox
