#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "sandbox/server/Server.h"

namespace sandbox {

enum class Way { Direct, ThroughProxy };

using Headers = std::map<std::string, std::string>;

struct Answer {
    unsigned status = 0;
    boost::beast::http::fields headers;
    std::string body;
};

/// A TLS connection of a strict client: it trusts the sandbox's authority only and checks the host name. Blocking;
/// every failure is thrown as boost::system::system_error.
class TestClient {
public:
    TestClient(const Server::Listening &server, const std::string &host, Way way = Way::Direct);

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
    [[nodiscard]] int pongs() const { return m_pongs; }

private:
    using Tls = boost::asio::ssl::stream<boost::asio::ip::tcp::socket>;

    const std::string m_host;
    boost::asio::io_context m_io;
    boost::asio::ssl::context m_context{boost::asio::ssl::context::tls_client};
    boost::beast::flat_buffer m_buffer;
    std::optional<Tls> m_tls;
    std::optional<boost::beast::websocket::stream<Tls &>> m_socket;
    int m_pongs = 0;
};

/// One request in the clear, as to the control port.
Answer plainRequest(std::uint16_t port, const std::string &method, const std::string &target,
                    const std::string &body = {}, const std::string &host = "localhost");

} // namespace sandbox
