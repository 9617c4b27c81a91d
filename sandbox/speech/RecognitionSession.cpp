#include "sandbox/speech/RecognitionSession.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <cstring>

#include "sandbox/speech/ConnectionLimits.h"

namespace sandbox {
namespace {

namespace asio = boost::asio;
namespace json = boost::json;

constexpr std::int64_t sampleRate = 16000;

Ticks ticksOf(std::int64_t samples)
{
    return Ticks(samples * (Ticks::period::den / sampleRate));
}

std::chrono::seconds initialSilenceLimit(RecognitionParameters::Mode mode)
{
    // The service's own figures for its modes.
    return mode == RecognitionParameters::Mode::Interactive ? std::chrono::seconds(5) : std::chrono::seconds(15);
}

std::uint32_t littleEndian(std::string_view bytes, std::size_t offset, std::size_t count)
{
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;)
        value = (value << 8) | static_cast<unsigned char>(bytes[offset + i]);
    return value;
}

/// Checks the RIFF header that begins a turn and returns what follows it (nothing, as a rule).
std::string_view withoutRiffHeader(std::string_view body)
{
    const ProtocolError unusable(ProtocolError::invalidData,
                                 "A turn begins with a RIFF header of 16 kHz, 16-bit, mono PCM audio.");
    if (body.size() < 44 || body.substr(0, 4) != "RIFF" || body.substr(8, 8) != "WAVEfmt ")
        throw unusable;
    const bool pcm = littleEndian(body, 20, 2) == 1 && littleEndian(body, 22, 2) == 1;
    if (!pcm || littleEndian(body, 24, 4) != sampleRate || littleEndian(body, 34, 2) != 16)
        throw unusable;
    return body.substr(44);
}

json::object times(Ticks offset, Ticks duration)
{
    return {{"Offset", offset.count()}, {"Duration", duration.count()}};
}

// Bodies are made outside of coroutines: GCC 12 refuses initialiser lists within a co_await expression.

std::string turnStartBody()
{
    return json::serialize(json::object{{"context", {{"serviceTag", makeIdentifier()}}}});
}

std::string offsetBody(Ticks offset)
{
    return json::serialize(json::object{{"Offset", offset.count()}});
}

std::int64_t parameter(const json::object &parameters, std::string_view name, std::int64_t otherwise)
{
    const json::value *const value = parameters.if_contains(name);
    return value && value->is_int64() ? value->as_int64() : otherwise;
}

std::string textParameter(const json::object &parameters, std::string_view name, std::string_view otherwise)
{
    const json::value *const value = parameters.if_contains(name);
    return value && value->is_string() ? std::string(value->as_string()) : std::string(otherwise);
}

} // namespace

RecognitionSession::RecognitionSession(std::shared_ptr<SpeechService> service,
                                       std::shared_ptr<WebSocketConnection> connection,
                                       RecognitionParameters parameters)
    : m_service(std::move(service))
    , m_connection(std::move(connection))
    , m_parameters(std::move(parameters))
    , m_detailed(m_parameters.detailed)
{
}

asio::awaitable<void> RecognitionSession::serve()
{
    ConnectionLimits limits(m_connection);
    std::optional<ProtocolError> broken;
    try {
        while (const auto message = co_await m_connection->read()) {
            limits.messageArrived();
            const SpeechMessage parsed =
                message->binary ? parseBinaryMessage(message->data) : parseTextMessage(message->data);
            co_await handle(parsed, message->binary);
        }
    } catch (const ProtocolError &error) {
        broken = error;
    }
    if (broken)
        co_await m_connection->close(broken->code(), broken->what());
}

