#include "sandbox/server/CertificateAuthority.h"

#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/fakes/Suite.h"

using sandbox::CertificateAuthority;

class CertificateAuthorityTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;

    [[nodiscard]] QString path(const char *name) const { return m_folder.filePath("authority/" + QString(name)); }

    [[nodiscard]] QByteArray content(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void write(const char *name, const QByteArray &text) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) > 0);
    }

    void make(const std::vector<std::string> &names) const
    {
        const CertificateAuthority authority(m_folder.filePath("authority").toStdString(), names);
        static_cast<void>(authority.serverContext());
    }

    static int mode(const QString &file)
    {
        struct stat status {};
        stat(file.toLocal8Bit().constData(), &status);
        return static_cast<int>(status.st_mode) & 0777;
    }

private slots:
    void cleanup() { QVERIFY(QDir(m_folder.filePath("authority")).removeRecursively()); }

    void whatWasMadeIsKeptForItsOwnerOnly()
    {
        make({"a.example.com", "*.b.example.com"});
        QCOMPARE(mode(m_folder.filePath("authority")), 0700);
        QCOMPARE(mode(path("ca.key")), 0600);
        QCOMPARE(mode(path("host.key")), 0600);
        const auto authority = content("ca.pem") + content("ca.key");
        const auto host = content("host.pem") + content("host.key");
        make({"*.b.example.com", "a.example.com"});
        QCOMPARE(content("host.pem") + content("host.key"), host);
        make({"a.example.com", "c.example.com"}); // other names: another certificate from the same authority
        QCOMPARE(content("ca.pem") + content("ca.key"), authority);
        QVERIFY(content("host.pem") != host.left(content("host.pem").size()));
    }

    void aDamagedAuthorityIsReportedAndLeftAlone()
    {
        make({"a.example.com"});
        const auto anothers = content("ca.key");
        for (const auto &[file, contents] :
             {std::pair{"ca.key", QByteArray("damaged")}, {"ca.pem", "damaged"}, {"ca.key", anothers}}) {
            cleanup();
            make({"a.example.com"});
            write(file, contents);
            try {
                make({"a.example.com"});
                QFAIL("accepted");
            } catch (const std::runtime_error &error) {
                QVERIFY2(QByteArray(error.what()).contains(file), error.what());
            }
            QCOMPARE(content(file), contents);
        }
    }

    void severalAtTheirFirstStartAgreeOnOneAuthority()
    {
        std::vector<std::thread> all;
        for (int i = 0; i < 4; ++i)
            all.emplace_back([this] { make({"a.example.com"}); });
        for (auto &one : all)
            one.join();
        const auto authority = content("ca.pem");
        make({"a.example.com"}); // throws when key and certificate are not a pair
        QCOMPARE(content("ca.pem"), authority);
    }
};

template struct vynlex::InSuite<CertificateAuthorityTest>;

#include "tst_certificateauthority.moc"
