#pragma once

#include <QByteArray>

#include <array>

namespace vynlex::fuzz {

/// Each feeds a decoder of the kit with whatever comes and throws `Broken` when something does not hold that must hold
/// for all bytes. Main thread, with an application object. Inputs are texts wherever the decoder's are.

void answer(const QByteArray &bytes); ///< A line with an HTTP status, then the body, if there is a second line.
void chat(const QByteArray &bytes);   ///< A text frame of the chat's socket; also messages, pages of them, wire text.
void json(const QByteArray &bytes);
void jwt(const QByteArray &bytes); ///< A token; also the payload of one.
void records(const QByteArray &bytes);
void speech_message(const QByteArray &bytes); ///< As a text message, a binary one, and a phrase.
void speech_session(const QByteArray &bytes); ///< Steps of a recognition and of a spoken text: see the source.
void vcard(const QByteArray &bytes);
void wav(const QByteArray &bytes);
void websocket(const QByteArray &bytes); ///< What a server sends: see the source.

struct Target {
    const char *name; ///< Also of its folder in corpus/.
    void (*run)(const QByteArray &bytes);
};

inline constexpr std::array targets{
    Target{"answer", answer},
    Target{"chat", chat},
    Target{"json", json},
    Target{"jwt", jwt},
    Target{"records", records},
    Target{"speech_message", speech_message},
    Target{"speech_session", speech_session},
    Target{"vcard", vcard},
    Target{"wav", wav},
    Target{"websocket", websocket},
};

} // namespace vynlex::fuzz
