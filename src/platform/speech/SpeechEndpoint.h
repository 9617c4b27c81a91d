#pragma once

#include <QString>
#include <QUrl>

#include <vector>

#include "platform/net/CloudHosts.h"
#include "platform/net/WebSocketClient.h"

namespace vynlex {

/// The dictation path turns spoken punctuation into signs; it is the service's decision by path.
enum class RecognitionMode { Conversation, Dictation };

QUrl recognitionUrl(const SpeechHostTable &hosts, const QString &region, const QString &language, RecognitionMode mode);
QUrl synthesisUrl(const SpeechHostTable &hosts, const QString &region);

/// The key travels in a header and nowhere else: addresses end up in logs and error texts.
WebSocketRequest speechRequest(const QUrl &url, const QString &key, const QByteArray &connectionId);

/// False for a key that no HTTP header can carry; the service could only refuse it.
bool isSendableKey(const QString &key);

} // namespace vynlex
