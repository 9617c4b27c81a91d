#include "SandboxProcess.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpSocket>

#include <csignal>

using namespace Qt::StringLiterals;

namespace examples {
namespace {

constexpr int startUpLimitMs = 30'000; // the first start makes the certificate authority and loads all models

} // namespace

tl::expected<void, QString> useSandbox(const SandboxAddress &address)
{
    const QList<QSslCertificate> authority = QSslCertificate::fromPath(address.authorityFile);
    if (authority.isEmpty() || address.proxyPort == 0)
        return tl::unexpected(u"No sandbox can be reached by proxy port %1 and authority \"%2\"."_s.arg(
            QString::number(address.proxyPort), address.authorityFile));
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(authority);
    QSslConfiguration::setDefaultConfiguration(configuration);
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, address.proxyPort));
    return {};
}

QString SandboxProcess::defaultProgram()
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(u"../../sandbox/confera-sandbox"_s);
}

tl::expected<std::unique_ptr<SandboxProcess>, QString> SandboxProcess::start(const QString &program,
                                                                             const QString &dataFolder)
{
    std::unique_ptr<SandboxProcess> sandbox(new SandboxProcess);
    sandbox->m_program = program;
    sandbox->m_arguments = {u"--stop-with-parent"_s}; // its standard input ends when this process does
    if (!dataFolder.isEmpty())
        sandbox->m_arguments << u"--data"_s << dataFolder;
    return sandbox->launch({}).map([&] { return std::move(sandbox); });
}

tl::expected<void, QString> SandboxProcess::launch(const QStringList &arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(m_program, m_arguments + arguments);
    if (!m_process.waitForStarted())
        return tl::unexpected(u"The sandbox does not start (%1: %2)."_s.arg(m_program, m_process.errorString()));
    return readStartUpLine();
}

SandboxProcess::~SandboxProcess()
{
    m_process.terminate();
    if (!m_process.waitForFinished(5000))
        m_process.kill();
    m_process.waitForFinished(1000);
}

vynlex::VLTranslationConfig SandboxProcess::configuration()
{
    return {u"sandbox-speech-key"_s, u"centralindia"_s, u"sandbox-translator-key"_s};
}

tl::expected<void, QString> SandboxProcess::delayNext(const QString &path, std::chrono::milliseconds delay) const
{
    return playOnce({{"path", path}, {"kind", "latency"}, {"ms", static_cast<qint64>(delay.count())}});
}

tl::expected<void, QString> SandboxProcess::answerNext(const QString &path, int httpStatus,
                                                       const QByteArray &body) const
{
    return playOnce({{"path", path}, {"kind", "status"}, {"status", httpStatus}, {"body", QString::fromUtf8(body)}});
}

tl::expected<void, QString> SandboxProcess::playOnce(QJsonObject fault) const
{
    fault.insert("times"_L1, 1);
    return addFaults({fault});
}

tl::expected<void, QString> SandboxProcess::addFaults(const QJsonArray &faults) const
{
    const QByteArray answer = control("POST /faults", QJsonDocument(faults).toJson(QJsonDocument::Compact));
    if (QJsonDocument::fromJson(answer).isArray()) // of the faults that are switched on
        return {};
    return tl::unexpected(u"The sandbox plays no such fault: %1"_s.arg(QString::fromUtf8(answer)));
}

void SandboxProcess::clearFaults() const
{
    control("DELETE /faults");
}

void SandboxProcess::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

tl::expected<void, QString> SandboxProcess::restart()
{
    return launch({u"--port"_s, QString::number(m_tlsPort), u"--proxy-port"_s, QString::number(m_address.proxyPort),
                   u"--control-port"_s, QString::number(m_controlPort)});
}

void SandboxProcess::setFrozen(bool frozen) const
{
    ::kill(static_cast<pid_t>(m_process.processId()), frozen ? SIGSTOP : SIGCONT);
}

std::vector<SandboxProcess::Socket> SandboxProcess::sockets() const
{
    const auto sum = [](const QJsonValue &counts) {
        qint64 all = 0;
        for (const auto count : counts.toObject())
            all += count.toInteger();
        return all;
    };
    std::vector<Socket> found;
    for (const auto one : QJsonDocument::fromJson(control("GET /sessions")).array())
        found.push_back({one["userId"_L1].toString(), sum(one["pushed"_L1]), sum(one["acknowledged"_L1]),
                         one["problems"_L1].toInteger()});
    return found;
}

QByteArray SandboxProcess::control(const QByteArray &requestLine, const QByteArray &body) const
{
    QTcpSocket socket;
    socket.setProxy(QNetworkProxy::NoProxy);
    socket.connectToHost(u"127.0.0.1"_s, m_controlPort);
    socket.write(requestLine +
                 " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\nContent-Type: application/json\r\n"
                 "Content-Length: " +
                 QByteArray::number(body.size()) + "\r\n\r\n" + body);
    socket.waitForDisconnected(5000);
    const QByteArray answer = socket.readAll();
    const auto end = answer.indexOf("\r\n\r\n");
    return end < 0 ? QByteArray() : answer.mid(end + 4);
}

tl::expected<void, QString> SandboxProcess::readStartUpLine()
{
    const QDeadlineTimer deadline(startUpLimitMs);
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return tl::unexpected(u"The sandbox ended or gave no sign of life at its start."_s);
    }
    const QJsonObject line = QJsonDocument::fromJson(m_process.readLine()).object();
    m_tlsPort = static_cast<quint16>(line["tls"_L1].toInt());
    m_controlPort = static_cast<quint16>(line["control"_L1].toInt());
    m_address = {static_cast<quint16>(line["proxy"_L1].toInt()), line["ca"_L1].toString()};
    return useSandbox(m_address);
}

} // namespace examples
