#include "platform/net/CurlTransfer.h"

#include <algorithm>
#include <limits>

namespace vynlex {
namespace {

constexpr qint64 maximumHeaderBytes = 256 * 1024;

/// curl's own default would end a connection attempt after 300 s; the worker watches the request's limit itself.
constexpr long noConnectLimitMs = std::numeric_limits<int>::max();

bool sameName(const QByteArray &a, const QByteArray &b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

const QByteArray *find(const HttpHeaders &headers, const QByteArray &name)
{
    const auto found =
        std::find_if(headers.begin(), headers.end(), [&](const auto &header) { return sameName(header.first, name); });
    return found == headers.end() ? nullptr : &found->second;
}

HttpHeaders merged(const HttpHeaders &additional, const HttpHeaders &own)
{
    HttpHeaders all;
    for (const auto &header : additional) {
        if (!find(own, header.first))
            all.push_back(header);
    }
    all.insert(all.end(), own.begin(), own.end());
    return all;
}

/// The characters of a method or a header's name (RFC 9110, 5.6.2).
bool isToken(const QByteArray &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
    });
}

bool isFieldValue(const QByteArray &text)
{
    return std::none_of(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

bool sendsBody(const HttpRequest &request)
{
    return !request.body.isEmpty() || request.method == "POST" || request.method == "PUT";
}

bool asksForCompression(const QByteArray &acceptEncoding)
{
    return acceptEncoding.contains("gzip") || acceptEncoding.contains("deflate") || acceptEncoding.contains("br");
}

} // namespace

QByteArray TransferOrder::host() const
{
    const QUrl &url = request.url;
    const int standardPort = url.scheme() == QLatin1String("https") ? 443 : 80;
    return url.scheme().toLatin1() + "://" + url.host(QUrl::FullyEncoded).toLatin1() + ':' +
           QByteArray::number(url.port(standardPort));
}

std::optional<TransportError> TransferOrder::fault() const
{
    const auto invalid = [](const QString &message) {
        return TransportError{TransportError::Kind::InvalidRequest, message};
    };
    const QUrl &url = request.url;
    if (!url.isValid() || url.host().isEmpty())
        return invalid(QStringLiteral("The request has no valid URL."));
    if (url.scheme() != QLatin1String("https") && url.scheme() != QLatin1String("http"))
        return invalid(QStringLiteral("%1: only https and http are spoken.").arg(url.host()));
    if (!url.userInfo().isEmpty())
        return invalid(QStringLiteral("%1: a user name in the URL is not sent.").arg(url.host()));
    if (!isToken(request.method))
        return invalid(QStringLiteral("%1: the method is not a word.").arg(url.host()));
    for (const auto &[name, value] : merged(session->additionalHeaders, request.headers)) {
        if (!isToken(name) || !isFieldValue(value))
            return invalid(QStringLiteral("%1: a header has characters that cannot be sent.").arg(url.host()));
        if (sameName(name, "Transfer-Encoding") ||
            (sameName(name, "Content-Length") && value != QByteArray::number(request.body.size())))
            return invalid(QStringLiteral("%1: a header contradicts the body's length.").arg(url.host()));
    }
    if (policy.proxy().kind == ProxyRoute::Kind::Unsupported)
        return TransportError{TransportError::Kind::Proxy,
                              QStringLiteral("%1: the application's proxy is of a kind that cannot be used; HTTP and "
                                             "SOCKS 5 can.")
                                  .arg(url.host())};
    return {};
}

CurlTransfer::CurlTransfer(TransferOrder order)
    : m_order(std::move(order))
    , m_url(m_order.request.url.toEncoded(QUrl::FullyEncoded | QUrl::RemoveFragment))
    , m_host(m_order.request.url.host(QUrl::FullyEncoded).toLatin1())
    , m_handle(curl_easy_init(), curl_easy_cleanup)
    , m_headers(nullptr, curl_slist_free_all)
{
    CURL *const handle = m_handle.get();
    curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, m_error.data());
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    // A name server that does not answer must not hold up the transfers behind this one when it is given up.
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, noConnectLimitMs);
    curl_easy_setopt(handle, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
    setRequest();
    setHeaders();
    setProxy();
    setTrust();
}

void CurlTransfer::setRequest()
{
    CURL *const handle = m_handle.get();
    const HttpRequest &request = m_order.request;
    curl_easy_setopt(handle, CURLOPT_URL, m_url.constData());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    if (sendsBody(request)) {
        curl_easy_setopt(handle, CURLOPT_POST, 1L);
        // Read once: of a body that curl could go back in, it sends what a dying connection has taken a second time.
        curl_easy_setopt(handle, CURLOPT_READFUNCTION, onBodyToSend);
        curl_easy_setopt(handle, CURLOPT_READDATA, this);
        curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    } else if (request.method == "HEAD") {
        curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
    }
    curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, request.method.constData());
}

