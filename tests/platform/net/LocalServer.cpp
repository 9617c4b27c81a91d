#include "tests/platform/net/LocalServer.h"

#include <QTemporaryFile>

#include <csignal>

#include <array>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vynlex {
namespace {

sockaddr_in loopback(quint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

bool sendAll(int descriptor, const char *bytes, qsizetype size)
{
    while (size > 0) {
        const ssize_t count = ::send(descriptor, bytes, static_cast<std::size_t>(size), MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        bytes += count;
        size -= count;
    }
    return true;
}

void pump(int from, int to)
{
    std::array<char, 4096> block{};
    for (ssize_t count = 0; (count = ::recv(from, block.data(), block.size(), 0)) > 0;) {
        if (!sendAll(to, block.data(), count))
            break;
    }
    ::shutdown(to, SHUT_WR);
}

SSL_CTX *contextOf(const std::optional<LocalServer::Tls> &tls)
{
    if (!tls)
        return nullptr;
    SSL_CTX *const context = SSL_CTX_new(TLS_server_method());
    // The server agrees to anything, so that it is the client that refuses.
    SSL_CTX_set_security_level(context, 0);
    SSL_CTX_set_min_proto_version(context, TLS1_VERSION);
    if (tls->onlyTls11)
        SSL_CTX_set_max_proto_version(context, TLS1_1_VERSION);
    QTemporaryFile pem;
    if (!pem.open() || pem.write(tls->identity.chainPem + tls->identity.keyPem) <= 0 || !pem.flush())
        qFatal("no temporary file");
    const QByteArray name = pem.fileName().toLocal8Bit();
    if (SSL_CTX_use_certificate_chain_file(context, name.constData()) != 1 ||
        SSL_CTX_use_PrivateKey_file(context, name.constData(), SSL_FILETYPE_PEM) != 1)
        qFatal("the certificate cannot be used");
    return context;
}

} // namespace

Peer::Peer(int descriptor, SSL_CTX *tls)
    : m_descriptor(descriptor)
    , m_tls(tls ? SSL_new(tls) : nullptr, SSL_free)
{
    const int on = 1;
    ::setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (m_tls) {
        SSL_set_fd(m_tls.get(), m_descriptor);
        m_open = SSL_accept(m_tls.get()) == 1;
    }
}

Peer::~Peer()
{
    ::close(m_descriptor);
}

bool Peer::fill()
{
    std::array<char, 16384> block{};
    const auto count = m_tls ? SSL_read(m_tls.get(), block.data(), static_cast<int>(block.size()))
                             : ::recv(m_descriptor, block.data(), block.size(), 0);
    if (count <= 0)
        return false;
    m_unread.append(block.data(), static_cast<qsizetype>(count));
    return true;
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
    while (m_unread.size() < size && fill()) {
    }
    const QByteArray bytes = m_unread.left(size);
    m_unread.remove(0, size);
    return bytes;
}

void Peer::write(const QByteArray &bytes)
{
    if (!m_tls)
        sendAll(m_descriptor, bytes.constData(), bytes.size());
    else if (!bytes.isEmpty())
        SSL_write(m_tls.get(), bytes.constData(), static_cast<int>(bytes.size()));
}

void Peer::resetAtEnd()
{
    const linger none{1, 0};
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &none, sizeof none);
}

void Peer::closeForSending()
{
    ::shutdown(m_descriptor, SHUT_WR);
}

LocalServer::LocalServer(Script script, const std::optional<Tls> &tls)
    : m_tls(contextOf(tls), SSL_CTX_free)
    , m_script(std::move(script))
    , m_listening(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (::bind(m_listening, reinterpret_cast<sockaddr *>(&address), size) != 0 || ::listen(m_listening, 128) != 0 ||
        ::getsockname(m_listening, reinterpret_cast<sockaddr *>(&address), &size) != 0)
        qFatal("no port");
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { accept(); });
}

LocalServer::~LocalServer()
{
    ::shutdown(m_listening, SHUT_RDWR);
    m_thread.join();
    ::close(m_listening);
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
    for (int taken = -1; (taken = ::accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        ++m_connectionCount;
        const std::lock_guard lock(m_mutex);
        m_connections.remove_if([](Connection &known) {
            const bool hasEnded = known.descriptor < 0;
            if (hasEnded)
                known.thread.join(); // Else its stack would be kept.
            return hasEnded;
        });
        Connection &connection = m_connections.emplace_back();
        connection.descriptor = taken;
        connection.thread = std::thread([this, &connection, taken] {
            // OpenSSL writes without saying that a client that has left is no reason to die.
            sigset_t pipe;
            sigemptyset(&pipe);
            sigaddset(&pipe, SIGPIPE);
            pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
            auto peer = std::make_unique<Peer>(taken, m_tls.get());
            if (peer->isOpen()) {
                ++m_handshakeCount;
                m_script(*peer);
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
        const Peer server(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), nullptr);
        const sockaddr_in address = loopback(port);
        if (::connect(server.descriptor(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            return;
        std::thread back([&] { pump(server.descriptor(), peer.descriptor()); });
        pump(peer.descriptor(), server.descriptor());
        back.join();
    };
}

} // namespace vynlex
