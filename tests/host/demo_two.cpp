#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <csignal>
#include <cstdlib>

#include "tests/fakes/Patience.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray commandLine(qint64 process)
{
    return contents(u"/proc/%1/cmdline"_s.arg(process));
}

/// The sandbox and the devices that a demo has started.
QList<qint64> childrenOf(const QProcess &demo)
{
    QList<qint64> children;
    const QByteArray ids = contents(u"/proc/%1/task/%1/children"_s.arg(demo.processId()));
    for (const QByteArray &id : ids.simplified().split(' ')) {
        if (!id.isEmpty())
            children.append(id.toLongLong());
    }
    return children;
}

bool areGone(const QList<qint64> &processes)
{
    return eventually(
        [&] { return std::ranges::all_of(processes, [](qint64 process) { return commandLine(process).isEmpty(); }); });
}

} // namespace

/// Two people with a device each, as `scripts/demo --two --headless` plays them: real processes on a real sandbox.
class TestTwoDevices : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QProcess> m_demo;

    [[nodiscard]] QString path(const QJsonValue &name) const { return m_folder->filePath(name.toString()); }

    /// Waits for the sandbox and the devices.
    [[nodiscard]] QList<qint64> childrenOnceAllAreThere() const
    {
        return eventually([this] { return childrenOf(*m_demo).size() == 3; }) ? childrenOf(*m_demo) : QList<qint64>();
    }

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_demo = std::make_unique<QProcess>();
        m_demo->start(HOST_PROGRAM, {u"--two"_s, u"--headless"_s, u"--out"_s, m_folder->path()});
    }
    void cleanup() { m_demo.reset(); }

    void eachHearsWhatTheOtherSays()
    {
        TRY_COMPARE(m_demo->state(), QProcess::NotRunning);
        QVERIFY2(m_demo->exitCode() == EXIT_SUCCESS, m_demo->readAllStandardError());
        const auto messages = QJsonDocument::fromJson(contents(path(u"transcript.json"_s))).array();
        QCOMPARE(messages.size(), 2);
        QCOMPARE(messages[0]["wireText"_L1], u"hi-IN## क्या आप मुझे सुन सकते हैं?"_s);
        QCOMPARE(messages[1]["wireText"_L1], u"en-US## I can hear you clearly."_s);
        for (const auto message : messages) {
            const QByteArray heard = contents(path(message["heard"_L1])).mid(44); // behind the header of a WAV file
            int peak = 0;
            for (qsizetype i = 0; i + 1 < heard.size(); i += 2)
                peak = std::max(peak, std::abs(int{qFromLittleEndian<qint16>(heard.constData() + i)}));
            QVERIFY(peak > 3000);
            QCOMPARE(message["pictures"_L1].toArray().size(), 8);
            for (const auto picture : message["pictures"_L1].toArray())
                QVERIFY(contents(path(picture)).size() > 10'000);
        }
    }

    void theEndOfADeviceIsTheEndOfAll()
    {
        const auto children = childrenOnceAllAreThere();
        QCOMPARE(children.size(), 3);
        const auto isRohans = [](qint64 child) { return commandLine(child).contains("rohan"); };
        TRY_VERIFY(std::ranges::any_of(children, isRohans)); // at first it has our demo's command line
        const auto device = std::ranges::find_if(children, isRohans);
        ::kill(static_cast<pid_t>(*device), SIGKILL);
        TRY_COMPARE(m_demo->state(), QProcess::NotRunning);
        QCOMPARE(m_demo->exitCode(), EXIT_FAILURE);
        QVERIFY(m_demo->readAllStandardError().endsWith("confera-host: Rohan Mehta's device: it crashed.\n"));
        QVERIFY(areGone(children));
    }

    void nobodyOutlivesTheOneWhoDirects()
    {
        const auto children = childrenOnceAllAreThere();
        QCOMPARE(children.size(), 3);
        m_demo->kill();
        TRY_COMPARE(m_demo->state(), QProcess::NotRunning);
        QVERIFY(areGone(children));
    }
};

QTEST_GUILESS_MAIN(TestTwoDevices)
#include "demo_two.moc"
