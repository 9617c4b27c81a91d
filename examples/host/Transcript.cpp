#include "Transcript.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace host {

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
    QSaveFile file(QDir(folder).filePath(QStringLiteral("transcript.json")));
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(array).toJson()) >= 0 && file.commit();
}

} // namespace host
