#include "sandbox/speech/SynthesisSession.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <array>
#include <iostream>
#include <mutex>
#include <utility>

#include "sandbox/speech/ConnectionLimit.h"
#include "sandbox/speech/WaveHeader.h"

namespace sandbox {
namespace {

namespace asio = boost::asio;
namespace json = boost::json;

constexpr std::size_t pieceBytes = 3200;     // of an audio message
constexpr std::int64_t longestSeconds = 600; // of audio for a request: the service speaks 10 minutes at most
constexpr std::size_t mostRequests = 64;     // that wait

json::object turnStartBody(const std::string &serviceTag)
{
    return {{"context", {{"serviceTag", serviceTag}}}};
}

json::object responseBody(const std::string &serviceTag, const std::string &streamId)
{
    return {{"context", {{"serviceTag", serviceTag}}}, {"audio", {{"type", "inline"}, {"streamId", streamId}}}};
}

json::object sessionEndBody(std::int64_t ticks)
{
    const json::object end{{"Type", "SessionEnd"}, {"Data", {{"Offset", ticks}}}};
    return {{"Metadata", json::array{end}}};
}

std::string audioMessage(const std::string &requestId, const std::string &streamId, const std::string &bytes)
{
    return binaryMessage(
        {{"X-RequestId", requestId}, {"Content-Type", "audio/x-wav"}, {"X-StreamId", streamId}, {"Path", "audio"}},
        bytes);
}

/// The object in `parent`, empty when there is none. Throws ProtocolError when it is something else.
json::object optionalObjectAt(const json::object &parent, std::string_view name)
{
    const auto *const value = parent.if_contains(name);
    if (!value)
        return {};
    if (!value->is_object())
        throw ProtocolError(ProtocolError::invalidData, "\"" + std::string(name) + "\" is no JSON object.");
    return value->get_object();
}

/// Clients write some of their flags as texts.
bool flagValue(const json::value &value, std::string_view name)
{
    if (value.is_bool())
        return value.get_bool();
    if (value.is_string() && (value.get_string() == "true" || value.get_string() == "false"))
        return value.get_string() == "true";
    throw ProtocolError(ProtocolError::invalidData, "\"" + std::string(name) + "\" is neither true nor false.");
}

} // namespace

std::optional<OutputFormat> OutputFormat::named(std::string_view name)
{
    struct Rate {
        std::string_view name;
        int hz;
    };
    static constexpr std::array<Rate, 4> rates = {
        {{"8khz", 8000}, {"16khz", 16000}, {"24khz", 24000}, {"48khz", 48000}}};
    for (const bool riff : {false, true}) {
        for (const Rate &rate : rates) {
            if (name == std::string(riff ? "riff-" : "raw-").append(rate.name).append("-16bit-mono-pcm"))
                return OutputFormat{rate.hz, riff};
        }
    }
    return std::nullopt;
}

/// Audio on its way from the thread that makes it, which never waits: pieces of `pieceBytes`, then one that may be
/// shorter, then the end.
class SynthesisSession::Sound : public std::enable_shared_from_this<Sound> {
public:
    enum class Ending { Complete, Failed };

    explicit Sound(const asio::any_io_executor &executor)
        : m_arrival(executor, asio::steady_timer::time_point::max())
    {
    }

    // Any thread.
    void put(std::string piece)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_pieces.push_back(std::move(piece));
        }
        announce();
    }
    void end(Ending ending)
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_ending = ending;
        }
        announce();
    }

    // On the executor.
    /// The next piece; nothing after the end.
    asio::awaitable<std::optional<std::string>> take()
    {
        for (;;) {
            {
                const std::scoped_lock lock(m_mutex);
                if (!m_pieces.empty()) {
                    auto piece = std::move(m_pieces.front());
                    m_pieces.pop_front();
                    co_return piece;
                }
                if (m_ending)
                    co_return std::nullopt;
            }
            boost::system::error_code arrived;
            co_await m_arrival.async_wait(asio::redirect_error(asio::use_awaitable, arrived));
        }
    }
    [[nodiscard]] bool failed()
    {
        const std::scoped_lock lock(m_mutex);
        return m_ending == Ending::Failed;
    }

