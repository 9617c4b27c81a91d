#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <memory>

// OpenSSL's own name, so that this header needs none of its headers.
struct ssl_ctx_st;

namespace vynlex {

/// The way to a host.
struct ProxyRoute {
    enum class Kind { Direct, Http, Socks5, Unsupported };
    Kind kind = Kind::Direct;
    QString host;
    std::uint16_t port = 0;
    QString user; ///< Empty: the proxy asks for none.
    QString password;

    bool operator==(const ProxyRoute &) const = default;
};

/// Whom a connection trusts and which way it takes: the application's choices, as they are for every other connection
/// of the application, in one place for HTTP and WebSocket.
///
/// Trusted are the authorities of `QSslConfiguration::defaultConfiguration()`. That list is empty as long as nobody
/// has changed it, where Qt looks the system's authorities up on demand; it then stands for the system's. A host that
/// adds an authority to the default configuration therefore has to add the system's too if it wants both, exactly as
/// for Qt's own sockets. The way is the application proxy's (or the application proxy factory's) for the URL; a
/// loopback address never takes a proxy.
class ConnectionPolicy {
public:
    /// What counts now. Main thread: a host's proxy factory expects no other. Costs microseconds; the authorities are
    /// read when a connection first asks for them.
    [[nodiscard]] static ConnectionPolicy current(const QUrl &url);

    [[nodiscard]] const ProxyRoute &proxy() const { return m_proxy; }

    /// Prepares a client's TLS context: TLS 1.2 or later, security level 2 (no key under 112 bits of strength, no
    /// SHA-1), the trusted authorities and no other, and a certificate whose subject alternative names `host` (a name
    /// or an address); a common name counts for nothing. False when `host` cannot be checked. Any thread; the first
    /// call may read the system's authorities (some 100 ms), and others wait for it.
    [[nodiscard]] bool applyTo(ssl_ctx_st *context, const QByteArray &host) const;

private:
    class Authorities;
    std::shared_ptr<Authorities> m_authorities;
    ProxyRoute m_proxy;
};

} // namespace vynlex
