#pragma once

#include <QByteArray>

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "tests/platform/net/Certificates.h"
#include <openssl/types.h>

namespace vynlex {

/// The server's end of one connection. Blocking; at the end of the connection it reads nothing.
class Peer {
public:
    /// Owns `descriptor`. With `tls` the handshake comes first.
    Peer(int descriptor, SSL_CTX *tls);
    ~Peer();

    [[nodiscard]] bool isOpen() const { return m_open; } ///< The handshake has succeeded.
    /// Up to and with the empty line; empty when the connection ends before it.
    QByteArray readHead();
    QByteArray read(qsizetype size);
    void write(const QByteArray &bytes);
    void resetAtEnd(); ///< The connection ends with an RST.
    void closeForSending();

    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    bool fill();

    const int m_descriptor;
    std::unique_ptr<SSL, void (*)(SSL *)> m_tls;
    bool m_open = true;
    QByteArray m_unread;
};

/// A server on loopback at a port that the system chooses; each connection runs `script` on its own thread. Ends its
/// connections and its threads with itself.
class LocalServer {
public:
    using Script = std::function<void(Peer &)>;

    struct Tls {
        Identity identity;
        bool onlyTls11 = false;
    };

    explicit LocalServer(Script script, const std::optional<Tls> &tls = {});
    ~LocalServer();

    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] int connectionCount() const { return m_connectionCount; }
    [[nodiscard]] int handshakeCount() const { return m_handshakeCount; } ///< Connections that reached the script.

private:
    struct Connection {
        int descriptor = -1;
        std::thread thread;
    };

    void accept();

    const std::unique_ptr<SSL_CTX, void (*)(SSL_CTX *)> m_tls;
    const Script m_script;
    int m_listening = -1;
    quint16 m_port = 0;
    std::atomic<int> m_connectionCount = 0;
    std::atomic<int> m_handshakeCount = 0;
    std::mutex m_mutex;
    std::list<Connection> m_connections;
    std::thread m_thread;
};

/// The script of a proxy: answers CONNECT by joining the connection to `port` on loopback, whatever name was asked for,
/// and tells `onConnect` the request's head. With another answer than 200 it ends there.
LocalServer::Script connectProxy(quint16 port, std::function<void(const QByteArray &)> onConnect,
                                 const QByteArray &answer = "HTTP/1.1 200 Connection established\r\n\r\n");

} // namespace vynlex
