#include "two/RemoteDevice.h"

#include <QCoreApplication>

#include "Waiting.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace host {
namespace {

/// Each of the steps of a request has a limit of its own, below `serviceLimit`; a device that has not come to an end of
/// them all by then hangs.
constexpr auto deviceLimit = 4 * serviceLimit;

} // namespace

RemoteDevice::RemoteDevice(const Person &person)
    : m_person(person)
{
}

tl::expected<std::unique_ptr<RemoteDevice>, QString>
RemoteDevice::start(const Person &person, const QStringList &arguments, const QString &logFile)
{
    std::unique_ptr<RemoteDevice> device(new RemoteDevice(person));
    QProcess &process = device->m_process;
    if (logFile.isEmpty())
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    else
        process.setStandardErrorFile(logFile);
    process.start(QCoreApplication::applicationFilePath(), arguments);
    if (!process.waitForStarted())
        return tl::unexpected(device->complaint(process.errorString()));
    return device;
}

RemoteDevice::~RemoteDevice()
{
    m_process.closeWriteChannel(); // for the device, the end
    if (!m_process.waitForFinished(5000))
        m_process.kill();
    m_process.waitForFinished(1000);
}

QString RemoteDevice::complaint(const QString &what) const
{
    return u"%1's device: %2"_s.arg(m_person.user.name, what);
}

tl::expected<void, QString> RemoteDevice::ending() const
{
    if (m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == EXIT_SUCCESS)
        return {};
    return tl::unexpected(complaint(m_process.exitStatus() == QProcess::CrashExit
                                        ? u"it crashed."_s
                                        : u"it ended with exit code %1."_s.arg(m_process.exitCode())));
}

tl::expected<QByteArray, QString> RemoteDevice::exchange(const QByteArray &request)
{
    m_process.write(request + '\n');
    const bool ready = waitUntil([this] { return m_process.canReadLine() || hasEnded(); }, deviceLimit);
    if (!ready)
        return tl::unexpected(complaint(u"it gives no answer."_s));
    if (!m_process.canReadLine())
        return tl::unexpected(ending() ? complaint(u"it has been closed."_s) : ending().error());
    const QByteArray answer = m_process.readLine();
    if (const auto problem = decodeJson<Problem>(answer); problem && problem->problem)
        return tl::unexpected(complaint(*problem->problem));
    return answer;
}

} // namespace host
