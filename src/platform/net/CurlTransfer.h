#pragma once

#include <QByteArray>

#include <array>
#include <memory>
#include <tl/expected.hpp>

#include "platform/net/ConnectionPolicy.h"
#include "platform/net/HttpTransport.h"
#include <curl/curl.h>

namespace vynlex {

using TransferOutcome = tl::expected<HttpResponse, TransportError>;

/// One request with everything that counts for it, as a value that crosses to the worker.
struct TransferOrder {
    HttpRequest request;
    std::shared_ptr<const HttpSessionConfiguration> session;
    ConnectionPolicy policy;

    /// Absent when it can be sent.
    [[nodiscard]] std::optional<TransportError> fault() const;
    /// What the limit of connections counts: scheme, host and port.
    [[nodiscard]] QByteArray host() const;
};

/// One curl handle at work for one order. Worker thread.
class CurlTransfer {
public:
    explicit CurlTransfer(TransferOrder order);
    CurlTransfer(const CurlTransfer &) = delete;
    CurlTransfer &operator=(const CurlTransfer &) = delete;

    [[nodiscard]] CURL *handle() const { return m_handle.get(); }

    /// After curl is done with the handle. Once.
    [[nodiscard]] TransferOutcome outcome(CURLcode result);

private:
    void setRequest();
    void setHeaders();
    void setProxy();
    void setTrust();
    [[nodiscard]] TransportError::Kind kindOf(CURLcode result) const;

    static std::size_t onHeader(char *data, std::size_t size, std::size_t count, void *self);
    static std::size_t onBodyToSend(char *data, std::size_t size, std::size_t count, void *self);
    static std::size_t onBody(char *data, std::size_t size, std::size_t count, void *self);
    static CURLcode onTlsContext(CURL *handle, void *context, void *self);

    TransferOrder m_order;
    QByteArray m_url;
    QByteArray m_host;
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_handle;
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> m_headers;
    std::array<char, CURL_ERROR_SIZE> m_error{};
    HttpHeaders m_responseHeaders;
    qint64 m_headerBytes = 0;
    qsizetype m_bodyBytesSent = 0;
    QByteArray m_body;
    bool m_tooLarge = false;
};

} // namespace vynlex
