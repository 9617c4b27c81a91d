#include "platform/speech/SpeechFailure.h"

namespace vynlex {
namespace {

using Code = CancellationErrorCode;

SpeechFailure upgradeRefused(int status)
{
    const bool permanent = status >= 400 && status < 500 && status != 408 && status != 429;
    switch (status) {
    case 401:
    case 403:
        return {Code::AuthenticationFailure,
                QStringLiteral("WebSocket upgrade failed: Authentication error (%1). Please check subscription "
                               "information and region name.")
                    .arg(status),
                permanent};
    case 400:
        return {Code::BadRequest,
                QStringLiteral("WebSocket upgrade failed: Bad request (400). Please verify the provided subscription "
                               "details and language information."),
                permanent};
    default:
        break;
    }
    const Code code = status == 429   ? Code::TooManyRequests
                      : status == 503 ? Code::ServiceUnavailable
                      : status >= 500 ? Code::ServiceError
                                      : Code::ConnectionFailure;
    return {code, QStringLiteral("WebSocket upgrade failed: Unspecified connection error (%1).").arg(status),
            permanent};
}

SpeechFailure closedByService(const websocket::Disconnected &closed)
{
    const Code code = closed.code == 1007   ? Code::BadRequest
                      : closed.code == 4429 ? Code::TooManyRequests
                                            : Code::ConnectionFailure;
    const bool permanent = closed.code == 1002 || closed.code == 1003 || closed.code == 1007 || closed.code == 4000;
    return {code,
            QStringLiteral("Connection was closed by the remote host. Error code: ") + QString::number(closed.code) +
                QStringLiteral(". Error details: ") + closed.reason,
            permanent};
}

/// The numbers and words inside the two texts are the native client's and always the same.
SpeechFailure noConnection(Code code, const ConnectionAttempt &connection, bool permanent)
{
    return {code,
            QStringLiteral("Connection failed (no connection to the remote host). Internal error: 1. Error details: "
                           "Failed with error: WS_OPEN_ERROR_UNDERLYING_IO_OPEN_FAILED\n") +
                connection.url.toString(QUrl::FullyEncoded) + QStringLiteral("\nX-ConnectionId: ") +
                QString::fromLatin1(connection.connectionId),
            permanent};
}

SpeechFailure lostConnection()
{
    return {
        Code::ConnectionFailure,
        QStringLiteral("WebSocket operation failed. Internal error: 3. Error details: WS_ERROR_UNDERLYING_IO_ERROR"),
        false};
}

} // namespace

SpeechFailure failureOf(const WebSocketEvent &ending, const ConnectionAttempt &connection)
{
    if (const auto *closed = std::get_if<websocket::Disconnected>(&ending))
        return closedByService(*closed);
    const auto *error = std::get_if<websocket::Error>(&ending);
    if (error && error->error.kind == WebSocketError::Kind::UpgradeRefused)
        return upgradeRefused(error->error.httpStatus);
    if (connection.established)
        return lostConnection();
    using Kind = WebSocketError::Kind;
    const bool timedOut = error && error->error.kind == Kind::Timeout;
    return noConnection(timedOut ? Code::ServiceTimeout : Code::ConnectionFailure, connection,
                        error && error->error.kind == Kind::InvalidUrl);
}

SpeechFailure failureOf(PhraseStatus status)
{
    switch (status) {
    case PhraseStatus::TooManyRequests:
        return {Code::TooManyRequests,
                QStringLiteral("The number of parallel requests exceeded the number of allowed concurrent "
                               "transcriptions."),
                true};
    case PhraseStatus::BadRequest:
        return {Code::BadRequest, QStringLiteral("Invalid parameter or unsupported audio format in the request."),
                true};
    case PhraseStatus::Forbidden:
        return {Code::Forbidden, QStringLiteral("The recognizer is using a free subscription that ran out of quota."),
                true};
    default:
        return {Code::ServiceError,
                QStringLiteral("The speech service encountered an internal error and could not continue."), true};
    }
}

SpeechFailure inactivityFailure()
{
    return {Code::ServiceTimeout,
            QStringLiteral("Due to service inactivity, the client buffer exceeded maximum size. Resetting the buffer."),
            false};
}

SpeechFailure stopTimeoutFailure()
{
    return {Code::ServiceTimeout, QStringLiteral("Timeout while waiting for service to stop"), false};
}

SpeechFailure firstAudioTimeoutFailure()
{
    return {Code::ServiceTimeout, QStringLiteral("USP error: timeout waiting for the first audio chunk"), false};
}

SpeechFailure synthesisTimeoutFailure()
{
    return {Code::ServiceTimeout, QStringLiteral("Timeout while synthesizing."), false};
}

QString withoutKey(QString text, const QString &key)
{
    return key.isEmpty() ? text : text.replace(key, QStringLiteral("***"));
}

} // namespace vynlex
