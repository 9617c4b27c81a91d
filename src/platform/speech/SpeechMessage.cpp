#include "platform/speech/SpeechMessage.h"

#include <QUuid>

namespace vynlex {
namespace {

QByteArray headerBlock(const SpeechMessage &message, const QDateTime &time)
{
    QByteArray block = "Path: " + message.path + "\r\nX-RequestId: " + message.requestId +
                       "\r\nX-Timestamp: " + time.toUTC().toString(Qt::ISODateWithMs).toLatin1() + "\r\n";
    if (!message.contentType.isEmpty())
        block += "Content-Type: " + message.contentType + "\r\n";
    return block;
}

std::optional<SpeechMessage> messageOf(const QByteArray &block, const QByteArray &body)
{
    SpeechMessage message;
    for (const QByteArray &line : block.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon < 0)
            continue;
        const QByteArray name = line.left(colon).trimmed().toLower();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (name == "path")
            message.path = value;
        else if (name == "x-requestid")
            message.requestId = value;
        else if (name == "content-type")
            message.contentType = value;
    }
    if (message.path.isEmpty())
        return std::nullopt;
    message.body = body;
    return message;
}

} // namespace

QByteArray encodeText(const SpeechMessage &message, const QDateTime &time)
{
    return headerBlock(message, time) + "\r\n" + message.body;
}

QByteArray encodeBinary(const SpeechMessage &message, const QDateTime &time)
{
    const QByteArray block = headerBlock(message, time);
    QByteArray data;
    data.reserve(2 + block.size() + message.body.size());
    data += static_cast<char>(block.size() >> 8);
    data += static_cast<char>(block.size() & 0xff);
    return data += block + message.body;
}

std::optional<SpeechMessage> decodeText(const QByteArray &utf8)
{
    // Only the first empty line divides: bodies may hold others.
    static constexpr char emptyLine[] = "\r\n\r\n";
    const qsizetype end = utf8.indexOf(emptyLine);
    if (end < 0)
        return std::nullopt;
    return messageOf(utf8.left(end), utf8.mid(end + 4));
}

std::optional<SpeechMessage> decodeBinary(const QByteArray &data)
{
    if (data.size() < 2)
        return std::nullopt;
    const qsizetype length = static_cast<unsigned char>(data[0]) << 8 | static_cast<unsigned char>(data[1]);
    if (length > data.size() - 2)
        return std::nullopt;
    return messageOf(data.mid(2, length), data.mid(2 + length));
}

QByteArray makeSpeechId()
{
    return QUuid::createUuid().toByteArray(QUuid::Id128);
}

} // namespace vynlex