private:
    void announce()
    {
        asio::post(m_arrival.get_executor(), [self = shared_from_this()] { self->m_arrival.cancel(); });
    }

    std::mutex m_mutex;
    std::deque<std::string> m_pieces;
    std::optional<Ending> m_ending;
    asio::steady_timer m_arrival; ///< never ends: cancelled when there is news
};

SynthesisSession::SynthesisSession(std::shared_ptr<SpeechService> service,
                                   std::shared_ptr<WebSocketConnection> connection)
    : m_service(std::move(service))
    , m_connection(std::move(connection))
{
}

asio::awaitable<void> SynthesisSession::serve()
{
    const ConnectionLimit limit(m_connection, m_service->connectionLimit);
    std::optional<ProtocolError> broken;
    try {
        while (const auto message = co_await m_connection->read())
            handle(parseSpeechMessage(*message));
    } catch (const ProtocolError &error) {
        broken = error;
    }
    m_over = true;
    for (const Request &request : m_requests)
        *request.stopped = true;
    if (broken)
        co_await m_connection->close(broken->code(), broken->what());
}

void SynthesisSession::handle(const SpeechMessage &message)
{
    if (!m_configured && message.path != "speech.config")
        throw ProtocolError(ProtocolError::violation, "The first message is not speech.config.");
    if (message.path == "speech.config") {
        (void)optionalObjectAt(jsonBody(message), "context");
        m_configured = true;
    } else if (message.path == "synthesis.context") {
        setContext(message);
    } else if (message.path == "ssml") {
        enqueue(message);
    } else if (message.path == "synthesis.control") {
        control(message);
    } else if (message.path == "telemetry") {
        (void)jsonBody(message); // the service keeps it for itself
    } else {
        throw ProtocolError(ProtocolError::violation, "Unexpected path " + message.path + ".");
    }
}

void SynthesisSession::setContext(const SpeechMessage &message)
{
    if (m_usedIds.contains(message.requestId))
        throw ProtocolError(ProtocolError::violation, "The request id was used before.");
    if (m_contexts.size() >= mostRequests)
        throw ProtocolError(ProtocolError::throttled, "There are too many contexts without a text.");
    const json::object audio = optionalObjectAt(optionalObjectAt(jsonBody(message), "synthesis"), "audio");
    Context context;
    if (const auto *const name = audio.if_contains("outputFormat")) {
        const std::string text = name->is_string() ? std::string(name->get_string()) : json::serialize(*name);
        const auto known = OutputFormat::named(text);
        if (!known)
            throw ProtocolError(ProtocolError::invalidData, "Unsupported output format " + text + ".");
        context.format = *known;
    }
    for (const auto &[name, value] : optionalObjectAt(audio, "metadataOptions")) {
        const bool flag = flagValue(value, name);
        if (name == "sessionEndEnabled")
            context.sessionEnd = flag;
    }
    m_contexts[message.requestId] = context;
}

void SynthesisSession::enqueue(const SpeechMessage &message)
{
    if (!m_usedIds.insert(message.requestId).second)
        throw ProtocolError(ProtocolError::violation, "The request id was used before.");
    if (m_requests.size() >= mostRequests)
        throw ProtocolError(ProtocolError::throttled, "There are too many requests on this connection.");
    const auto context = m_contexts.extract(message.requestId);
    if (context.empty())
        throw ProtocolError(ProtocolError::violation, "The text has no synthesis.context.");

    Request request{message.requestId, context.mapped(), parseSsml(message.body)};
    for (const SpokenText &part : request.spoken) {
        if (!m_service->engines->hasVoice(part.voiceName))
            throw ProtocolError(ProtocolError::invalidData, "Unsupported voice " + part.voiceName + ".");
    }
    m_requests.push_back(std::move(request));
    if (!std::exchange(m_speaking, true)) {
        auto speaking = [](std::shared_ptr<SynthesisSession> self) -> asio::awaitable<void> {
            co_await self->speakAll();
        };
        asio::co_spawn(m_connection->executor(), speaking(shared_from_this()), asio::detached);
    }
}

void SynthesisSession::control(const SpeechMessage &message)
{
    const json::object body = jsonBody(message);
    const auto *const action = body.if_contains("action");
    if (!action || *action != json::value("stop"))
        throw ProtocolError(ProtocolError::invalidData, "synthesis.control knows only the action stop.");
    for (const Request &request : m_requests) {
        if (request.id == message.requestId)
            *request.stopped = true;
    }
}

