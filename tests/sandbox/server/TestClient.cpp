#include "tests/sandbox/server/TestClient.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/streambuf.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/string.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace sandbox {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using asio::ip::tcp;
using Tls = asio::ssl::stream<tcp::socket>;

namespace {

tcp::socket connected(asio::io_context &io, std::uint16_t port)
{
    tcp::socket socket(io);
    socket.connect({asio::ip::address_v4::loopback(), port});
    return socket;
}

template<class Stream>
Answer exchange(Stream &stream, beast::flat_buffer &buffer, const std::string &method, const std::string &target,
                const Headers &headers, const std::string &body)
{
    http::request<http::string_body> request;
    request.method_string(method);
    request.target(target);
    for (const auto &[name, value] : headers)
        request.set(name, value);
    request.body() = body;
    request.prepare_payload();
    http::write(stream, request);

    http::response<http::string_body> response;
    http::read(stream, buffer, response);
    Answer answer{response.result_int(), {}, response.body()};
    for (const auto &field : response) {
        std::string name(field.name_string());
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        answer.headers[name] = std::string(field.value());
    }
    return answer;
}

} // namespace

struct TestClient::State {
    asio::io_context io;
    asio::ssl::context context{asio::ssl::context::tls_client};
    std::string host;
    beast::flat_buffer buffer;
    std::unique_ptr<Tls> tls;
    std::unique_ptr<websocket::stream<Tls &>> ws;
    int pongs = 0;
};

TestClient::TestClient(const Server::Listening &server, const std::string &host, Way way)
    : m_state(std::make_unique<State>())
{
    State &s = *m_state;
    s.host = host;
    s.context.load_verify_file(server.authorityFile.string());
    tcp::socket socket = connected(s.io, way == Way::Direct ? server.tlsPort : server.proxyPort);
    if (way == Way::ThroughProxy) {
        const std::string connect = "CONNECT " + host + ":443 HTTP/1.1\r\nHost: " + host + ":443\r\n\r\n";
        asio::write(socket, asio::buffer(connect));
        http::response_parser<http::empty_body> parser;
        parser.skip(true);
        http::read_header(socket, s.buffer, parser);
        if (parser.get().result() != http::status::ok)
            throw boost::system::system_error(asio::error::host_not_found, "the proxy refused");
    }
    s.tls = std::make_unique<Tls>(std::move(socket), s.context);
    s.tls->set_verify_mode(asio::ssl::verify_peer);
    s.tls->set_verify_callback(asio::ssl::host_name_verification(host));
    SSL_set_tlsext_host_name(s.tls->native_handle(), host.c_str());
    s.tls->handshake(asio::ssl::stream_base::client);
}

TestClient::~TestClient() = default;

Answer TestClient::request(const std::string &method, const std::string &target, const Headers &headers,
                           const std::string &body)
{
    Headers all{{"Host", m_state->host}};
    for (const auto &[name, value] : headers)
        all[name] = value;
    return exchange(*m_state->tls, m_state->buffer, method, target, all, body);
}

void TestClient::sendRaw(const std::string &bytes)
{
    asio::write(*m_state->tls, asio::buffer(bytes));
}

std::string TestClient::readToEnd()
{
    std::string all;
    std::array<char, 4096> piece{};
    boost::system::error_code error;
    for (;;) {
        const std::size_t size = m_state->tls->read_some(asio::buffer(piece), error);
        if (error == asio::error::eof)
            return all;
        if (error)
            throw boost::system::system_error(error);
        all.append(piece.data(), size);
    }
}

unsigned TestClient::upgrade(const std::string &target, const Headers &headers)
{
    State &s = *m_state;
    s.ws = std::make_unique<websocket::stream<Tls &>>(*s.tls);
    s.ws->set_option(websocket::stream_base::decorator([&](websocket::request_type &request) {
        for (const auto &[name, value] : headers)
            request.set(name, value);
    }));
    s.ws->control_callback([&s](websocket::frame_type type, beast::string_view) {
        if (type == websocket::frame_type::pong)
            ++s.pongs;
    });
    websocket::response_type response;
    boost::system::error_code error;
    s.ws->handshake(response, s.host, target, error);
    if (error && error != websocket::error::upgrade_declined)
        throw boost::system::system_error(error);
    return response.result_int();
}

void TestClient::sendText(const std::string &text)
{
    m_state->ws->text(true);
    m_state->ws->write(asio::buffer(text));
}

void TestClient::sendBinary(const std::string &data)
{
    m_state->ws->binary(true);
    m_state->ws->write(asio::buffer(data));
}

void TestClient::sendPing()
{
    m_state->ws->ping("are you there");
}

int TestClient::pongs() const
{
    return m_state->pongs;
}

TestClient::Event TestClient::receive()
{
    State &s = *m_state;
    beast::flat_buffer message;
    boost::system::error_code error;
    s.ws->read(message, error);
    if (error == websocket::error::closed)
        return {"", s.ws->reason().code, std::string(s.ws->reason().reason.c_str())};
    if (error)
        throw boost::system::system_error(error);
    return {beast::buffers_to_string(message.data()), std::nullopt, "", s.ws->got_binary()};
}

Answer plainRequest(std::uint16_t port, const std::string &method, const std::string &target, const std::string &body,
                    const std::string &host)
{
    asio::io_context io;
    tcp::socket socket = connected(io, port);
    beast::flat_buffer buffer;
    return exchange(socket, buffer, method, target, {{"Host", host}}, body);
}

} // namespace sandbox
