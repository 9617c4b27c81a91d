#pragma once

#include <boost/json/object.hpp>

#include <string>
#include <string_view>
#include <vector>

#include "sandbox/backend/Conversations.h"
#include "sandbox/backend/Directory.h"

namespace sandbox {

// The records as docs/confera-api.json describes them.

[[nodiscard]] boost::json::object contactJson(const BackendUser &user);
/// As `callerId` sees it: whether the call was missed is each member's own.
[[nodiscard]] boost::json::object callJson(const CallRecord &call, std::string_view callerId);
[[nodiscard]] boost::json::object threadJson(const ThreadRecord &thread);
[[nodiscard]] boost::json::object messageJson(const MessageRecord &message);

/// A file that was sent with a message; the sender has put it where its URL says.
struct SentAttachment {
    std::string fileId;
    std::string fileName;
    std::string fileSize;
    std::string fileUrl;
};
/// `MessageRecord::component` of a message that a person has written, and of one about members.
[[nodiscard]] std::string messageComponent(std::string_view text, const std::vector<SentAttachment> &attachments);
[[nodiscard]] std::string systemComponent(std::string_view text, const std::vector<BackendUser> &added,
                                          const std::vector<BackendUser> &removed);

} // namespace sandbox
