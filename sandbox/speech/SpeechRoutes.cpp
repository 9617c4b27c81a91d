#include "sandbox/speech/SpeechRoutes.h"

#include <array>
#include <string>
#include <vector>

#include "sandbox/speech/RecognitionSession.h"
#include "sandbox/speech/SpeechUpgrade.h"
#include "sandbox/speech/SynthesisSession.h"

namespace sandbox {
namespace {

namespace asio = boost::asio;

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

std::string_view cloudOf(std::string_view region)
{
    if (region.starts_with("china"))
        return "azure.cn";
    return region.starts_with("usgov") ? "azure.us" : "microsoft.com";
}

/// `service` is "stt" or "tts".
std::vector<std::string> hosts(std::string_view service, const Subscription &subscription)
{
    const auto host = [service](std::string_view region, std::string_view cloud) {
        return std::string(region).append(".").append(service).append(".speech.").append(cloud);
    };
    std::vector<std::string> all;
    for (const std::string &region : subscription.regions)
        all.push_back(host(region, cloudOf(region)));
    if (all.empty())
        all = {host("*", "microsoft.com"), host("*", "azure.cn"), host("*", "azure.us")};
    return all;
}

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
    FaultBoard &faults = service->server.faults;
    faults.declarePoint("recognition.turn",
                        {"silence", "drop", "endEarly", "close", "reset", "garbledPhrase", "status", "latency"});
    faults.declarePoint("synthesis.turn",
                        {"silence", "drop", "noAudio", "stall", "endEarly", "close", "reset", "latency"});
    Router &router = service->server.router;
    for (const std::string &host : hosts("stt", service->subscription)) {
        for (const std::string_view path : recognitionPaths)
            router.addWebSocket(host, std::string(path), recognition(service));
    }
    for (const std::string &host : hosts("tts", service->subscription)) {
        for (const std::string_view path : synthesisPaths)
            router.addWebSocket(host, std::string(path), synthesis(service));
    }
}

} // namespace sandbox
