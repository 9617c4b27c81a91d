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
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    }

    void make(const std::vector<std::string> &names) const
    {
        const CertificateAuthority authority(m_folder.filePath("authority").toStdString(), names);
        static_cast<void>(authority.serverContext());
    }

    static mode_t mode(const QString &file)
    {
        struct stat status {};
        stat(file.toLocal8Bit().constData(), &status);
        return status.st_mode & 0777;
    }

private slots:
    void cleanup() { QVERIFY(QDir(m_folder.filePath("authority")).removeRecursively()); }

    void whatWasMadeIsKeptForItsOwnerOnly()
    {
        const auto all = [this] {
            return content("ca.pem") + content("ca.key") + content("host.pem") + content("host.key");
        };
        make({"a.example.com", "*.b.example.com"});
        QCOMPARE(mode(m_folder.filePath("authority")), mode_t(0700));
        QCOMPARE(mode(path("ca.key")), mode_t(0600));
        QCOMPARE(mode(path("host.key")), mode_t(0600));
        const auto before = all();
        make({"*.b.example.com", "a.example.com"});
        QCOMPARE(all(), before);

        const auto authority = content("ca.pem");
        const auto host = content("host.pem");
        make({"a.example.com", "c.example.com"}); // other names: another certificate from the same authority
        QCOMPARE(content("ca.pem"), authority);
        QVERIFY(content("host.pem") != host);
    }

    void aDamagedAuthorityIsReportedAndLeftAlone()
    {
        make({"a.example.com"});
        const auto key = content("ca.key");
        for (const char *file : {"ca.key", "ca.pem"}) {
            cleanup();
            make({"a.example.com"});
            write(file, "damaged");
            try {
                make({"a.example.com"});
                QFAIL("accepted");
            } catch (const std::runtime_error &error) {
                QVERIFY2(QByteArray(error.what()).contains(file), error.what());
            }
            QCOMPARE(content(file), QByteArray("damaged"));
        }
        cleanup();
        make({"a.example.com"});
        write("ca.key", key); // of another authority
        QVERIFY_EXCEPTION_THROWN(make({"a.example.com"}), std::runtime_error);
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
