#pragma once

#include <QString>

#include <chrono>
#include <tuple>
#include <vector>

#include "platform/json/Record.h"

namespace host {

/// What the process that directs the demonstration and those of the two devices say to each other: a request is one
/// line of JSON with the name of what to do under "do", the answer is one line with what came of it, or with "problem".

/// A moment that processes of one machine agree on, in microseconds.
[[nodiscard]] inline qint64 momentUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// "open": sign in and open the chat with the other person. "lookBack": scroll up to older messages.
struct PlainRequest {};
struct PlainAnswer {};

/// "say": record a voice message and send it.
struct SayRequest {
    QString language; ///< Translator code.
    QString phrase;   ///< Of the phrasebook; or, when that is empty:
    QString wavFile;
    QString name; ///< What files are named after.
    /// Take a picture of each state of the screen, and listen before sending.
    bool everyState = false;
};
struct SaidAnswer {
    QString said; ///< The phrase, or the file.
    QString recognised;
    QString messageId;
    qint64 sentAtUs = 0; ///< The button was pressed.
    std::vector<QString> pictures;
};

/// "hear": wait for a message that comes over the socket, and play it.
struct HearRequest {
    QString messageId;
    QString name;
    bool everyState = false;
};
struct HeardAnswer {
    qint64 receivedAtUs = 0; ///< Over the socket.
    QString received;        ///< The text that came.
    QString stored;          ///< The text that the backend has.
    QString voice;           ///< That read it.
    QString wavFile;         ///< What was heard, in the folder of the pictures.
    qint64 durationMs = 0;
    double levelDb = 0;
    std::vector<QString> pictures;
};

struct Problem {
    std::optional<QString> problem; ///< One clear line.
};

} // namespace host

namespace vynlex {

template<> inline constexpr auto fields<host::PlainRequest> = std::tuple{};
template<> inline constexpr auto fields<host::PlainAnswer> = std::tuple{};
template<>
inline constexpr auto fields<host::SayRequest> = std::tuple{
    required("language", &host::SayRequest::language),     required("phrase", &host::SayRequest::phrase),
    required("wavFile", &host::SayRequest::wavFile),       required("name", &host::SayRequest::name),
    required("everyState", &host::SayRequest::everyState),
};
template<>
inline constexpr auto fields<host::SaidAnswer> = std::tuple{
    required("said", &host::SaidAnswer::said),           required("recognised", &host::SaidAnswer::recognised),
    required("messageId", &host::SaidAnswer::messageId), required("sentAtUs", &host::SaidAnswer::sentAtUs),
    required("pictures", &host::SaidAnswer::pictures),
};
template<>
inline constexpr auto fields<host::HearRequest> = std::tuple{
    required("messageId", &host::HearRequest::messageId),
    required("name", &host::HearRequest::name),
    required("everyState", &host::HearRequest::everyState),
};
template<>
inline constexpr auto fields<host::HeardAnswer> = std::tuple{
    required("receivedAtUs", &host::HeardAnswer::receivedAtUs),
    required("received", &host::HeardAnswer::received),
    required("stored", &host::HeardAnswer::stored),
    required("voice", &host::HeardAnswer::voice),
    required("wavFile", &host::HeardAnswer::wavFile),
    required("durationMs", &host::HeardAnswer::durationMs),
    required("levelDb", &host::HeardAnswer::levelDb),
    required("pictures", &host::HeardAnswer::pictures),
};
template<> inline constexpr auto fields<host::Problem> = std::tuple{optional("problem", &host::Problem::problem)};

} // namespace vynlex
