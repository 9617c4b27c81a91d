#pragma once

#include <QString>

#include <array>
#include <map>
#include <tuple>
#include <utility>

#include "platform/json/Record.h"

namespace vynlex {

/// What crosses the chat's socket. In both directions "event" names a message and "data" is what it carries.

/// A message to the server. The kinds below only fill it, so a copy of this part is all that is sent.
struct SocketRequest {
    QString event;
    std::map<QString, QString> data;

    bool operator==(const SocketRequest &) const = default;
};

struct LoginSocketRequest : SocketRequest {
    explicit LoginSocketRequest(const QString &jwt);

    QString jwt;
};

/// Without a token the text "(null)" is sent, which the login message does not do. Deliberate: the server knows both.
struct AmAliveSocketRequest : SocketRequest {
    explicit AmAliveSocketRequest(const QString &jwt);
};

/// `originalEvent`: what the received message was called, or nothing. Carries the time at which it is made, in whole
/// seconds since 1970, as text.
struct AckSocketRequest : SocketRequest {
    explicit AckSocketRequest(const QString &originalEvent);

    QString originalEvent;
};

enum class SocketEvent { chatThread, chatMessage, chatMessageUpdate };

/// A message from the server.
template<typename T> struct SocketResponse {
    SocketEvent event{};
    T data;

    bool operator==(const SocketResponse &) const = default;
};

template<>
inline constexpr auto words<SocketEvent> = std::array{
    std::pair{SocketEvent::chatThread, QLatin1StringView("chatThreadAddOrEdit")},
    std::pair{SocketEvent::chatMessage, QLatin1StringView("chatMessage")},
    std::pair{SocketEvent::chatMessageUpdate, QLatin1StringView("chatMessageUpdate")},
};

/// Written, never read.
template<>
inline constexpr auto fields<SocketRequest> = std::tuple{
    required("event", &SocketRequest::event),
    required("data", &SocketRequest::data),
};
template<typename T>
inline constexpr auto fields<SocketResponse<T>> = std::tuple{
    required("event", &SocketResponse<T>::event),
    required("data", &SocketResponse<T>::data),
};

} // namespace vynlex
