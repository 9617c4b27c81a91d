#pragma once

#include <cstdint>
#include <memory>

#include "platform/net/HttpTransport.h"

namespace vynlex {

class CurlWorker;

/// The shipped HTTP session, on libcurl.
///
/// HTTP/1.1 only, so that header names keep their letter case and "connections per host" means what it says. All
/// sessions share one worker thread and its idle connections; the limit per host counts per session. A request sends
/// the listed headers and nothing else but Host, Content-Length where there is a body, and what a proxy needs. A body
/// is decoded when the headers that go out ask for gzip, deflate or br. Damage in a compressed body is noticed; that
/// the server compressed only a part and sent all of that is not.
///
/// A kept connection that the server closed before it answered a byte is replaced by a new one, unseen, unless some of
/// a body has gone out on it: the server may have done what it was asked, and a message would be sent twice.
class CurlHttpTransport final : public HttpTransport {
public:
    explicit CurlHttpTransport(HttpSessionConfiguration configuration = {});
    ~CurlHttpTransport() override;
    CurlHttpTransport(const CurlHttpTransport &) = delete;
    CurlHttpTransport &operator=(const CurlHttpTransport &) = delete;

    void send(HttpRequest request, Completion completion) override;

private:
    struct Pending;

    std::shared_ptr<const HttpSessionConfiguration> m_configuration;
    std::shared_ptr<CurlWorker> m_worker;
    std::shared_ptr<Pending> m_pending;
    std::uint64_t m_session = 0;
};

} // namespace vynlex
