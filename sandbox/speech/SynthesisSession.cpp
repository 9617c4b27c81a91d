#include "sandbox/speech/SynthesisSession.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/experimental/concurrent_channel.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <array>

#include "sandbox/speech/ConnectionLimits.h"

namespace sandbox {
namespace {

namespace asio = boost::asio;
namespace json = boost::json;

constexpr int pieceMs = 100;
constexpr std::size_t longestSoundPieces = 10 * 60 * 1000 / pieceMs; // the service speaks 10 minutes at most

std::string riffHeader(int sampleRateHz)
{
    const auto rate = static_cast<std::uint32_t>(sampleRateHz);
    std::string header;
    const auto put = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            header.push_back(static_cast<char>(value >> (8 * i)));
    };
    header += "RIFF";
    put(0, 4); // a stream of unknown length
    header += "WAVEfmt ";
    put(16, 4);
    put(1, 2);
    put(1, 2);
    put(rate, 4);
    put(rate * 2, 4);
    put(2, 2);
    put(16, 2);
    header += "data";
    put(0, 4);
    return header;
}

bool isKind(const std::optional<FaultBoard::PointFault> &fault, std::string_view kind)
{
    return fault && fault->kind == kind;
}

std::int64_t number(const FaultBoard::PointFault &fault, std::string_view name, std::int64_t otherwise)
{
    const json::value *const value = fault.parameters.if_contains(name);
    return value && value->is_int64() ? value->as_int64() : otherwise;
}

// Messages are made outside of coroutines: GCC 12 refuses initialiser lists within a co_await expression.

std::string turnStartBody(const std::string &serviceTag)
{
    return json::serialize(json::object{{"context", {{"serviceTag", serviceTag}}}});
}

std::string responseBody(const std::string &serviceTag, const std::string &streamId)
{
    return json::serialize(json::object{{"context", {{"serviceTag", serviceTag}}},
                                        {"audio", {{"type", "inline"}, {"streamId", streamId}}}});
}

std::string sessionEndBody(std::int64_t ticks)
{
    const json::object end{{"Type", "SessionEnd"}, {"Data", {{"Offset", ticks}}}};
    return json::serialize(json::object{{"Metadata", json::array{end}}});
}

std::string audioMessage(const std::string &requestId, const std::string &streamId, const std::string &pcm)
{
    return binaryMessage(
        {{"X-RequestId", requestId}, {"Content-Type", "audio/x-wav"}, {"X-StreamId", streamId}, {"Path", "audio"}},
        pcm);
}

} // namespace

std::optional<OutputFormat> OutputFormat::named(std::string_view name)
{
    struct Known {
        std::string_view name;
        int sampleRateHz;
    };
    static constexpr std::array<Known, 5> rates = {
        {{"8khz", 8000}, {"16khz", 16000}, {"22050hz", 22050}, {"24khz", 24000}, {"48khz", 48000}}};
    for (const bool riff : {false, true}) {
        for (const Known &rate : rates) {
            if (name == std::string(riff ? "riff-" : "raw-").append(rate.name).append("-16bit-mono-pcm"))
                return OutputFormat{rate.sampleRateHz, riff};
        }
    }
    return std::nullopt;
}

/// Pieces of PCM on their way from the thread that makes them.
struct SynthesisSession::Sound {
    explicit Sound(const asio::any_io_executor &executor)
        : pieces(executor, longestSoundPieces + 1)
    {
    }

    asio::experimental::concurrent_channel<void(boost::system::error_code, std::string)> pieces;
};

SynthesisSession::SynthesisSession(std::shared_ptr<SpeechService> service,
                                   std::shared_ptr<WebSocketConnection> connection)
    : m_service(std::move(service))
    , m_connection(std::move(connection))
{
}

