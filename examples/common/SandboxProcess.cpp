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

using namespace Qt::StringLiterals;

namespace examples {
namespace {

constexpr int startUpLimitMs = 30'000; // the first start makes the certificate authority and loads all models

void trust(const QList<QSslCertificate> &authority)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.addCaCertificates(authority);
    QSslConfiguration::setDefaultConfiguration(configuration);
}

} // namespace

QString SandboxProcess::defaultProgram()
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(u"../../sandbox/confera-sandbox"_s);
}

tl::expected<std::unique_ptr<SandboxProcess>, QString> SandboxProcess::start(const QString &program)
{
    std::unique_ptr<SandboxProcess> sandbox(new SandboxProcess);
    QProcess &process = sandbox->m_process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, {u"--stop-with-parent"_s}); // its standard input ends when this process does
    if (!process.waitForStarted())
        return tl::unexpected(u"The sandbox does not start (%1: %2)."_s.arg(program, process.errorString()));
    return sandbox->readStartUpLine().map([&] { return std::move(sandbox); });
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

void SandboxProcess::delayNextTranslation(std::chrono::milliseconds delay) const
{
    const QByteArray faults =
        QJsonDocument(
            QJsonArray{QJsonObject{
                {"path", "/translate"}, {"kind", "latency"}, {"ms", static_cast<qint64>(delay.count())}, {"times", 1}}})
            .toJson(QJsonDocument::Compact);
    QTcpSocket control;
    control.setProxy(QNetworkProxy::NoProxy);
    control.connectToHost(u"127.0.0.1"_s, m_controlPort);
    control.write("POST /faults HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\nContent-Type: application/json\r\n"
                  "Content-Length: " +
                  QByteArray::number(faults.size()) + "\r\n\r\n" + faults);
    control.waitForDisconnected(5000); // the answer has come, or a picture will show no wait
}

tl::expected<void, QString> SandboxProcess::readStartUpLine()
{
    const QDeadlineTimer deadline(startUpLimitMs);
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return tl::unexpected(u"The sandbox ended or gave no sign of life at its start."_s);
    }
    const QJsonObject line = QJsonDocument::fromJson(m_process.readLine()).object();
    const QString authorityFile = line["ca"_L1].toString();
    const QList<QSslCertificate> authority = QSslCertificate::fromPath(authorityFile);
    m_controlPort = static_cast<quint16>(line["control"_L1].toInt());
    const int proxyPort = line["proxy"_L1].toInt();
    if (authority.isEmpty() || proxyPort == 0)
        return tl::unexpected(u"The sandbox's start-up line cannot be used."_s);

    trust(authority);
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, static_cast<quint16>(proxyPort)));
    return {};
}

} // namespace examples
