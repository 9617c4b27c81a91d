#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

struct PushFrame {
    std::string_view event;                  ///< one of `pushEvents`
    std::shared_ptr<const std::string> text; ///< {"event":...,"data":...}
};

/// What users are told without having asked, in every session of theirs.
struct Push {
    std::vector<std::string> userIds;
    PushFrame frame;
};

namespace pushEvents {
inline constexpr std::string_view threadMade = "chatThreadAddOrEdit";
inline constexpr std::string_view messageSent = "chatMessage";
inline constexpr std::string_view messageChanged = "chatMessageUpdate";
} // namespace pushEvents

} // namespace sandbox
