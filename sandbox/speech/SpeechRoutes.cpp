#include "sandbox/speech/SpeechRoutes.h"

#include <array>

#include "sandbox/speech/RecognitionSession.h"
#include "sandbox/speech/SpeechUpgrade.h"
#include "sandbox/speech/SynthesisSession.h"

namespace sandbox {
namespace {

namespace asio = boost::asio;

/// One per cloud: regions that begin with "china" or "usgov" have their own.
constexpr std::array<std::string_view, 3> clouds = {"microsoft.com", "azure.cn", "azure.us"};

/// Clients of different ages ask for different paths; what they have in common is the protocol.
constexpr std::array<std::string_view, 5> recognitionPaths = {
    "/speech/recognition/dictation/cognitiveservices/v1",
    "/speech/recognition/conversation/cognitiveservices/v1",
    "/speech/recognition/interactive/cognitiveservices/v1",
    "/stt/speech/universal/v2",
    "/speech/universal/v2",
};
constexpr std::array<std::string_view, 2> synthesisPaths = {
    "/tts/cognitiveservices/websocket/v1",
    "/cognitiveservices/websocket/v1",
};

WebSocketHandler recognition(const std::shared_ptr<SpeechService> &service)
{
    return {[service](const HttpRequest &request) { return recognitionRefusalOf(request, service->subscription); },
            [service](std::shared_ptr<WebSocketConnection> connection,
                      const HttpRequest &request) -> asio::awaitable<void> {
                RecognitionSession session(service, std::move(connection), recognitionParametersOf(request));
                co_await session.serve();
            }};
}

WebSocketHandler synthesis(const std::shared_ptr<SpeechService> &service)
{
    return {[service](const HttpRequest &request) { return refusalOf(request, service->subscription); },
            [service](std::shared_ptr<WebSocketConnection> connection, const HttpRequest &) -> asio::awaitable<void> {
                co_await std::make_shared<SynthesisSession>(service, std::move(connection))->serve();
            }};
}

} // namespace

void addSpeechRoutes(const std::shared_ptr<SpeechService> &service)
{
    service->server.faults.declarePoint(
        "recognition.turn", {"silence", "drop", "endEarly", "close", "reset", "garbledPhrase", "status", "latency"});
    service->server.faults.declarePoint("synthesis.turn",
                                        {"silence", "drop", "noAudio", "stall", "close", "reset", "latency"});
    Router &router = service->server.router;
    for (const std::string_view cloud : clouds) {
        for (const std::string_view path : recognitionPaths)
            router.addWebSocket("*.stt.speech." + std::string(cloud), std::string(path), recognition(service));
        for (const std::string_view path : synthesisPaths)
            router.addWebSocket("*.tts.speech." + std::string(cloud), std::string(path), synthesis(service));
    }
}

} // namespace sandbox
