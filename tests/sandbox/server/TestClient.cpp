#include "tests/sandbox/server/TestClient.h"

#include <boost/asio/read.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>

#include <utility>

namespace sandbox {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using asio::ip::tcp;

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
    return {response.result_int(), response.base(), response.body()};
}

} // namespace

TestClient::TestClient(const Server::Listening &server, const std::string &host, Way way)
    : m_host(host)
{
    m_context.load_verify_file(server.authorityFile.string());
    tcp::socket socket = connected(m_io, way == Way::Direct ? server.tlsPort : server.proxyPort);
    if (way == Way::ThroughProxy) {
        asio::write(socket, asio::buffer("CONNECT " + host + ":443 HTTP/1.1\r\nHost: " + host + ":443\r\n\r\n"));
        http::response_parser<http::empty_body> parser;
        parser.skip(true);
        http::read_header(socket, m_buffer, parser);
        if (parser.get().result() != http::status::ok)
            throw boost::system::system_error(asio::error::host_not_found, "the proxy refused");
    }
    m_tls.emplace(std::move(socket), m_context);
    m_tls->set_verify_mode(asio::ssl::verify_peer);
    m_tls->set_verify_callback(asio::ssl::host_name_verification(host));
    SSL_set_tlsext_host_name(m_tls->native_handle(), host.c_str());
    m_tls->handshake(asio::ssl::stream_base::client);
}

Answer TestClient::request(const std::string &method, const std::string &target, const Headers &headers,
                           const std::string &body)
{
    Headers all = headers;
    all.insert({"Host", m_host});
    return exchange(*m_tls, m_buffer, method, target, all, body);
}

void TestClient::sendRaw(const std::string &bytes)
{
    asio::write(*m_tls, asio::buffer(bytes));
}

std::string TestClient::readToEnd()
{
    std::string all;
    boost::system::error_code error;
    asio::read(*m_tls, asio::dynamic_buffer(all), error);
    if (error != asio::error::eof)
        throw boost::system::system_error(error);
    return all;
}

unsigned TestClient::upgrade(const std::string &target, const Headers &headers)
{
    m_socket.emplace(*m_tls);
    m_socket->set_option(websocket::stream_base::decorator([&](websocket::request_type &request) {
        for (const auto &[name, value] : headers)
            request.set(name, value);
    }));
    m_socket->control_callback(
        [this](websocket::frame_type type, beast::string_view) { m_pongs += type == websocket::frame_type::pong; });
    websocket::response_type response;
    boost::system::error_code error;
    m_socket->handshake(response, m_host, target, error);
    if (error && error != websocket::error::upgrade_declined)
        throw boost::system::system_error(error);
    return response.result_int();
}

void TestClient::sendText(const std::string &text)
{
    m_socket->text(true);
    m_socket->write(asio::buffer(text));
}

void TestClient::sendBinary(const std::string &data)
{
    m_socket->binary(true);
    m_socket->write(asio::buffer(data));
}

void TestClient::sendPing()
{
    m_socket->ping("are you there");
}

TestClient::Event TestClient::receive()
{
    beast::flat_buffer message;
    boost::system::error_code error;
    m_socket->read(message, error);
    if (error == websocket::error::closed)
        return {"", m_socket->reason().code, std::string(m_socket->reason().reason.c_str())};
    if (error)
        throw boost::system::system_error(error);
    return {beast::buffers_to_string(message.data()), std::nullopt, "", m_socket->got_binary()};
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
