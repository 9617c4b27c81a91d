#pragma once

#include <QString>

#include <optional>
#include <tuple>
#include <vector>

#include "platform/json/Record.h"

namespace vynlex {

/// The backend's answers about people and calls. An absent key and null are the same; times stay the backend's texts.

struct VLTokenResponse {
    std::optional<QString> jwt;
    std::optional<QString> refToken;
    std::optional<QString> jwtExpiresOn;
    std::optional<QString> reftokenExpiresOn;

    bool operator==(const VLTokenResponse &) const = default;
};

struct Contact {
    std::optional<QString> id;
    std::optional<QString> name; ///< first name
    std::optional<QString> lname;
    std::optional<QString> phoneNo;
    std::optional<std::vector<QString>> roleIds;

    bool operator==(const Contact &) const = default;
};

struct VLContactsResponse {
    std::optional<bool> moreAvailable;
    std::optional<qint64> total;
    std::optional<std::vector<Contact>> contacts;

    bool operator==(const VLContactsResponse &) const = default;
};

/// Only whether it is there counts.
struct ImageMeta {
    bool operator==(const ImageMeta &) const = default;
};

/// Somebody in a call.
struct Members {
    std::optional<QString> userId;
    std::optional<QString> type;
    std::optional<QString> phoneNo;
    std::optional<QString> name;
    std::optional<QString> lname;
    std::optional<ImageMeta> imageMeta;
    std::optional<QString> callRole;
    std::optional<QString> status;
    std::optional<bool> inAnActiveCall;

    bool operator==(const Members &) const = default;
};

/// A past call or a meeting room.
struct CallHistory {
    std::optional<QString> id;
    std::optional<QString> title;
    std::optional<QString> roomId;
    std::optional<QString> userId;
    std::optional<QString> groupId;
    std::optional<bool> isActive;
    std::optional<bool> groupModified;
    std::optional<QString> startMeeting;
    std::optional<std::vector<QString>> manualIps;
    std::optional<QString> conferaId;
    std::optional<bool> isOneToOne;
    std::optional<bool> isCurrentlyRecording;
    std::optional<bool> isRecordedFlag;
    std::optional<QString> endMeeting;
    std::optional<QString> cOn; ///< made on
    std::optional<QString> mOn; ///< changed on
    std::optional<qint64> v;
    std::optional<bool> isPersonal;
    std::optional<bool> forScheduledMeeting;
    std::optional<bool> isPinEnabled;
    std::optional<QString> roomPIN;
    std::optional<QString> ownerName;
    std::optional<QString> ownerPhoneNo;
    std::optional<QString> ownerEmailId;
    std::optional<QString> ownerTenantId;
    std::optional<ImageMeta> imageMeta;
    std::optional<bool> isMissedCall;
    std::optional<std::vector<Members>> members;
    std::optional<QString> typeOfCall;

    bool operator==(const CallHistory &) const = default;
};

struct VLRecentContactsResponse {
    qint64 totalCount = 0;
    bool moreAvailable = false;
    std::vector<CallHistory> callHistory;

    bool operator==(const VLRecentContactsResponse &) const = default;
};

/// Of calls whose only answer is that they went well.
struct VLSuccessResponse {
    std::optional<bool> success;

    bool operator==(const VLSuccessResponse &) const = default;
};

/// A row of the contacts screen; made on the device.
struct User {
    QString id;
    QString name;
    QString lname;
    QString phoneNumber;

    bool operator==(const User &) const = default;
};

template<>
inline constexpr auto fields<VLTokenResponse> = std::tuple{
    optional("jwt", &VLTokenResponse::jwt),
    optional("refToken", &VLTokenResponse::refToken),
    optional("jwt_expires_on", &VLTokenResponse::jwtExpiresOn),
    optional("reftoken_expires_on", &VLTokenResponse::reftokenExpiresOn),
};
template<>
inline constexpr auto fields<Contact> = std::tuple{
    optional("id", &Contact::id),           optional("name", &Contact::name),       optional("lname", &Contact::lname),
    optional("phoneNo", &Contact::phoneNo), optional("roleIds", &Contact::roleIds),
};
template<>
inline constexpr auto fields<VLContactsResponse> = std::tuple{
    optional("moreAvailable", &VLContactsResponse::moreAvailable),
    optional("total", &VLContactsResponse::total),
    optional("contacts", &VLContactsResponse::contacts),
};
template<> inline constexpr auto fields<ImageMeta> = std::tuple{};
template<>
inline constexpr auto fields<Members> = std::tuple{
    optional("userId", &Members::userId),
    optional("type", &Members::type),
    optional("phoneNo", &Members::phoneNo),
    optional("name", &Members::name),
    optional("lname", &Members::lname),
    optional("imageMeta", &Members::imageMeta),
    optional("callRole", &Members::callRole),
    optional("status", &Members::status),
    optional("inAnActiveCall", &Members::inAnActiveCall),
};
template<>
inline constexpr auto fields<CallHistory> = std::tuple{
    optional("_id", &CallHistory::id),
    optional("title", &CallHistory::title),
    optional("roomId", &CallHistory::roomId),
    optional("userId", &CallHistory::userId),
    optional("groupId", &CallHistory::groupId),
    optional("isActive", &CallHistory::isActive),
    optional("groupModified", &CallHistory::groupModified),
    optional("startMeeting", &CallHistory::startMeeting),
    optional("manualIps", &CallHistory::manualIps),
    optional("conferaId", &CallHistory::conferaId),
    optional("isOneToOne", &CallHistory::isOneToOne),
    optional("isCurrentlyRecording", &CallHistory::isCurrentlyRecording),
    optional("isRecordedFlag", &CallHistory::isRecordedFlag),
    optional("endMeeting", &CallHistory::endMeeting),
    optional("cOn", &CallHistory::cOn),
    optional("mOn", &CallHistory::mOn),
    optional("__v", &CallHistory::v),
    optional("isPersonal", &CallHistory::isPersonal),
    optional("forScheduledMeeting", &CallHistory::forScheduledMeeting),
    optional("isPinEnabled", &CallHistory::isPinEnabled),
    optional("roomPIN", &CallHistory::roomPIN),
    optional("ownerName", &CallHistory::ownerName),
    optional("ownerPhoneNo", &CallHistory::ownerPhoneNo),
    optional("ownerEmailId", &CallHistory::ownerEmailId),
    optional("ownerTenantId", &CallHistory::ownerTenantId),
    optional("imageMeta", &CallHistory::imageMeta),
    optional("isMissedCall", &CallHistory::isMissedCall),
    optional("members", &CallHistory::members),
    optional("typeOfCall", &CallHistory::typeOfCall),
};
template<>
inline constexpr auto fields<VLRecentContactsResponse> = std::tuple{
    required("totalCount", &VLRecentContactsResponse::totalCount),
    required("moreAvailable", &VLRecentContactsResponse::moreAvailable),
    required("callHistory", &VLRecentContactsResponse::callHistory),
};
template<>
inline constexpr auto fields<VLSuccessResponse> = std::tuple{
    optional("success", &VLSuccessResponse::success),
};

} // namespace vynlex
