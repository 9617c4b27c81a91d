#include "tests/platform/net/Frames.h"

#include <QCryptographicHash>
#include <QtEndian>

namespace vynlex {
namespace {

template<typename Number> QByteArray bigEndian(Number number)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToBigEndian(number, bytes.data());
    return bytes;
}

} // namespace

QByteArray frame(int opcode, const QByteArray &payload, bool last)
{
    QByteArray bytes(1, static_cast<char>((last ? 0x80 : 0) | opcode));
    if (payload.size() < 126)
        bytes += static_cast<char>(payload.size());
    else if (payload.size() < 65'536)
        bytes += static_cast<char>(126) + bigEndian(static_cast<quint16>(payload.size()));
    else
        bytes += static_cast<char>(127) + bigEndian(static_cast<quint64>(payload.size()));
    return bytes + payload;
}

QByteArray closeFrame(std::uint16_t code, const QByteArray &reason)
{
    return frame(CloseFrame, bigEndian(code) + reason);
}

Frame readFrame(Peer &peer)
{
    const QByteArray head = peer.read(2);
    if (head.size() < 2)
        return {};
    Frame result{head[0] & 0x0f, (head[1] & 0x80) != 0, {}};
    quint64 size = head[1] & 0x7f;
    if (size == 126)
        size = qFromBigEndian<quint16>(peer.read(2).constData());
    else if (size == 127)
        size = qFromBigEndian<quint64>(peer.read(8).constData());
    const QByteArray mask = result.masked ? peer.read(4) : QByteArray(4, '\0');
    result.payload = peer.read(static_cast<qsizetype>(size));
    for (qsizetype i = 0; i < result.payload.size(); ++i)
        result.payload[i] = static_cast<char>(result.payload[i] ^ mask[i % 4]);
    return result;
}

QByteArray acceptKey(const QByteArray &head)
{
    const QByteArray name = "Sec-WebSocket-Key: ";
    const qsizetype key = head.indexOf(name) + name.size();
    const QByteArray sum = QCryptographicHash::hash(head.mid(key, head.indexOf("\r\n", key) - key) +
                                                        "258EAFA5-E914-47DA-95CA-C5AB0DC85B11",
                                                    QCryptographicHash::Sha1);
    return sum.toBase64();
}

QByteArray upgrade(Peer &peer)
{
    const QByteArray head = peer.readHead();
    peer.write("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
               "Sec-WebSocket-Accept: " +
               acceptKey(head) + "\r\nX-Served-By: test\r\n\r\n");
    return head;
}

void drain(Peer &peer)
{
    while (!peer.read(1).isEmpty()) {
    }
}

} // namespace vynlex