asio::awaitable<void> RecognitionSession::handle(const SpeechMessage &message, bool binary)
{
    if (message.isPath("audio")) {
        if (!binary)
            throw ProtocolError(ProtocolError::invalidData, "Audio comes in binary messages.");
        co_await handleAudio(message);
    } else if (message.isPath("speech.context")) {
        if (m_endedTurns.contains(message.requestId))
            throw ProtocolError(ProtocolError::violation, "The request id was used before.");
        boost::system::error_code error;
        const json::value context = json::parse(message.body, error);
        if (error || !context.is_object())
            throw ProtocolError(ProtocolError::invalidData, "speech.context is no JSON object.");
        if (const json::value *const output = context.as_object().if_contains("phraseOutput");
            output && output->is_object() && output->as_object().contains("format"))
            m_detailed = equalsIgnoringCase(textParameter(output->as_object(), "format", ""), "detailed");
    }
    // Configuration, telemetry and paths of the future change nothing here.
}

asio::awaitable<void> RecognitionSession::handleAudio(const SpeechMessage &message)
{
    if (m_endedTurns.contains(message.requestId))
        co_return; // on its way when the turn ended
    if (!m_turn || m_turn->requestId != message.requestId) {
        co_await beginTurn(message);
        co_return;
    }
    if (message.body.empty())
        co_await endTurn(true);
    else
        co_await hear(message.body);
}

asio::awaitable<void> RecognitionSession::beginTurn(const SpeechMessage &message)
{
    const std::string_view pcm = withoutRiffHeader(message.body);
    if (m_turn)
        m_endedTurns.insert(m_turn->requestId); // a new turn drops what was open of the one before
    m_turn.emplace(Turn{.requestId = message.requestId,
                        .recogniser = StreamingRecogniser(m_service->models, m_parameters.locale),
                        .fault = m_service->server.faults.take("recognition.turn"),
                        .oddByte = {}});
    m_turn->silent = m_turn->fault && m_turn->fault->kind == "silence";
    co_await send("turn.start", turnStartBody());
    if (!pcm.empty())
        co_await hear(pcm);
}

asio::awaitable<void> RecognitionSession::hear(std::string_view pcm)
{
    const std::string bytes = std::exchange(m_turn->oddByte, {}).append(pcm);
    std::vector<std::int16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
    if (bytes.size() % 2 != 0)
        m_turn->oddByte.assign(1, bytes.back());
    m_turn->samples += static_cast<std::int64_t>(samples.size());

    const auto events = co_await m_service->server.offload([&] { return m_turn->recogniser.feed(samples); });
    co_await report(events);
    if (!m_turn || co_await interrupted())
        co_return;
    co_await reportLongSilence();
}

asio::awaitable<bool> RecognitionSession::interrupted()
{
    if (!m_turn->fault)
        co_return false;
    const auto &[kind, parameters] = *m_turn->fault;
    if (ticksOf(m_turn->samples) < std::chrono::milliseconds(parameter(parameters, "afterMs", 0)))
        co_return false;
    if (kind == "endEarly") {
        co_await endTurn(false);
        co_return true;
    }
    if (kind == "close")
        throw ProtocolError(static_cast<std::uint16_t>(parameter(parameters, "code", 1011)),
                            textParameter(parameters, "reason", "Internal server error."));
    if (kind == "reset") {
        m_connection->reset();
        m_endedTurns.insert(m_turn->requestId);
        m_turn.reset();
        co_return true;
    }
    co_return false;
}

asio::awaitable<void> RecognitionSession::endTurn(bool finishOpenSpeech)
{
    if (finishOpenSpeech) {
        const auto events = co_await m_service->server.offload([&] { return m_turn->recogniser.finish(); });
        co_await report(events);
        if (!m_turn)
            co_return;
    }
    const Ticks end = ticksOf(m_turn->samples);
    co_await send("speech.endDetected", offsetBody(end));
    if (m_parameters.mode == RecognitionParameters::Mode::Dictation)
        co_await sendStatus("EndOfDictation", end, Ticks(0));
    if (!m_turn->fault || m_turn->fault->kind != "drop")
        co_await send("turn.end", "{}");
    m_endedTurns.insert(m_turn->requestId);
    m_turn.reset();
}

