#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <sys/wait.h>
#include <unistd.h>

#include "platform/storage/QSettingsUserDefaults.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/MemoryUserDefaults.h"
#include "tests/fakes/Rows.h"

using namespace vynlex;

class TestUserDefaults : public QObject {
    Q_OBJECT

private slots:
    void whatWasSetIsFound_data() { addRows<bool>({{"fake", true}, {"settings", false}}); }
    void whatWasSetIsFound()
    {
        const auto [isFake] = currentRow<bool>();
        const QTemporaryDir folder;
        MemoryUserDefaults fake;
        QSettingsUserDefaults settings(folder.filePath("defaults.ini"));
        UserDefaults *const defaults = isFake ? static_cast<UserDefaults *>(&fake) : &settings;
        QCOMPARE(defaults->string("language"), std::nullopt);
        defaults->setString("language", "hi");
        defaults->setString("other", QStringLiteral("नमस्ते, \"a=b;c\"\n"));
        QCOMPARE(defaults->string("language"), "hi");
        QCOMPARE(defaults->string("other"), QStringLiteral("नमस्ते, \"a=b;c\"\n"));
        defaults->setString("language", "");
        QCOMPARE(defaults->string("language"), "");
    }

    void aValueSurvivesAKill()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("defaults.ini");
        const pid_t child = fork();
        if (child == 0) {
            QSettingsUserDefaults(file).setString("language", "gu");
            kill(getpid(), SIGKILL);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(QSettingsUserDefaults(file).string("language"), "gu");
    }

    void aValueThatIsNotTextCountsAsAbsent()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath("defaults.ini");
        QSettings settings(file, QSettings::IniFormat);
        settings.setValue("bytes", QByteArray("\x01\x02"));
        settings.setValue("list", QStringList{"a", "b"});
        settings.sync();
        const QSettingsUserDefaults defaults(file);
        QCOMPARE(defaults.string("bytes"), std::nullopt);
        QCOMPARE(defaults.string("list"), std::nullopt);
    }

    void theHostsOwnNamesDecideThePlace()
    {
        const QTemporaryDir home;
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.path());
        QCoreApplication::setOrganizationName("Example Works");
        QCoreApplication::setApplicationName("Host");
        QSettingsUserDefaults().setString("language", "te");
        QVERIFY(QDir(home.filePath("Example Works")).entryList(QDir::Files).join(' ').contains("Host"));
        QCOMPARE(QSettingsUserDefaults().string("language"), "te");
    }

    void aStoreThatCannotBeWrittenIsSaidAndTheValueIsKept()
    {
        const QTemporaryDir folder;
        QFile file(folder.filePath("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QSettingsUserDefaults defaults(folder.filePath("file/defaults.ini")); // below a file, so not even for root
        const CapturedConsole console;
        defaults.setString("language", "bn");
        QCOMPARE(console.lines().size(), 1);
        QVERIFY(console.lines().constFirst().startsWith("User defaults cannot be written: "));
        QCOMPARE(defaults.string("language"), "bn");
    }
};

QTEST_GUILESS_MAIN(TestUserDefaults)
#include "tst_user_defaults.moc"
