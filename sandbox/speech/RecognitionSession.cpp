#include "sandbox/speech/RecognitionSession.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/string.hpp>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

#include <cstring>
#include <iostream>
#include <utility>

#include "sandbox/speech/ConnectionLimit.h"
#include "sandbox/speech/WaveHeader.h"

namespace sandbox {
namespace {

namespace asio = boost::asio;
namespace json = boost::json;

constexpr std::int64_t sampleRateHz = 16000;
constexpr std::size_t longestAudio = 8192; // bytes in a message, as documented

Ticks ticksOf(std::int64_t samples)
{
    return Ticks(samples * (Ticks::period::den / sampleRateHz));
}

/// The service's own figures.
std::chrono::milliseconds initialSilenceOf(RecognitionMode mode)
{
    return mode == RecognitionMode::Interactive ? std::chrono::seconds(5) : std::chrono::seconds(15);
}

/// How the service writes what was said before it puts in capitals and punctuation.
std::string lexicalOf(std::string_view text)
{
    static constexpr std::string_view marks[] = {".", ",", "?", "!", ";", ":", "।", "॥", "…", "\"", "“", "”"};
    std::string lexical;
    while (!text.empty()) {
        std::size_t skipped = 0;
        for (const std::string_view mark : marks) {
            if (text.starts_with(mark))
                skipped = mark.size();
        }
        if (skipped == 0) {
            const char c = text.front();
            lexical += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
            skipped = 1;
        }
        text.remove_prefix(skipped);
    }
    return lexical;
}

json::object timed(Ticks offset, Ticks duration)
{
    json::object body;
    body["Id"] = makeIdentifier();
    body["Offset"] = offset.count();
    body["Duration"] = duration.count();
    body["Channel"] = 0;
    return body;
}

json::object turnStartBody()
{
    return {{"context", {{"serviceTag", makeIdentifier()}}}};
}

json::object phraseBody(const RecognisedPhrase &phrase, bool detailed)
{
    json::object body = timed(phrase.offset, phrase.duration);
    body["RecognitionStatus"] = "Success";
    body["DisplayText"] = phrase.text;
    if (detailed) {
        const std::string lexical = lexicalOf(phrase.text);
        body["NBest"] = json::array{json::object{{"Confidence", phrase.confidence},
                                                 {"Lexical", lexical},
                                                 {"ITN", lexical},
                                                 {"MaskedITN", lexical},
                                                 {"Display", phrase.text}}};
    }
    return body;
}

/// The first half, cut between characters: no JSON, but still a text that may be sent.
std::string halfOf(std::string text)
{
    std::size_t end = text.size() / 2;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    text.resize(end);
    return text;
}

const json::object *objectAt(const json::object &parent, std::string_view name)
{
    const auto *const value = parent.if_contains(name);
    return value ? value->if_object() : nullptr;
}

std::string_view textAt(const json::object &parent, std::string_view name)
{
    const auto *const value = parent.if_contains(name);
    return value && value->is_string() ? std::string_view(value->get_string()) : std::string_view();
}

} // namespace

RecognitionSession::RecognitionSession(std::shared_ptr<SpeechService> service,
                                       std::shared_ptr<WebSocketConnection> connection,
                                       RecognitionParameters parameters)
    : m_service(std::move(service))
    , m_connection(std::move(connection))
    , m_parameters(std::move(parameters))
    , m_mode(m_parameters.mode.value_or(RecognitionMode::Conversation))
    , m_detailed(m_parameters.detailed)
    , m_initialSilence(m_parameters.initialSilence)
{
}

asio::awaitable<void> RecognitionSession::serve()
{
    const ConnectionLimit limit(m_connection, m_service->connectionLimit);
    std::optional<ProtocolError> broken;
    try {
        while (const auto message = co_await m_connection->read()) {
            const SpeechMessage parsed = parseSpeechMessage(*message);
            co_await handle(parsed);
        }
    } catch (const ProtocolError &error) {
        broken = error;
    } catch (const std::exception &error) {
        std::cerr << "confera-sandbox: recognition failed: " << error.what() << std::endl;
        broken.emplace(ProtocolError::internalError, "Internal server error.");
    }
    if (broken)
        co_await m_connection->close(broken->code(), broken->what());
}

asio::awaitable<void> RecognitionSession::handle(const SpeechMessage &message)
{
    if (!m_configured && message.path != "speech.config")
        throw ProtocolError(ProtocolError::violation, "The first message is not speech.config.");
    if (message.path == "audio")
        co_await handleAudio(message);
    else if (message.path == "speech.config")
        configure(message);
    else if (message.path == "speech.context")
        setContext(message);
    else if (message.path == "telemetry")
        (void)jsonBody(message); // the service keeps it for itself
    else
        throw ProtocolError(ProtocolError::violation, "Unknown path " + message.path + ".");
}

void RecognitionSession::configure(const SpeechMessage &message)
{
    const json::object config = jsonBody(message);
    if (!objectAt(config, "context"))
        throw ProtocolError(ProtocolError::invalidData, "speech.config has no context.");
    m_configured = true;
    const auto named = recognitionModeNamed(textAt(config, "recognition"));
    if (named && !m_parameters.mode)
        m_mode = *named;
}

void RecognitionSession::setContext(const SpeechMessage &message)
{
    if (m_endedTurns.contains(message.requestId))
        throw ProtocolError(ProtocolError::violation, "The request id was used before.");
    const json::object context = jsonBody(message);
    if (const auto *const output = objectAt(context, "phraseOutput"); output && output->contains("format"))
        m_detailed = boost::beast::iequals(textAt(*output, "format"), "detailed");
    const auto *const detection = objectAt(context, "phraseDetection");
    if (!detection)
        return;
    const auto named = recognitionModeNamed(textAt(*detection, "mode"));
    if (named && !m_parameters.mode)
        m_mode = *named;
    const auto *const silence = detection->if_contains("initialSilenceTimeout");
    if (silence && silence->is_int64() && silence->get_int64() > 0)
        m_initialSilence = std::chrono::milliseconds(silence->get_int64());
}

asio::awaitable<void> RecognitionSession::handleAudio(const SpeechMessage &message)
{
    if (message.body.size() > longestAudio)
        throw ProtocolError(ProtocolError::invalidData, "An audio message has more than 8192 bytes of audio.");
    if (m_endedTurns.contains(message.requestId)) {
        if (beginsWithWaveHeader(message.body))
            throw ProtocolError(ProtocolError::violation, "The request id was used before.");
        co_return; // on its way when the turn ended
    }
    if (!m_turn || m_turn->requestId != message.requestId)
        co_await beginTurn(message);
    else if (message.body.empty())
        co_await endAudio();
    else
        co_await hear(message.body);
}

asio::awaitable<void> RecognitionSession::beginTurn(const SpeechMessage &message)
{
    const std::string_view pcm = withoutWaveHeader(message.body);
    if (m_turn)
        forgetTurn(); // a new turn drops what was open of the one before
    m_turn.emplace(Turn{message.requestId, SpeechFault(m_service->server.faults.take("recognition.turn"))});
    co_await send("turn.start", turnStartBody());
    auto start = [this] { return m_service->engines->startRecogniser(m_parameters.locale); };
    m_turn->recogniser = co_await m_service->server.offload(std::move(start));
    co_await hear(pcm);
}

asio::awaitable<void> RecognitionSession::hear(std::string_view pcm)
{
    std::string bytes = std::exchange(m_turn->oddByte, {}).append(pcm);
    if (bytes.size() % 2 != 0) {
        m_turn->oddByte.assign(1, bytes.back());
        bytes.pop_back();
    }
    std::vector<std::int16_t> samples(bytes.size() / 2);
    if (!samples.empty())
        std::memcpy(samples.data(), bytes.data(), bytes.size());
    m_turn->samples += static_cast<std::int64_t>(samples.size());
    if (m_turn->fault.is("silence"))
        co_return;
    co_await playFault();
    if (!m_turn || samples.empty())
        co_return;

    auto feed = [this, &samples] { return m_turn->recogniser->feed(samples); };
    const auto events = co_await m_service->server.offload(std::move(feed));
    co_await report(events, At::Speech);
    if (m_turn)
        co_await reportLongSilence();
}

asio::awaitable<void> RecognitionSession::endAudio()
{
    if (m_turn->fault.is("silence"))
        co_return;
    auto finish = [this] { return m_turn->recogniser->finish(); };
    const auto events = co_await m_service->server.offload(std::move(finish));
    co_await report(events, At::EndOfAudio);
    if (!m_turn)
        co_return;
    const Ticks end = ticksOf(m_turn->samples);
    if (isInteractive()) {
        co_await sendStatus("NoMatch", end, Ticks(0)); // whoever asks once gets an answer
    } else {
        co_await sendOffset("speech.endDetected", end);
        co_await sendStatus("EndOfDictation", end, Ticks(0));
    }
    m_understood = false;
    co_await endTurn();
}

asio::awaitable<void> RecognitionSession::report(const std::vector<RecognitionEvent> &events, At at)
{
    for (const RecognitionEvent &event : events) {
        if (const auto *const started = std::get_if<SpeechStarted>(&event)) {
            m_turn->spoken = true;
            co_await sendOffset("speech.startDetected", started->offset);
        } else if (const auto *const hypothesis = std::get_if<Hypothesis>(&event)) {
            json::object body = timed(hypothesis->offset, hypothesis->duration);
            body["Text"] = hypothesis->text;
            co_await send("speech.hypothesis", body);
        } else if (const auto *const ended = std::get_if<SpeechEnded>(&event)) {
            // In the continuous modes a pause is no end: clients may stop sending when they see this message.
            if (isInteractive())
                co_await sendOffset("speech.endDetected", ended->offset);
        } else if (const auto *const phrase = std::get_if<RecognisedPhrase>(&event)) {
            if (at == At::EndOfAudio && phrase->text.empty() && m_understood)
                continue;
            co_await reportPhrase(*phrase);
            if (m_turn && isInteractive())
                co_await endTurn();
            if (!m_turn)
                co_return;
        }
    }
}

asio::awaitable<void> RecognitionSession::reportPhrase(const RecognisedPhrase &phrase)
{
    ++m_turn->phrases;
    if (m_turn->fault.is("latency")) {
        asio::steady_timer timer(m_connection->executor(), m_turn->fault.latency());
        co_await timer.async_wait(asio::use_awaitable);
    }
    if (phrase.text.empty()) {
        co_await sendStatus("NoMatch", phrase.offset, phrase.duration);
    } else {
        m_understood = true;
        const json::object body = phraseBody(phrase, m_detailed);
        if (m_turn->fault.is("garbledPhrase"))
            co_await m_connection->sendText(
                textMessage("speech.phrase", m_turn->requestId, halfOf(json::serialize(body))));
        else
            co_await send("speech.phrase", body);
    }
    co_await playFault();
}

asio::awaitable<void> RecognitionSession::reportLongSilence()
{
    const Ticks silence = ticksOf(m_turn->samples - m_turn->silenceFrom);
    if (m_turn->spoken || silence < m_initialSilence.value_or(initialSilenceOf(m_mode)))
        co_return;
    const Ticks from = ticksOf(m_turn->silenceFrom);
    m_turn->silenceFrom = m_turn->samples;
    co_await sendStatus("InitialSilenceTimeout", from, silence);
    if (isInteractive())
        co_await endTurn();
}

asio::awaitable<void> RecognitionSession::playFault()
{
    const SpeechFault &fault = m_turn->fault;
    const auto afterPhrases = fault.number("afterPhrases");
    const bool due = afterPhrases
                         ? m_turn->phrases >= *afterPhrases
                         : ticksOf(m_turn->samples) >= std::chrono::milliseconds(fault.number("afterMs").value_or(0));
    if (!due)
        co_return;
    if (fault.is("close"))
        throw ProtocolError(fault.closeCode(), fault.text("reason", "Internal server error."));
    if (fault.is("reset")) {
        m_connection->reset();
        forgetTurn();
    } else if (fault.is("status")) {
        co_await sendStatus(fault.text("status", "Error"), ticksOf(m_turn->samples), Ticks(0));
        co_await endTurn();
    } else if (fault.is("endEarly")) {
        co_await sendOffset("speech.endDetected", ticksOf(m_turn->samples));
        co_await endTurn();
    }
}

asio::awaitable<void> RecognitionSession::endTurn()
{
    if (!m_turn->fault.is("drop"))
        co_await send("turn.end", json::object());
    forgetTurn();
}

void RecognitionSession::forgetTurn()
{
    m_endedTurns.insert(m_turn->requestId);
    m_turn.reset();
}

asio::awaitable<void> RecognitionSession::send(std::string_view path, const json::object &body)
{
    co_await m_connection->sendText(textMessage(path, m_turn->requestId, json::serialize(body)));
}

asio::awaitable<void> RecognitionSession::sendOffset(std::string_view path, Ticks offset)
{
    json::object body;
    body["Offset"] = offset.count();
    co_await send(path, body);
}

asio::awaitable<void> RecognitionSession::sendStatus(std::string_view status, Ticks offset, Ticks duration)
{
    json::object body = timed(offset, duration);
    body["RecognitionStatus"] = status;
    co_await send("speech.phrase", body);
}

} // namespace sandbox
