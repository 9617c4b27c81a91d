#include "Transcript.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>

namespace host {
namespace {

bool write(const QString &folder, const QJsonArray &array)
{
    QSaveFile file(QDir(folder).filePath(QStringLiteral("transcript.json")));
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(array).toJson()) >= 0 && file.commit();
}

} // namespace

bool writeTranscript(const QString &folder, const std::vector<TurnRecord> &turns)
{
    QJsonArray array;
    for (const TurnRecord &turn : turns) {
        array.append(QJsonObject{
            {"side", turn.side == vynlex::Side::Speaker ? "speaker" : "listener"},
            {"from", turn.from},
            {"to", turn.to},
            {"recognised", turn.recognised},
            {"translated", turn.translated},
            {"spoken", turn.spoken},
            {"screenshot", turn.screenshot},
            {"recognisedMs", static_cast<qint64>(turn.recognisedMs)},
            {"translatedMs", static_cast<qint64>(turn.translatedMs)},
            {"spokenMs", static_cast<qint64>(turn.spokenMs)},
        });
    }
    return write(folder, array);
}

bool writeTranscript(const QString &folder, const std::vector<MessageRecord> &messages)
{
    QJsonArray array;
    for (const MessageRecord &message : messages) {
        array.append(QJsonObject{
            {"from", message.from},
            {"to", message.to},
            {"language", message.language},
            {"said", message.said},
            {"recognised", message.recognised},
            {"wireText", message.wireText},
            {"receivedMs", static_cast<qint64>(message.receivedMs)},
            {"voice", message.voice},
            {"heard", message.heard},
            {"heardMs", static_cast<qint64>(message.heardMs)},
            {"heardDb", std::round(message.heardDb * 10) / 10},
            {"pictures", QJsonArray::fromStringList({message.pictures.begin(), message.pictures.end()})},
        });
    }
    return write(folder, array);
}

} // namespace host
