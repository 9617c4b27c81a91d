#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>

#include "tests/fakes/Patience.h"

namespace {

constexpr int limitMs = vynlex::patienceMs;

QByteArray content(const QString &file)
{
    QFile f(file);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

/// The program itself, from its command line to its end.
class ConferaSandboxTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

    void start(QProcess &process, QStringList arguments) const
    {
        arguments << "--data" << m_folder.path();
        process.start(SANDBOX_PROGRAM, arguments);
    }

    static QJsonObject readyLine(QProcess &process)
    {
        while (!process.canReadLine() && process.waitForReadyRead(limitMs))
            continue;
        return QJsonDocument::fromJson(process.readLine()).object();
    }

    static QByteArray curl(const QStringList &arguments)
    {
        QProcess process;
        process.start("curl", QStringList{"--silent", "--show-error", "--max-time", "60"} + arguments);
        process.waitForFinished(limitMs);
        return process.readAllStandardOutput() + process.readAllStandardError();
    }

private slots:
    void anyClientTranslatesThroughTheProxy()
    {
        QProcess process;
        start(process, {"--translator-key", "mine", "--translator-region", "westindia"});
        const auto ready = readyLine(process);
        QCOMPARE(ready["pid"].toInteger(), process.processId());
        QCOMPARE(ready["keys"].toObject(), (QJsonObject{{"speech", "sandbox-speech-key"}})); // not the one given

        const QStringList request{"--proxy",   QString("http://127.0.0.1:%1").arg(ready["proxy"].toInt()),
                                  "--cacert",  ready["ca"].toString(),
                                  "--header",  "Ocp-Apim-Subscription-Region: westindia",
                                  "--header",  "Content-Type: application/json",
                                  "--data",    R"([{"Text":"good morning"}])",
                                  "--noproxy", ""};
        const QString url = "https://api.cognitive.microsofttranslator.com/translate?api-version=3.0&to=hi";
        const auto answer = curl(request + QStringList{"--header", "Ocp-Apim-Subscription-Key: mine", url});
        QVERIFY2(answer.contains("सुप्रभात"), answer.constData());
        const auto refused =
            curl(request + QStringList{"--header", "Ocp-Apim-Subscription-Key: sandbox-translator-key", url});
        QVERIFY2(refused.contains("401000"), refused.constData());
        const auto unknown = curl(request + QStringList{"https://bank.example.com/"});
        QVERIFY2(unknown.contains("502"), unknown.constData());

        const auto log = curl({QString("http://localhost:%1/requests").arg(ready["control"].toInt())});
        QVERIFY2(log.contains("/translate"), log.constData());
        QVERIFY(!log.contains("mine"));

        process.terminate();
        QVERIFY(process.waitForFinished(limitMs));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(process.readAllStandardError(), "");
    }

    void aRestartKeepsTheAuthority()
    {
        QByteArray authority;
        for (int i = 0; i < 2; ++i) {
            QProcess process;
            start(process, {});
            const auto file = readyLine(process)["ca"].toString();
            QVERIFY(file.startsWith(m_folder.path()));
            QVERIFY(i == 0 || content(file) == authority);
            authority = content(file);
            QVERIFY(authority.contains("BEGIN CERTIFICATE"));
            kill(static_cast<pid_t>(process.processId()), SIGINT);
            QVERIFY(process.waitForFinished(limitMs));
            QCOMPARE(process.exitCode(), 0);
        }
    }

    void itStopsWithTheProcessThatStartedIt()
    {
        QProcess process;
        start(process, {"--stop-with-parent"});
        QVERIFY(!readyLine(process).isEmpty());
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished(limitMs));
        QCOMPARE(process.exitCode(), 0);
    }

    void aWrongCommandLineIsExplainedInOneLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("unknown option") << QStringList{"--prot", "1"} << 2 << QByteArray("'--prot'");
        QTest::newRow("a word") << QStringList{"start"} << 2 << QByteArray("'start'");
        QTest::newRow("no port") << QStringList{"--port", "70000"} << 2 << QByteArray("70000");
        QTest::newRow("half a number") << QStringList{"--proxy-port=80a"} << 2 << QByteArray("80a");
        QTest::newRow("empty value") << QStringList{"--speech-key="} << 2 << QByteArray("--speech-key");
        QTest::newRow("no time at all") << QStringList{"--token-lifetime", "0"} << 2 << QByteArray("--token-lifetime");
        QTest::newRow("no phrasebook") << QStringList{"--phrasebook", "/no/such/book.tsv"} << 1
                                       << QByteArray("book.tsv");
    }
    void aWrongCommandLineIsExplainedInOneLine()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QByteArray, reason);
        QProcess process;
        start(process, arguments);
        QVERIFY(process.waitForFinished(limitMs));
        QCOMPARE(process.exitCode(), exitCode);
        QCOMPARE(process.readAllStandardOutput(), "");
        const auto error = process.readAllStandardError();
        QCOMPARE(error.count('\n'), 1);
        QVERIFY2(error.contains(reason), error.constData());
    }

    void helpAndVersionNeedNothingElse()
    {
        for (const auto &[option, shown] :
             {std::pair("--help", "--proxy-port"), std::pair("--version", "confera-sandbox 1.")}) {
            QProcess process;
            process.start(SANDBOX_PROGRAM, {option});
            QVERIFY(process.waitForFinished(limitMs));
            QCOMPARE(process.exitCode(), 0);
            QVERIFY(process.readAllStandardOutput().contains(shown));
        }
    }
};

QTEST_GUILESS_MAIN(ConferaSandboxTest)
#include "tst_confera_sandbox.moc"
