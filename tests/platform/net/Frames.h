#pragma once

#include <QByteArray>

#include <cstdint>

#include "tests/platform/net/LocalServer.h"

namespace vynlex {

enum Opcode { Continuation = 0, TextFrame = 1, BinaryFrame = 2, CloseFrame = 8, PingFrame = 9, PongFrame = 10 };

struct Frame {
    int opcode = -1; ///< -1: the connection ended.
    bool masked = false;
    QByteArray payload;
};

/// As a server sends it. The first byte's reserved bits come with `opcode`.
QByteArray frame(int opcode, const QByteArray &payload, bool last = true);
QByteArray closeFrame(std::uint16_t code, const QByteArray &reason = {});
Frame readFrame(Peer &peer);

/// What accepts the upgrade that the request's head asks for.
QByteArray acceptKey(const QByteArray &head);

/// Reads the request and accepts it; returns the request's head.
QByteArray upgrade(Peer &peer);

/// Reads until the client ends the connection; ending it with unread bytes would reset it.
void drain(Peer &peer);

} // namespace vynlex
