#include <QDir>
#include <QTest>

#include "tests/fuzz/FuzzTargets.h"
#include "tests/fuzz/Property.h"

using namespace vynlex::fuzz;

/// Whatever fuzzing has found worth keeping, damaged messages that once were mistaken among it, goes through its
/// target.
class TestFuzzCorpus : public QObject {
    Q_OBJECT

private slots:
    void whatMustHoldHolds_data()
    {
        QTest::addColumn<int>("target");
        for (std::size_t i = 0; i < targets.size(); ++i)
            QTest::newRow(targets[i].name) << static_cast<int>(i);
    }
    void whatMustHoldHolds()
    {
        QFETCH(const int, target);
        const Target &tried = targets[static_cast<std::size_t>(target)];
        const QDir folder(QStringLiteral(VYNLEX_FUZZ_CORPUS "/") + QLatin1String(tried.name));
        const QStringList names = folder.entryList(QDir::Files);
        QVERIFY2(!names.isEmpty(), qPrintable(folder.path()));
        for (const QString &name : names) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            try {
                tried.run(file.readAll());
            } catch (const Broken &broken) {
                QFAIL(qPrintable(file.fileName() + QLatin1String(": does not hold: ") + QLatin1String(broken.what())));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestFuzzCorpus)
#include "tst_fuzz_corpus.moc"