asio::awaitable<void> RecognitionSession::report(const std::vector<RecognitionEvent> &events)
{
    for (const RecognitionEvent &event : events) {
        if (const auto *const started = std::get_if<SpeechStarted>(&event)) {
            m_turn->speaking = true;
            co_await send("speech.startDetected", offsetBody(started->offset));
        } else if (const auto *const hypothesis = std::get_if<Hypothesis>(&event)) {
            json::object body = times(hypothesis->offset, hypothesis->duration);
            body["Id"] = makeIdentifier();
            body["Text"] = hypothesis->text;
            body["Channel"] = 0;
            co_await send("speech.hypothesis", json::serialize(body));
        } else if (const auto *const phrase = std::get_if<RecognisedPhrase>(&event)) {
            m_turn->speaking = false;
            m_turn->silenceFrom = m_turn->samples;
            co_await reportPhrase(*phrase);
            if (m_parameters.mode == RecognitionParameters::Mode::Interactive) {
                co_await endTurn(false);
                co_return;
            }
        }
    }
}

asio::awaitable<void> RecognitionSession::reportPhrase(const RecognisedPhrase &phrase)
{
    if (m_turn->fault && m_turn->fault->kind == "latency") {
        asio::steady_timer timer(m_connection->executor(),
                                 std::chrono::milliseconds(parameter(m_turn->fault->parameters, "ms", 1000)));
        co_await timer.async_wait(asio::use_awaitable);
    }
    if (m_turn->fault && m_turn->fault->kind == "status") {
        const std::string status = textParameter(m_turn->fault->parameters, "status", "Error");
        m_turn->fault.reset();
        co_await sendStatus(status, phrase.offset, phrase.duration);
        co_return;
    }
    if (phrase.text.empty()) {
        co_await sendStatus("NoMatch", phrase.offset, phrase.duration);
        co_return;
    }
    json::object body = times(phrase.offset, phrase.duration);
    body["Id"] = makeIdentifier();
    body["RecognitionStatus"] = "Success";
    body["DisplayText"] = phrase.text;
    body["Channel"] = 0;
    if (m_detailed) {
        body["NBest"] = json::array{json::object{{"Confidence", phrase.confidence},
                                                 {"Lexical", phrase.text},
                                                 {"ITN", phrase.text},
                                                 {"MaskedITN", phrase.text},
                                                 {"Display", phrase.text}}};
    }
    const bool isGarbled = m_turn->fault && m_turn->fault->kind == "garbledPhrase";
    const std::string text = json::serialize(body);
    co_await send("speech.phrase", isGarbled ? text.substr(0, text.size() / 2) : text);
}

asio::awaitable<void> RecognitionSession::reportLongSilence()
{
    const Ticks silence = ticksOf(m_turn->samples - m_turn->silenceFrom);
    if (m_turn->speaking || silence < initialSilenceLimit(m_parameters.mode))
        co_return;
    const Ticks from = ticksOf(m_turn->silenceFrom);
    m_turn->silenceFrom = m_turn->samples;
    co_await sendStatus("InitialSilenceTimeout", from, silence);
    if (m_parameters.mode == RecognitionParameters::Mode::Interactive)
        co_await endTurn(false);
}

asio::awaitable<void> RecognitionSession::send(std::string_view path, const std::string &json)
{
    if (!m_turn->silent)
        co_await m_connection->sendText(textMessage(path, m_turn->requestId, json));
}

asio::awaitable<void> RecognitionSession::sendStatus(std::string_view status, Ticks offset, Ticks duration)
{
    json::object body = times(offset, duration);
    body["Id"] = makeIdentifier();
    body["RecognitionStatus"] = status;
    body["Channel"] = 0;
    co_await send("speech.phrase", json::serialize(body));
}

} // namespace sandbox
