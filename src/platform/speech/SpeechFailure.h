#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include "platform/net/WebSocketClient.h"
#include "platform/speech/SpeechBodies.h"
#include "platform/speech/SpeechService.h"

namespace vynlex {

/// Why a connection or a turn came to nothing, in the words of the service's native client. The caller adds its own
/// ending (session or state) to `text`.
struct SpeechFailure {
    CancellationErrorCode code = CancellationErrorCode::ConnectionFailure;
    QString text;
    bool permanent = false; ///< Trying again cannot help.
};

struct ConnectionAttempt {
    QUrl url;
    QByteArray connectionId;
    bool established = false; ///< The upgrade had succeeded before it ended.
};

/// `ending` is one of the events that end a client, or ReconnectSuggested.
///
/// Permanent are the refusals that come with a 4xx status (but for 408 and 429) and the close codes 1002, 1003, 1007
/// and 4000, which say that the request itself is at fault. Everything else, the close code 1000 included, is a lost
/// connection.
SpeechFailure failureOf(const WebSocketEvent &ending, const ConnectionAttempt &attempt);

/// A phrase that is none: Error, TooManyRequests, BadRequest, Forbidden, Unknown.
SpeechFailure failureOf(PhraseStatus status);

/// The service says nothing for too long, or ends turn after turn without listening.
SpeechFailure inactivityFailure();
/// `turn.end` does not come after the end of the audio.
SpeechFailure stopTimeoutFailure();
SpeechFailure firstAudioTimeoutFailure();
SpeechFailure synthesisTimeoutFailure();

/// `text` without the key, should a server have echoed it.
QString withoutKey(QString text, const QString &key);

} // namespace vynlex
