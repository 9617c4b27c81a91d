#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>
#include <tl/expected.hpp>
#include <variant>

#include "platform/net/HttpTransport.h"

namespace vynlex {

/// Why a call to the backend has no answer.
class VLApiRequestError {
public:
    enum class Case {
        networkFailure,    ///< the transport failed; carries its error
        decodeFailure,     ///< not raised by the kit's own calls
        failedApi,         ///< status 400 to 498; carries the body and the status
        invalidUrlRequest, ///< no URL can be formed
        invalidData,       ///< not raised by the kit's own calls
        noData,            ///< a response without a body
        invalidResponse,   ///< no HTTP response
        serverError,       ///< status 500 to 599
        unKnown,           ///< any other status, bodies that are not what was asked for, answers for a former user
    };

    /// What an error body says: a text for people and a word for programs.
    struct ServerErrorText {
        QString text;
        QString code;

        bool operator==(const ServerErrorText &) const = default;
    };

    static VLApiRequestError networkFailure(TransportError error);
    static VLApiRequestError decodeFailure(QString text);
    static VLApiRequestError failedApi(std::optional<QByteArray> body, int status);
    /// For the cases that carry nothing.
    VLApiRequestError(Case which)
        : m_case(which)
    {
    }

    [[nodiscard]] Case which() const { return m_case; }
    /// Of `networkFailure`, else null.
    [[nodiscard]] const TransportError *transportError() const { return std::get_if<TransportError>(&m_carried); }
    /// Of `failedApi`, else 0.
    [[nodiscard]] int status() const;

    /// For people to read as it stands. `detail` follows the sentence where one is meant to.
    [[nodiscard]] QString errorMessage(const QString &detail = {}) const;

    [[nodiscard]] static ServerErrorText serverErrorText(const std::optional<QByteArray> &body, int status);

    bool operator==(const VLApiRequestError &) const = default;

private:
    struct FailedApi {
        std::optional<QByteArray> body;
        int status = 0;

        bool operator==(const FailedApi &) const = default;
    };

    Case m_case;
    std::variant<std::monostate, TransportError, QString, FailedApi> m_carried;
};

template<typename Answer> using VLApiResult = tl::expected<Answer, VLApiRequestError>;

/// Called on the main queue, never before the call returns, at most once. It may destroy who was asked.
template<typename Answer> using VLApiCompletion = std::function<void(VLApiResult<Answer>)>;

} // namespace vynlex
