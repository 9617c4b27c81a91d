#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <tl/expected.hpp>
#include <utility>
#include <vector>

namespace vynlex {

/// Name and value, in the order in which they go out. Names keep their letter case on the wire (HTTP/1.1).
using HttpHeaders = std::vector<std::pair<QByteArray, QByteArray>>;

struct HttpRequest {
    QByteArray method = "GET";
    QUrl url;
    HttpHeaders headers;
    QByteArray body;                                  ///< Sent when not empty, or when the method is POST or PUT.
    std::optional<std::chrono::milliseconds> timeout; ///< From start to last byte; none means no limit.
};

struct HttpResponse {
    int status = 0;
    HttpHeaders headers;
    std::optional<QByteArray> body; ///< Decoded. An answer of no bytes is an empty body, not an absent one.
};

struct TransportError {
    enum class Kind {
        InvalidRequest,
        HostNotFound,
        ConnectionRefused,
        Proxy,
        Tls,
        Timeout,
        Truncated, ///< the answer ended before its stated length, or its compression is damaged
        TooLarge,  ///< the decoded body is over the session's limit
        Io,
    };
    Kind kind = Kind::Io;
    QString message; ///< For people; names the host, never a header or a query value.

    bool operator==(const TransportError &) const = default;
};

/// What a session sends with every request and how far it goes.
struct HttpSessionConfiguration {
    HttpHeaders additionalHeaders; ///< Before the request's own; a request's header of the same name replaces one.
    int maximumConnectionsPerHost = 6;
    qint64 maximumBodyBytes = 64LL * 1024 * 1024; ///< After decoding.
};

/// Port: one HTTP session (a connection pool with its settings). Nothing is cached, no cookie is kept, no redirect is
/// followed, no request is retried; only a kept connection that dies before the first byte of an answer may be replaced
/// by a new one, unseen, as long as no byte of a body has gone out.
class HttpTransport {
public:
    using Completion = std::function<void(tl::expected<HttpResponse, TransportError>)>;

    virtual ~HttpTransport() = default;

    /// Starts the transfer. `completion` is called on the main queue, never before the call returns, exactly once as
    /// long as the session lives; destroying the session drops what is under way and calls nobody. It may destroy the
    /// session. Any status counts as a response. Main thread.
    virtual void send(HttpRequest request, Completion completion) = 0;
};

} // namespace vynlex
