#pragma once

#include <VynlexTranslationSDK/VLApiServer.h>
#include <VynlexTranslationSDK/VLCurrentUserType.h>

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <tl/expected.hpp>
#include <utility>

#include "api/DirectoryRecords.h"
#include "api/VLAPIRequest.h"
#include "api/VLApiRequestError.h"
#include "platform/net/HttpTransport.h"

namespace vynlex {

/// Who asks, and which backend.
struct VLCaller {
    VLApiServer serverEnvironment = VLApiServer::production;
    QString jwtToken;
    QString deviceId;
    VLCurrentUserType currentUserType = VLCurrentUserType::guest; ///< Shows in no request.
};

/// Turns request records into HTTPS requests and answers into records, over one session of its own: 15 connections per
/// host, 60 s a request, answers of up to 16 MiB.
///
/// Nothing is retried, cached or waited for: without a network a request fails at once. Main thread.
class VLApiRequestManager {
public:
    VLApiRequestManager();
    ~VLApiRequestManager();
    VLApiRequestManager(const VLApiRequestManager &) = delete;
    VLApiRequestManager &operator=(const VLApiRequestManager &) = delete;

    /// Fails with `invalidUrlRequest` when the texts in path or query are no Unicode.
    template<VLAPIRequest Request>
    [[nodiscard]] static VLApiResult<HttpRequest> buildURLRequest(const Request &record, VLApiServer environment,
                                                                  const QString &jwt, const QString &deviceId)
    {
        return buildURLRequest(record.path, record.method, record.queryParameters, record.requestParameters,
                               environment, jwt, deviceId);
    }

    /// A status of 0 stands for something that was no HTTP response.
    template<JsonRecord Record> [[nodiscard]] static VLApiResult<Record> validateAndDecode(const HttpResponse &response)
    {
        if (const auto error = errorOf(response))
            return tl::unexpected(*error);
        if (response.body->isEmpty())
            return emptyAnswer<Record>();
        if (auto record = decodeJson<Record>(*response.body))
            return std::move(*record);
        return tl::unexpected(VLApiRequestError(VLApiRequestError::Case::unKnown));
    }

    /// Destroying the manager drops what is under way and calls nobody.
    template<VLAPIRequest Request>
    void send(const Request &record, const VLCaller &caller,
              VLApiCompletion<typename Request::ReturnDataType> completion)
    {
        using Record = typename Request::ReturnDataType;
        perform(buildURLRequest(record, caller.serverEnvironment, caller.jwtToken, caller.deviceId),
                [completion = std::move(completion)](const VLApiResult<HttpResponse> &response) {
                    completion(response ? validateAndDecode<Record>(*response) : tl::unexpected(response.error()));
                });
    }

private:
    static VLApiResult<HttpRequest> buildURLRequest(const VLAPIPath &path, VLHTTPMethod method,
                                                    const std::optional<VLQueryParameters> &queryParameters,
                                                    const std::optional<VLRequestParameters> &requestParameters,
                                                    VLApiServer environment, const QString &jwt,
                                                    const QString &deviceId);
    static std::optional<VLApiRequestError> errorOf(const HttpResponse &response);

    /// No bytes at all mean success, and are no other record.
    template<JsonRecord Record> static VLApiResult<Record> emptyAnswer()
    {
        if constexpr (std::same_as<Record, VLSuccessResponse>)
            return VLSuccessResponse{true};
        else
            return tl::unexpected(VLApiRequestError(VLApiRequestError::Case::unKnown));
    }

    void perform(VLApiResult<HttpRequest> request, VLApiCompletion<HttpResponse> completion);

    std::unique_ptr<HttpTransport> m_session;
};

} // namespace vynlex
