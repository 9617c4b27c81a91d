#pragma once

#include <functional>
#include <memory>

#include "platform/net/HttpTransport.h"

namespace vynlex {

/// A network that the test plays: every session made here sends its requests to the same place, which records them and
/// answers when told. Main thread.
///
/// Requests are numbered from 0 in the order in which they were sent, over all sessions. Asking for one that was not
/// sent, or answering one twice, ends the test program. Nothing times out by itself.
class FakeHttpNetwork {
public:
    FakeHttpNetwork();
    ~FakeHttpNetwork();

    [[nodiscard]] std::unique_ptr<HttpTransport> makeSession(const HttpSessionConfiguration &configuration = {});
    /// For a `Platform`. The network may go before the factory and its sessions.
    [[nodiscard]] std::function<std::unique_ptr<HttpTransport>(const HttpSessionConfiguration &)> sessionFactory();

    [[nodiscard]] int requestCount() const;
    [[nodiscard]] HttpRequest request(int index) const;
    [[nodiscard]] HttpRequest lastRequest() const;
    [[nodiscard]] HttpSessionConfiguration session(int index) const; ///< The one that sent the request.

    /// Runs the completion before they return; false when the session is gone and nobody hears.
    bool answer(int index, const HttpResponse &response);
    bool answer(int index, int status, const QByteArray &body = {});
    bool fail(int index, const TransportError &error);

    struct Core;

private:
    std::shared_ptr<Core> m_core;
};

} // namespace vynlex
