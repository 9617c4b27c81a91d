#include "tests/platform/speech/WireMessage.h"

#include <QJsonDocument>
#include <QRegularExpression>

namespace vynlex {

QJsonObject WireMessage::json() const
{
    return QJsonDocument::fromJson(body).object();
}

WireMessage readWire(const FakeSocketMessage &sent)
{
    WireMessage message;
    QByteArray block;
    if (sent.kind == FakeSocketMessage::Kind::Text) {
        const qsizetype end = sent.data.indexOf("\r\n\r\n");
        if (end < 0)
            return {{}, {}, {}, {}, "no empty line"};
        block = sent.data.left(end + 2);
        message.body = sent.data.mid(end + 4);
    } else {
        const auto byte = [&](int index) { return static_cast<unsigned char>(sent.data.at(index)); };
        const qsizetype length = byte(0) * 256 + byte(1);
        block = sent.data.mid(2, length);
        message.body = sent.data.mid(2 + length);
        if (message.body.size() > 8192)
            message.error = "too much audio in one message";
    }
    static const QRegularExpression shape(
        "\\APath: ([a-z.]+)\r\nX-RequestId: ([0-9a-f]{32})\r\n"
        "X-Timestamp: \\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z\r\n(?:Content-Type: ([a-z/+-]+)\r\n)?\\z");
    const auto match = shape.match(QString::fromLatin1(block));
    if (!match.hasMatch())
        message.error = "headers: " + QString::fromLatin1(block);
    message.path = match.captured(1);
    message.requestId = match.captured(2).toLatin1();
    message.contentType = match.captured(3).toLatin1();
    return message;
}

QByteArray serviceText(const char *path, const QByteArray &requestId, const QByteArray &body)
{
    return QByteArray("X-RequestId:") + requestId +
           "\r\nContent-Type: application/json; charset=utf-8\r\nPath:" + path + "\r\n\r\n" + body;
}

QByteArray serviceAudio(const QByteArray &requestId, const QByteArray &sound)
{
    const QByteArray block = "X-RequestId:" + requestId +
                             "\r\nContent-Type:audio/x-wav\r\nX-StreamId:297cfdc811c04324a31de604e03e8fdf\r\n"
                             "Path:audio\r\n";
    QByteArray data;
    data += static_cast<char>(block.size() / 256);
    data += static_cast<char>(block.size() % 256);
    return data + block + sound;
}

} // namespace vynlex
