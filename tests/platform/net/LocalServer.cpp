#include "tests/platform/net/LocalServer.h"

#include <sys/socket.h>

#include <array>
#include <utility>

#include <boost/asio/write.hpp>

namespace vynlex {

namespace asio = boost::asio;
using boost::system::error_code;

namespace {

asio::ip::tcp::endpoint loopback(quint16 port)
{
    return {asio::ip::address_v4::loopback(), port};
}

void pump(TcpSocket &from, TcpSocket &to)
{
    std::array<char, 4096> block{};
    error_code error;
    while (!error) {
        const std::size_t count = from.read_some(asio::buffer(block), error);
        if (count > 0)
            asio::write(to, asio::buffer(block.data(), count), error);
    }
    to.shutdown(TcpSocket::shutdown_send, error);
}

} // namespace

Peer::Peer(TcpSocket socket, const std::shared_ptr<asio::ssl::context> &tls)
    : m_socket(std::move(socket))
{
    if (tls) {
        m_tls.emplace(m_socket, *tls);
        m_tls->handshake(asio::ssl::stream_base::server);
    }
}

bool Peer::fill()
{
    std::array<char, 16384> block{};
    error_code error;
    const std::size_t count =
        m_tls ? m_tls->read_some(asio::buffer(block), error) : m_socket.read_some(asio::buffer(block), error);
    m_unread.append(block.data(), static_cast<qsizetype>(count));
    return count > 0;
}

QByteArray Peer::readHead()
{
    while (!m_unread.contains("\r\n\r\n")) {
        if (!fill())
            return {};
    }
    return read(m_unread.indexOf("\r\n\r\n") + 4);
}

QByteArray Peer::read(qsizetype size)
{
    while (m_unread.size() < size) {
        if (!fill())
            break;
    }
    const QByteArray bytes = m_unread.left(size);
    m_unread.remove(0, size);
    return bytes;
}

void Peer::write(const QByteArray &bytes)
{
    error_code ignored;
    const auto buffer = asio::buffer(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (m_tls)
        asio::write(*m_tls, buffer, ignored);
    else
        asio::write(m_socket, buffer, ignored);
}

void Peer::reset()
{
    error_code ignored;
    m_socket.set_option(asio::socket_base::linger(true, 0), ignored);
    m_socket.close(ignored);
}

void Peer::closeForSending()
{
    error_code ignored;
    m_socket.shutdown(TcpSocket::shutdown_send, ignored);
}

LocalServer::LocalServer(Script script, const std::optional<Tls> &tls)
    : m_script(std::move(script))
{
    if (tls) {
        m_tls = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_server);
        // The server agrees to anything, so that it is the client that refuses.
        SSL_CTX_set_security_level(m_tls->native_handle(), 0);
        SSL_CTX_set_min_proto_version(m_tls->native_handle(), TLS1_VERSION);
        if (tls->onlyTls11)
            SSL_CTX_set_max_proto_version(m_tls->native_handle(), TLS1_1_VERSION);
        m_tls->use_certificate_chain(asio::buffer(tls->identity.chainPem.toStdString()));
        m_tls->use_private_key(asio::buffer(tls->identity.keyPem.toStdString()), asio::ssl::context::pem);
    }
    m_acceptor.open(asio::ip::tcp::v4());
    m_acceptor.bind(loopback(0));
    m_acceptor.listen();
    m_port = m_acceptor.local_endpoint().port();
    m_thread = std::thread([this] { accept(); });
}

LocalServer::~LocalServer()
{
    m_ending = true;
    ::shutdown(m_acceptor.native_handle(), SHUT_RDWR);
    m_thread.join();
    {
        const std::lock_guard lock(m_mutex);
        for (const Connection &connection : m_connections) {
            if (connection.descriptor >= 0)
                ::shutdown(connection.descriptor, SHUT_RDWR);
        }
    }
    for (Connection &connection : m_connections)
        connection.thread.join();
}

void LocalServer::accept()
{
    while (!m_ending) {
        error_code error;
        TcpSocket socket = m_acceptor.accept(error);
        if (error)
            return;
        ++m_connectionCount;
        const std::lock_guard lock(m_mutex);
        Connection &connection = m_connections.emplace_back();
        connection.descriptor = socket.native_handle();
        connection.thread = std::thread([this, &connection, taken = std::move(socket)]() mutable {
            std::optional<Peer> peer;
            try {
                peer.emplace(std::move(taken), m_tls);
                ++m_handshakeCount;
                m_script(*peer);
            } catch (const std::exception &) {
                // The client has left, in the handshake as a rule. What that means is the test's business.
            }
            const std::lock_guard closing(m_mutex); // From here on the descriptor may be another's.
            connection.descriptor = -1;
            peer.reset();
        });
    }
}

LocalServer::Script connectProxy(quint16 port, std::function<void(const QByteArray &)> onConnect,
                                 const QByteArray &answer)
{
    return [port, onConnect = std::move(onConnect), answer](Peer &peer) {
        onConnect(peer.readHead());
        peer.write(answer);
        if (!answer.startsWith("HTTP/1.1 200"))
            return;
        asio::io_context loop;
        TcpSocket server(loop);
        server.connect(loopback(port));
        std::thread back([&] { pump(server, peer.socket()); });
        pump(peer.socket(), server);
        back.join();
    };
}

} // namespace vynlex
