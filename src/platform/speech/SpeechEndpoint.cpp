#include "platform/speech/SpeechEndpoint.h"

#include <algorithm>

#include "platform/speech/SpeechLimits.h"

namespace vynlex {
namespace {

QString host(const SpeechHostTable &hosts, const QString &region, const char *service)
{
    const auto rule = std::find_if(hosts.begin(), hosts.end(), [&](const SpeechHostRule &candidate) {
        return region.startsWith(candidate.regionPrefix, Qt::CaseInsensitive);
    });
    return region + '.' + service + QStringLiteral(".speech") + (rule == hosts.end() ? QString() : rule->suffix);
}

} // namespace

QUrl recognitionUrl(const SpeechHostTable &hosts, const QString &region, const QString &language, RecognitionMode mode)
{
    QUrl url;
    url.setScheme("wss");
    url.setHost(host(hosts, region, "stt"));
    url.setPath(mode == RecognitionMode::Dictation
                    ? QStringLiteral("/speech/recognition/dictation/cognitiveservices/v1")
                    : QStringLiteral("/speech/recognition/conversation/cognitiveservices/v1"));
    url.setQuery("language=" + QString::fromLatin1(QUrl::toPercentEncoding(language)) + "&format=simple");
    return url;
}

QUrl synthesisUrl(const SpeechHostTable &hosts, const QString &region)
{
    QUrl url;
    url.setScheme("wss");
    url.setHost(host(hosts, region, "tts"));
    url.setPath("/cognitiveservices/websocket/v1");
    return url;
}

WebSocketRequest speechRequest(const QUrl &url, const QString &key, const QByteArray &connectionId)
{
    return {
        url, {{"Ocp-Apim-Subscription-Key", key.toLatin1()}, {"X-ConnectionId", connectionId}}, SpeechLimits::upgrade};
}

bool isSendableKey(const QString &key)
{
    return !key.isEmpty() && std::all_of(key.begin(), key.end(), [](QChar c) { return c > ' ' && c < QChar(0x7f); });
}

} // namespace vynlex
