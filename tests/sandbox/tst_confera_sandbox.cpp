#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"

using namespace vynlex;

/// The program itself, from its command line to its end.
class ConferaSandboxTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

    void start(QProcess &process, QStringList arguments) const
    {
        arguments << "--data" << m_folder.filePath("new/folder");
        process.start(SANDBOX_PROGRAM, arguments);
    }

    static QJsonObject readyLine(QProcess &process)
    {
        while (!process.canReadLine() && process.waitForReadyRead(patienceMs))
            continue;
        return QJsonDocument::fromJson(process.readLine()).object();
    }

    static QByteArray curl(const QStringList &arguments)
    {
        QProcess process;
        process.start("curl", QStringList{"--silent", "--show-error", "--max-time", "60"} + arguments);
        process.waitForFinished(patienceMs);
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
        QVERIFY(process.waitForFinished(patienceMs));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(process.readAllStandardError(), "");
    }

    void itStopsWithTheProcessThatStartedIt()
    {
        QProcess process;
        start(process, {"--stop-with-parent"});
        QVERIFY(!readyLine(process).isEmpty());
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished(patienceMs));
        QCOMPARE(process.exitCode(), 0);
    }

    void aWrongCommandLineIsExplainedInOneLine_data()
    {
        addRows<QStringList, int, QByteArray>({
            {"unknown option", QStringList{"--prot", "1"}, 2, "'--prot'"},
            {"no port", QStringList{"--port", "70000"}, 2, "70000"},
            {"empty value", QStringList{"--speech-key="}, 2, "--speech-key"},
            {"no phrasebook", QStringList{"--phrasebook", "/no/such/book.tsv"}, 1, "book.tsv"},
        });
    }
    void aWrongCommandLineIsExplainedInOneLine()
    {
        const auto [arguments, exitCode, reason] = currentRow<QStringList, int, QByteArray>();
        QProcess process;
        start(process, arguments);
        QVERIFY(process.waitForFinished(patienceMs));
        QCOMPARE(process.exitCode(), exitCode);
        QCOMPARE(process.readAllStandardOutput(), "");
        const auto error = process.readAllStandardError();
        QCOMPARE(error.count('\n'), 1);
        QVERIFY2(error.contains(reason), error.constData());
    }
};

QTEST_GUILESS_MAIN(ConferaSandboxTest)
#include "tst_confera_sandbox.moc"