asio::awaitable<void> SynthesisSession::speakAll()
{
    while (!m_requests.empty() && !m_over) {
        const Request request = m_requests.front();
        co_await speak(request);
        m_requests.pop_front();
    }
    m_speaking = false;
}

asio::awaitable<void> SynthesisSession::speak(const Request &request)
{
    const SpeechFault fault(m_service->server.faults.take("synthesis.turn"));
    const std::string tag = makeIdentifier();
    const std::string streamId = makeIdentifier();
    co_await send("turn.start", request, turnStartBody(tag));
    if (fault.is("silence"))
        co_return;
    co_await send("response", request, responseBody(tag, streamId));
    if (fault.is("noAudio"))
        co_return;

    const auto sound = std::make_shared<Sound>(m_connection->executor());
    startVoices(request, sound);
    if (fault.is("latency")) {
        asio::steady_timer timer(m_connection->executor(), fault.latency());
        co_await timer.async_wait(asio::use_awaitable);
    }
    const After after = co_await sendSound(request, *sound, streamId, fault);
    *request.stopped = true; // whatever the voices still say is not wanted
    if (after == After::TurnEnd && !fault.is("drop"))
        co_await send("turn.end", request, json::object());
}

void SynthesisSession::startVoices(const Request &request, const std::shared_ptr<Sound> &sound)
{
    asio::post(m_service->server.workers, [engines = m_service->engines, sound, request] {
        const int rateHz = request.context.format.sampleRateHz;
        std::string open = request.context.format.riff ? streamWaveHeader(rateHz) : std::string();
        const auto most = static_cast<std::size_t>(longestSeconds * rateHz * 2) / pieceBytes;
        std::size_t sent = 0;
        const auto sink = [&](std::span<const std::int16_t> samples) {
            const auto bytes = std::as_bytes(samples);
            open.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
            std::size_t at = 0;
            for (; open.size() - at >= pieceBytes && sent < most; at += pieceBytes, ++sent)
                sound->put(open.substr(at, pieceBytes));
            open.erase(0, at);
            return !*request.stopped && sent < most;
        };
        try {
            for (const SpokenText &part : request.spoken) {
                if (!*request.stopped && sent < most)
                    engines->speak(part.text, part.voiceName, rateHz, sink);
            }
            if (!open.empty() && sent < most)
                sound->put(open);
        } catch (const std::exception &error) {
            std::cerr << "confera-sandbox: synthesis failed: " << error.what() << std::endl;
            sound->end(Sound::Ending::Failed);
            return;
        }
        sound->end(Sound::Ending::Complete);
    });
}

asio::awaitable<SynthesisSession::After>
SynthesisSession::sendSound(const Request &request, Sound &sound, const std::string &streamId, const SpeechFault &fault)
{
    std::size_t bytes = 0;
    for (std::int64_t pieces = 0;; ++pieces) {
        if (pieces >= fault.number("afterChunks").value_or(0)) {
            if (fault.is("stall"))
                co_return After::Nothing;
            if (fault.is("reset")) {
                m_connection->reset();
                co_return After::Nothing;
            }
            if (fault.is("close")) {
                co_await m_connection->close(fault.closeCode(), fault.text("reason", "Internal server error."));
                co_return After::Nothing;
            }
            if (fault.is("endEarly"))
                break;
        }
        const auto piece = co_await sound.take();
        if (m_over)
            co_return After::Nothing;
        if (!piece || *request.stopped)
            break;
        bytes += piece->size();
        const std::string message = audioMessage(request.id, streamId, *piece);
        co_await m_connection->sendBinary(message);
    }
    if (sound.failed()) {
        co_await m_connection->close(ProtocolError::internalError, "Internal server error.");
        co_return After::Nothing;
    }
    if (request.context.sessionEnd) {
        if (request.context.format.riff && bytes > 0)
            bytes -= streamWaveHeader(request.context.format.sampleRateHz).size();
        const auto ticks =
            static_cast<std::int64_t>(bytes / 2) * Ticks::period::den / request.context.format.sampleRateHz;
        co_await send("audio.metadata", request, sessionEndBody(ticks));
    }
    co_return After::TurnEnd;
}

asio::awaitable<void> SynthesisSession::send(std::string_view path, const Request &request, const json::object &body)
{
    co_await m_connection->sendText(textMessage(path, request.id, json::serialize(body)));
}

} // namespace sandbox