void CurlTransfer::setHeaders()
{
    CURL *const handle = m_handle.get();
    const HttpHeaders headers = merged(m_order.session->additionalHeaders, m_order.request.headers);
    const auto append = [this](const QByteArray &line) {
        curl_slist *const list = curl_slist_append(m_headers.get(), line.constData());
        static_cast<void>(m_headers.release());
        m_headers.reset(list);
    };
    for (const auto &[name, value] : headers)
        append(value.trimmed().isEmpty() ? name + ';' : name + ": " + value); // "Name;" is curl's word for no value
    // A name without a value takes a header away that curl would send of its own accord.
    for (const char *const unasked : {"Accept", "Content-Type", "Expect", "User-Agent"}) {
        if (!find(headers, unasked))
            append(QByteArray(unasked) + ':');
    }
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, m_headers.get());

    // Switches decoding on. The header itself goes out once, from the list: curl leaves its own out for that.
    const QByteArray *const acceptEncoding = find(headers, "Accept-Encoding");
    if (acceptEncoding && asksForCompression(*acceptEncoding))
        curl_easy_setopt(handle, CURLOPT_ACCEPT_ENCODING, acceptEncoding->constData());
}

void CurlTransfer::setProxy()
{
    CURL *const handle = m_handle.get();
    const ProxyRoute &proxy = m_order.policy.proxy();
    // Set in any case, or curl reads the environment.
    curl_easy_setopt(handle, CURLOPT_NOPROXY, "");
    if (proxy.kind == ProxyRoute::Kind::Direct) {
        curl_easy_setopt(handle, CURLOPT_PROXY, "");
        return;
    }
    const bool isHttp = proxy.kind == ProxyRoute::Kind::Http;
    curl_easy_setopt(handle, CURLOPT_PROXY, proxy.host.toUtf8().constData());
    curl_easy_setopt(handle, CURLOPT_PROXYPORT, static_cast<long>(proxy.port));
    curl_easy_setopt(handle, CURLOPT_PROXYTYPE, static_cast<long>(isHttp ? CURLPROXY_HTTP : CURLPROXY_SOCKS5_HOSTNAME));
    // The request's headers (tokens among them) are the server's business.
    curl_easy_setopt(handle, CURLOPT_HEADEROPT, CURLHEADER_SEPARATE);
    curl_easy_setopt(handle, CURLOPT_HTTPPROXYTUNNEL, isHttp ? 1L : 0L);
    curl_easy_setopt(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    if (!proxy.user.isEmpty()) {
        curl_easy_setopt(handle, CURLOPT_PROXYAUTH, CURLAUTH_BASIC);
        curl_easy_setopt(handle, CURLOPT_PROXYUSERNAME, proxy.user.toUtf8().constData());
        curl_easy_setopt(handle, CURLOPT_PROXYPASSWORD, proxy.password.toUtf8().constData());
    }
}

void CurlTransfer::setTrust()
{
    CURL *const handle = m_handle.get();
    // curl's built-in paths would be trusted besides; the authorities come with the context's store.
    curl_easy_setopt(handle, CURLOPT_CAINFO, nullptr);
    curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(handle, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, onTlsContext);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, this);
}

CURLcode CurlTransfer::onTlsContext(CURL * /*handle*/, void *context, void *self)
{
    const auto *transfer = static_cast<const CurlTransfer *>(self);
    return transfer->m_order.policy.applyTo(static_cast<ssl_ctx_st *>(context), transfer->m_host)
               ? CURLE_OK
               : CURLE_SSL_CONNECT_ERROR;
}

