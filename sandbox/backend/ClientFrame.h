#pragma once

#include <string>
#include <tl/expected.hpp>
#include <variant>

#include "sandbox/server/WebSocketConnection.h"

namespace sandbox {

// What a client says on the socket.

struct LoginFrame {
    std::string token;
};
struct KeepAliveFrame {};
struct AcknowledgementFrame {
    std::string event; ///< of the frame that was received
};
using ClientFrame = std::variant<LoginFrame, KeepAliveFrame, AcknowledgementFrame>;

/// Strictly as docs/confera-api.json has it; otherwise a line that says what is wrong, without any value.
[[nodiscard]] tl::expected<ClientFrame, std::string> readClientFrame(const WebSocketMessage &message);

} // namespace sandbox
