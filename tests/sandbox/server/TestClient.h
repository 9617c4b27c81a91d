#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "sandbox/server/Server.h"

namespace sandbox {

enum class Way { Direct, ThroughProxy };

using Headers = std::map<std::string, std::string>;

struct Answer {
    unsigned status = 0;
    Headers headers; ///< names in lower case
    std::string body;
};

/// A TLS connection of a strict client: it trusts the sandbox's authority only and checks the host name. Blocking;
/// every failure is thrown as boost::system::system_error.
class TestClient {
public:
    TestClient(const Server::Listening &server, const std::string &host, Way way = Way::Direct);
    ~TestClient();

    /// One request, one answer; the connection stays open for the next.
    Answer request(const std::string &method, const std::string &target, const Headers &headers = {},
                   const std::string &body = {});

    void sendRaw(const std::string &bytes);
    /// Everything until the server ends the connection in order.
    std::string readToEnd();

    /// The connection becomes a WebSocket. The answer's status is 101 when that worked.
    unsigned upgrade(const std::string &target, const Headers &headers = {});
    void sendText(const std::string &text);
    void sendBinary(const std::string &data);
    void sendPing();

    struct Event {
        std::string text;
        std::optional<std::uint16_t> closeCode; ///< the server has closed
        std::string closeReason;
        bool binary = false;
    };
    Event receive();
    /// How many have come in while receiving.
    [[nodiscard]] int pongs() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// One request in the clear, as to the control port.
Answer plainRequest(std::uint16_t port, const std::string &method, const std::string &target,
                    const std::string &body = {}, const std::string &host = "localhost");

} // namespace sandbox