asio::awaitable<void> SynthesisSession::serve()
{
    ConnectionLimits limits(m_connection);
    std::optional<ProtocolError> broken;
    try {
        while (const auto message = co_await m_connection->read()) {
            limits.messageArrived();
            handle(message->binary ? parseBinaryMessage(message->data) : parseTextMessage(message->data));
        }
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
    if (message.isPath("synthesis.context")) {
        boost::system::error_code error;
        const json::value context = json::parse(message.body, error);
        if (error)
            throw ProtocolError(ProtocolError::invalidData, "synthesis.context is no JSON.");
        const json::value *const name = context.find_pointer("/synthesis/audio/outputFormat", error);
        if (!name || !name->is_string())
            return; // the service has a format of its own for those who do not mind
        const auto known = OutputFormat::named(name->as_string());
        if (!known)
            throw ProtocolError(ProtocolError::invalidData,
                                "Unsupported output format " + std::string(name->as_string()) + ".");
        m_format = *known;
    } else if (message.isPath("ssml")) {
        Request request{message.requestId, m_format, parseSsml(message.body)};
        for (const SpokenText &part : request.spoken) {
            if (!m_service->voices.has(part.voiceName))
                throw ProtocolError(ProtocolError::invalidData, "Unsupported voice " + part.voiceName + ".");
        }
        m_requests.push_back(std::move(request));
        if (!std::exchange(m_speaking, true)) {
            asio::co_spawn(
                m_connection->executor(),
                [self = shared_from_this()]() -> asio::awaitable<void> { co_await self->speakAll(); }, asio::detached);
        }
    } else if (message.isPath("synthesis.control")) {
        for (const Request &request : m_requests) {
            if (request.id == message.requestId)
                *request.stopped = true; // its only action is to stop
        }
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
    const auto fault = m_service->server.faults.take("synthesis.turn");
    if (isKind(fault, "silence"))
        co_return;
    const std::string tag = makeIdentifier();
    const std::string streamId = makeIdentifier();
    co_await sendText("turn.start", request, turnStartBody(tag));
    co_await sendText("response", request, responseBody(tag, streamId));
    if (isKind(fault, "noAudio"))
        co_return;
    if (isKind(fault, "latency")) {
        asio::steady_timer timer(m_connection->executor(), std::chrono::milliseconds(number(*fault, "ms", 1000)));
        co_await timer.async_wait(asio::use_awaitable);
    }

    const auto sound = std::make_shared<Sound>(m_connection->executor());
    asio::post(m_service->server.workers, [service = m_service, sound, request] {
        std::string piece;
        std::size_t pieces = 0;
        const auto pieceBytes = static_cast<std::size_t>(request.format.sampleRateHz * 2 * pieceMs / 1000);
        const auto sink = [&](std::span<const std::int16_t> samples) {
            const auto bytes = std::as_bytes(samples);
            piece.append(reinterpret_cast<const char *>(bytes.data()), bytes.size());
            while (piece.size() >= pieceBytes && pieces < longestSoundPieces) {
                sound->pieces.try_send(boost::system::error_code(), piece.substr(0, pieceBytes));
                piece.erase(0, pieceBytes);
                ++pieces;
            }
            return !*request.stopped && pieces < longestSoundPieces;
        };
        for (const SpokenText &part : request.spoken) {
            if (!*request.stopped)
                service->voices.speak(part.text, part.voiceName, request.format.sampleRateHz, sink);
        }
        if (!piece.empty() && !*request.stopped)
            sound->pieces.try_send(boost::system::error_code(), piece);
        sound->pieces.close(); // what was sent before is still received
    });
    if (co_await sendSound(request, sound, streamId, fault) && !isKind(fault, "drop"))
        co_await sendText("turn.end", request, "{}");
}

asio::awaitable<bool> SynthesisSession::sendSound(const Request &request, const std::shared_ptr<Sound> &sound,
                                                  const std::string &streamId,
                                                  const std::optional<FaultBoard::PointFault> &fault)
{
    std::string first = request.format.riff ? riffHeader(request.format.sampleRateHz) : std::string();
    std::int64_t samples = 0;
    for (std::int64_t pieces = 0;; ++pieces) {
        if (fault && pieces >= number(*fault, "afterChunks", 0)) {
            if (fault->kind == "stall")
                co_return false;
            if (fault->kind == "reset") {
                m_connection->reset();
                co_return false;
            }
            if (fault->kind == "close") {
                const json::value *const reason = fault->parameters.if_contains("reason");
                co_await m_connection->close(static_cast<std::uint16_t>(number(*fault, "code", 1011)),
                                             reason && reason->is_string() ? std::string(reason->as_string())
                                                                           : "Internal server error.");
                co_return false;
            }
        }
        boost::system::error_code error;
        const std::string piece =
            co_await sound->pieces.async_receive(asio::redirect_error(asio::use_awaitable, error));
        if (error || m_over)
            break;
        if (*request.stopped)
            continue; // drains what was made before the stop
        samples += static_cast<std::int64_t>(piece.size() / 2);
        co_await m_connection->sendBinary(
            audioMessage(request.id, streamId, std::exchange(first, std::string()) + piece));
    }
    const auto duration = samples * Ticks::period::den / request.format.sampleRateHz;
    co_await sendText("audio.metadata", request, sessionEndBody(duration));
    co_return !m_over;
}

asio::awaitable<void> SynthesisSession::sendText(std::string_view path, const Request &request, const std::string &json)
{
    co_await m_connection->sendText(textMessage(path, request.id, json));
}

} // namespace sandbox
