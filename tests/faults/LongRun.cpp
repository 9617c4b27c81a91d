#include "tests/faults/LongRun.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

#include <random>

#include "EventLoop.h"
#include "sandbox/backend/Database.h"
#include "tests/faults/Experiment.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace faults {
namespace {

constexpr int roundsOfWarmingUp = 5; // Caches fill, pools start their threads.
constexpr auto calmingDown = 35s;    // Pools let go of idle threads after 30 s.

// How far the end may be from the warm start. A set-up by the host shows each contact once more, deliberately; pools of
// connections and threads breathe.
constexpr qint64 mostMoreKiB = 20 * 1024;
constexpr qint64 mostMoreThreads = 4;
constexpr qint64 mostMoreDescriptors = 40;

QTextStream &err()
{
    static QTextStream stream(stderr);
    return stream;
}

struct Resources {
    qint64 residentKiB = 0;
    qint64 threads = 0;
    qint64 descriptors = 0;

    static Resources ofThisProcess()
    {
        Resources now;
        QFile status(u"/proc/self/status"_s);
        if (!status.open(QFile::ReadOnly))
            return now;
        for (const QByteArray &line : status.readAll().split('\n')) {
            const auto number = [&] { return line.simplified().split(' ').at(1).toLongLong(); };
            if (line.startsWith("VmRSS:"))
                now.residentKiB = number();
            else if (line.startsWith("Threads:"))
                now.threads = number();
        }
        now.descriptors = static_cast<qint64>(QDir(u"/proc/self/fd"_s).count());
        return now;
    }
    [[nodiscard]] QString text() const
    {
        return u"%1 KiB, %2 threads, %3 descriptors"_s.arg(residentKiB).arg(threads).arg(descriptors);
    }
};

/// What the database says of itself.
QString integrity(const QString &file)
{
    sandbox::Database database(file.toStdString());
    for (const char *const check : {"PRAGMA integrity_check", "PRAGMA foreign_key_check"}) {
        auto query = database.prepare(check);
        if (query.step() && query.text(0) != "ok")
            return QString::fromStdString(query.text(0));
    }
    return {};
}

} // namespace

int playLongRun(std::chrono::minutes length, unsigned seed)
{
    err() << "seed " << seed << Qt::endl;
    std::mt19937 random(seed);
    Experiment experiment;
    Findings findings = experiment.prepare();
    qsizetype complaints = findings.complaints.size();
    Resources start;
    QElapsedTimer clock;
    clock.start();
    int round = 0;
    while (std::chrono::milliseconds(clock.elapsed()) < length || round <= roundsOfWarmingUp) {
        const FaultColumn &column = allColumns()[random() % allColumns().size()];
        std::vector<FaultRow *> failing = experiment.rows();
        std::erase_if(failing, [&](auto) { return !column.outage && random() % 2 == 0; });
        findings = experiment.round(column, failing);
        findings.complaints << experiment.prepareAgain().complaints;
        complaints += findings.complaints.size();
        err() << clock.elapsed() / 1000 << " s: " << column.name << " for " << failing.size() << ", "
              << Resources::ofThisProcess().text() << Qt::endl;
        for (const QString &complaint : std::as_const(findings.complaints))
            err() << "    " << complaint << Qt::endl;
        if (++round == roundsOfWarmingUp)
            start = Resources::ofThisProcess();
    }
    examples::letPass(calmingDown);
    const Resources end = Resources::ofThisProcess();
    experiment.laboratory().sandbox().kill();
    const QString damage = integrity(experiment.laboratory().databaseFile());
    const bool isAsBefore = end.residentKiB - start.residentKiB <= mostMoreKiB &&
                            end.threads - start.threads <= mostMoreThreads &&
                            end.descriptors - start.descriptors <= mostMoreDescriptors;
    err() << round << " rounds in " << clock.elapsed() / 60'000 << " minutes, " << complaints << " complaints.\n"
          << "Warm: " << start.text() << "; at the end: " << end.text() << (isAsBefore ? "." : ": MORE.") << '\n'
          << "The database is " << (damage.isEmpty() ? u"sound"_s : damage) << '.' << Qt::endl;
    return complaints == 0 && isAsBefore && damage.isEmpty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace faults
