#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include "tests/fakes/FakeSocketWorker.h"

namespace vynlex {

/// A message of the client, read as strictly as the protocol allows. `error` says what is wrong with it.
struct WireMessage {
    QString path;
    QByteArray requestId;
    QByteArray contentType;
    QByteArray body;
    QString error;

    [[nodiscard]] QJsonObject json() const;
};

WireMessage readWire(const FakeSocketMessage &sent);

/// What the service says in the turn `requestId`.
QByteArray serviceText(const char *path, const QByteArray &requestId, const QByteArray &body = "{}");
QByteArray serviceAudio(const QByteArray &requestId, const QByteArray &sound);

} // namespace vynlex
