#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

#include <memory>
#include <tl/expected.hpp>

#include "Person.h"
#include "platform/json/Record.h"
#include "two/DeviceProtocol.h"

namespace host {

/// A person's device, which is a process of its own: the kit has one signed-in user per process.
///
/// Main thread. The process ends with this object, and by itself when this process dies.
class RemoteDevice {
public:
    /// Starts this program once more. What it writes on its console goes to `logFile`, or, unless that is given, to our
    /// standard error. An error is one clear line.
    static tl::expected<std::unique_ptr<RemoteDevice>, QString>
    start(const Person &person, const QStringList &arguments, const QString &logFile);
    ~RemoteDevice();
    RemoteDevice(const RemoteDevice &) = delete;
    RemoteDevice &operator=(const RemoteDevice &) = delete;

    /// Has the device do something and waits for the answer. Fails with one clear line when it cannot, when the process
    /// has ended, or when nothing comes in good time.
    template<typename Answer, typename Request>
    tl::expected<Answer, QString> ask(const QString &what, const Request &request)
    {
        QJsonObject object = vynlex::toJson(request).toObject();
        object.insert(QStringLiteral("do"), what);
        return exchange(QJsonDocument(object).toJson(QJsonDocument::Compact)).and_then([this](const QByteArray &line) {
            return vynlex::decodeJson<Answer>(line).map_error(
                [this](const vynlex::RecordError &error) { return complaint(error.message()); });
        });
    }

    [[nodiscard]] bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }
    /// For a process that has ended: that it did so well, or one clear line.
    [[nodiscard]] tl::expected<void, QString> ending() const;

private:
    explicit RemoteDevice(const Person &person);
    [[nodiscard]] QString complaint(const QString &what) const;
    tl::expected<QByteArray, QString> exchange(const QByteArray &request);

    const Person m_person;
    QProcess m_process;
};

} // namespace host