std::size_t CurlTransfer::onHeader(char *data, std::size_t size, std::size_t count, void *self)
{
    auto *transfer = static_cast<CurlTransfer *>(self);
    const QByteArray line = QByteArray(data, static_cast<qsizetype>(size * count));
    transfer->m_headerBytes += line.size();
    if (transfer->m_headerBytes > maximumHeaderBytes) {
        transfer->m_tooLarge = true;
        return 0;
    }
    const qsizetype colon = line.indexOf(':');
    if (line.startsWith("HTTP/"))
        transfer->m_responseHeaders.clear(); // What came before was an interim response (1xx).
    else if (colon > 0)
        transfer->m_responseHeaders.emplace_back(line.left(colon), line.mid(colon + 1).trimmed());
    return size * count;
}

std::size_t CurlTransfer::onBodyToSend(char *data, std::size_t size, std::size_t count, void *self)
{
    auto *transfer = static_cast<CurlTransfer *>(self);
    const QByteArrayView left = QByteArrayView(transfer->m_order.request.body).sliced(transfer->m_bodyBytesSent);
    const qsizetype length = std::min(left.size(), static_cast<qsizetype>(size * count));
    std::copy_n(left.begin(), length, data);
    transfer->m_bodyBytesSent += length;
    return static_cast<std::size_t>(length);
}

std::size_t CurlTransfer::onBody(char *data, std::size_t size, std::size_t count, void *self)
{
    auto *transfer = static_cast<CurlTransfer *>(self);
    const auto length = static_cast<qsizetype>(size) * static_cast<qsizetype>(count);
    if (transfer->m_body.size() + length > transfer->m_order.session->maximumBodyBytes) {
        transfer->m_tooLarge = true;
        return 0;
    }
    transfer->m_body.append(data, length);
    return size * count;
}

TransportError::Kind CurlTransfer::kindOf(CURLcode result) const
{
    using Kind = TransportError::Kind;
    const bool viaProxy = m_order.policy.proxy().kind != ProxyRoute::Kind::Direct;
    if (m_tooLarge)
        return Kind::TooLarge;
    switch (result) {
    case CURLE_URL_MALFORMAT:
        return Kind::InvalidRequest;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_PROXY:
        return Kind::Proxy;
    case CURLE_COULDNT_RESOLVE_HOST:
        return Kind::HostNotFound;
    case CURLE_COULDNT_CONNECT:
        return viaProxy ? Kind::Proxy : Kind::ConnectionRefused;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_ISSUER_ERROR:
        return Kind::Tls;
    case CURLE_OPERATION_TIMEDOUT:
        return Kind::Timeout;
    case CURLE_PARTIAL_FILE:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_WRITE_ERROR: // Not ours (that is TooLarge): the decoder's.
        return Kind::Truncated;
    default:
        break;
    }
    long connectStatus = 0;
    curl_easy_getinfo(m_handle.get(), CURLINFO_HTTP_CONNECTCODE, &connectStatus);
    return connectStatus >= 300 ? Kind::Proxy : Kind::Io;
}

TransferOutcome CurlTransfer::outcome(CURLcode result)
{
    if (result == CURLE_OK) {
        HttpResponse response;
        long status = 0;
        curl_easy_getinfo(m_handle.get(), CURLINFO_RESPONSE_CODE, &status);
        response.status = static_cast<int>(status);
        response.headers = std::move(m_responseHeaders);
        response.body = std::move(m_body);
        return response;
    }
    const TransportError::Kind kind = kindOf(result);
    QString message =
        QStringLiteral("%1: %2").arg(QString::fromLatin1(m_host), QString::fromUtf8(curl_easy_strerror(result)));
    if (kind == TransportError::Kind::TooLarge)
        message = QStringLiteral("%1: the answer is larger than this session takes").arg(QString::fromLatin1(m_host));
    else if (kind == TransportError::Kind::Tls || kind == TransportError::Kind::Proxy) // else it may name the query
        message += QStringLiteral(" (%1)").arg(QString::fromUtf8(m_error.data()));
    else if (result == CURLE_SEND_FAIL_REWIND)
        message = QStringLiteral("%1: the connection was lost before the answer").arg(QString::fromLatin1(m_host));
    return tl::unexpected(TransportError{kind, message});
}

} // namespace vynlex
