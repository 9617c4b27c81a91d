#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/json/object.hpp>

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "sandbox/speech/SpeechFault.h"
#include "sandbox/speech/SpeechMessage.h"
#include "sandbox/speech/SpeechRoutes.h"
#include "sandbox/speech/Ssml.h"

namespace sandbox {

/// How audio is to come: 16-bit mono PCM, with or without a RIFF header in front.
struct OutputFormat {
    int sampleRateHz = 16000;
    bool riff = false;

    /// Of a name such as "raw-16khz-16bit-mono-pcm"; nothing for formats that the sandbox does not make.
    static std::optional<OutputFormat> named(std::string_view name);
};

/// One synthesiser's connection: requests are spoken one after the other, while messages go on being read.
///
/// All on the connection's executor; shared, because the reading and the speaking side end independently.
class SynthesisSession : public std::enable_shared_from_this<SynthesisSession> {
public:
    SynthesisSession(std::shared_ptr<SpeechService> service, std::shared_ptr<WebSocketConnection> connection);

    /// Returns when the connection is over.
    boost::asio::awaitable<void> serve();

private:
    /// What a client says about how its next text is to be spoken.
    struct Context {
        OutputFormat format;
        bool sessionEnd = true; ///< tell how long the audio was
    };
    struct Request {
        std::string id;
        Context context;
        std::vector<SpokenText> spoken;
        std::shared_ptr<std::atomic<bool>> stopped = std::make_shared<std::atomic<bool>>(false);
    };
    class Sound;

    void handle(const SpeechMessage &message);
    void setContext(const SpeechMessage &message);
    void enqueue(const SpeechMessage &message);
    void control(const SpeechMessage &message);

    boost::asio::awaitable<void> speakAll();
    boost::asio::awaitable<void> speak(const Request &request);
    void startVoices(const Request &request, const std::shared_ptr<Sound> &sound);
    enum class After { TurnEnd, Nothing };
    boost::asio::awaitable<After> sendSound(const Request &request, Sound &sound, const std::string &streamId,
                                            const SpeechFault &fault);
    boost::asio::awaitable<void> send(std::string_view path, const Request &request, const boost::json::object &body);

    std::shared_ptr<SpeechService> m_service;
    std::shared_ptr<WebSocketConnection> m_connection;
    bool m_configured = false;
    std::map<std::string, Context> m_contexts; ///< by request id, until their text comes
    std::unordered_set<std::string> m_usedIds;
    std::deque<Request> m_requests; ///< the first one is being spoken while `m_speaking`
    bool m_speaking = false;
    bool m_over = false;
};

} // namespace sandbox
