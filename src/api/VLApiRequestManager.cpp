#include "api/VLApiRequestManager.h"

#include <QJsonDocument>
#include <QUrl>

#include <algorithm>
#include <cmath>

#include "api/HostInformation.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/MainQueue.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

using Case = VLApiRequestError::Case;

constexpr std::chrono::seconds timeLimit{60};

HttpSessionConfiguration sessionConfiguration()
{
    return {
        .additionalHeaders =
            {
                {"Accept-Encoding", "gzip, deflate, br"},
                {"Connection", "keep-alive"},
                {"User-Agent", HostInformation::current().userAgent().toUtf8()},
            },
        .maximumConnectionsPerHost = 15,
        .maximumBodyBytes = 16LL * 1024 * 1024,
    };
}

/// Everything but letters, digits, "-._~" and the commas of lists: a plus or an ampersand in a value stays one.
QByteArray escapedQuery(const VLQueryParameters &parameters)
{
    QByteArray query;
    for (const auto &[key, value] : parameters) {
        if (!query.isEmpty())
            query += '&';
        query += QUrl::toPercentEncoding(key) + '=' + QUrl::toPercentEncoding(value.toString(), ",");
    }
    return query;
}

std::optional<QUrl> urlOf(VLApiServer environment, const QString &path,
                          const std::optional<VLQueryParameters> &parameters)
{
    const auto isUnicode = [](const auto &parameter) {
        return parameter.first.isValidUtf16() && parameter.second.toString().isValidUtf16();
    };
    if (!path.isValidUtf16() || (parameters && !std::ranges::all_of(*parameters, isUnicode)))
        return std::nullopt;
    QUrl url;
    url.setScheme(u"https"_s);
    url.setHost(environment.rawValue());
    url.setPath("/api/"_L1 + path, QUrl::DecodedMode);
    if (parameters && !parameters->empty())
        url.setQuery(QString::fromLatin1(escapedQuery(*parameters)), QUrl::StrictMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

/// JSON has no word for infinity, nor for what is no number.
bool isSerialisable(const QJsonValue &value)
{
    if (value.isDouble())
        return std::isfinite(value.toDouble());
    if (value.isArray())
        return std::ranges::all_of(value.toArray(), isSerialisable);
    if (value.isObject())
        return std::ranges::all_of(value.toObject(), isSerialisable);
    return true;
}

QByteArray bodyOf(VLHTTPMethod method, const std::optional<VLRequestParameters> &parameters)
{
    if ((method != VLHTTPMethod::post && method != VLHTTPMethod::put) || !parameters || parameters->empty())
        return {};
    QJsonObject body;
    for (const auto &[key, value] : *parameters)
        body.insert(key, value);
    // Sent without a body and not reported, deliberately: the backend refuses the request in words of its own.
    if (!isSerialisable(body))
        return {};
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

} // namespace

VLApiRequestManager::VLApiRequestManager()
    : m_session(Platform::current()->makeHttpTransport(sessionConfiguration()))
{
}

VLApiRequestManager::~VLApiRequestManager() = default;

VLApiResult<HttpRequest>
VLApiRequestManager::buildURLRequest(const VLAPIPath &path, VLHTTPMethod method,
                                     const std::optional<VLQueryParameters> &queryParameters,
                                     const std::optional<VLRequestParameters> &requestParameters,
                                     VLApiServer environment, const QString &jwt, const QString &deviceId)
{
    const QString pathText = path.apiPathString();
    const auto url = urlOf(environment, pathText, queryParameters);
    if (!url)
        return tl::unexpected(VLApiRequestError(Case::invalidUrlRequest));
    HttpRequest request;
    request.method = QByteArray(wordOf(method).data(), wordOf(method).size());
    request.url = *url;
    request.body = bodyOf(method, requestParameters);
    request.timeout = timeLimit;
    request.headers = {{"Content-Type", "application/json"}, {"deviceId", deviceId.toUtf8()}};
    if (pathText == VLAPIPath::getJWTToken().apiPathString())
        request.headers.emplace_back("x-source", "myvyn-vynevents");
    if (!jwt.isEmpty())
        request.headers.emplace_back("authorization", jwt.toUtf8()); // no scheme word in front
    return request;
}

std::optional<VLApiRequestError> VLApiRequestManager::errorOf(const HttpResponse &response)
{
    const int status = response.status;
    if (status == 0)
        return Case::invalidResponse;
    if (!response.body)
        return Case::noData;
    // 299 and 499 are in no range, deliberately.
    if (status >= 200 && status < 299)
        return std::nullopt;
    if (status >= 400 && status < 499)
        return VLApiRequestError::failedApi(response.body, status);
    return status >= 500 && status <= 599 ? Case::serverError : Case::unKnown;
}

void VLApiRequestManager::perform(VLApiResult<HttpRequest> request, VLApiCompletion<HttpResponse> completion)
{
    if (!request) {
        MainQueue::async(
            [error = request.error(), completion = std::move(completion)] { completion(tl::unexpected(error)); });
        return;
    }
    m_session->send(std::move(*request),
                    [completion = std::move(completion)](const tl::expected<HttpResponse, TransportError> &outcome) {
                        if (outcome)
                            completion(*outcome);
                        else
                            completion(tl::unexpected(VLApiRequestError::networkFailure(outcome.error())));
                    });
}

} // namespace vynlex
