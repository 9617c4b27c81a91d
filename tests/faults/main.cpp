#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTextStream>

#include <algorithm>
#include <random>

#include "tests/faults/Experiment.h"
#include "tests/faults/FaultTable.h"
#include "tests/faults/Load.h"
#include "tests/faults/LongRun.h"
#include "tests/platform/network/PrivateNetwork.h"

using namespace Qt::StringLiterals;
using namespace faults;

namespace {

constexpr int atOnce = 6; ///< Programs; they mostly wait.

QTextStream &errors()
{
    static QTextStream stream(stderr);
    return stream;
}

/// Plays one column in this process.
int playOne(const FaultColumn &column)
{
    Findings findings;
    {
        Experiment experiment;
        findings = experiment.prepare();
        if (findings.complaints.isEmpty())
            findings = experiment.round(column, experiment.rows());
    }
    QTextStream(stdout) << findings.cells.join(u'\n') << '\n';
    for (const QString &complaint : findings.complaints)
        errors() << complaint << '\n';
    return findings.complaints.isEmpty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

/// Plays each column in a process of its own. Empty: something went wrong, and was said.
std::optional<FaultTable> playAll(const QStringList &columns)
{
    FaultTable table;
    bool allIsWell = true;
    QStringList waiting = columns;
    std::vector<std::unique_ptr<QProcess>> running;
    while (!waiting.isEmpty() || !running.empty()) {
        while (!waiting.isEmpty() && running.size() < atOnce) {
            auto process = std::make_unique<QProcess>();
            process->setObjectName(waiting.takeFirst());
            process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
            process->start(QCoreApplication::applicationFilePath(), {u"--one"_s, process->objectName()});
            running.push_back(std::move(process));
        }
        const auto ended = std::ranges::find_if(running, [](const auto &process) {
            return process->waitForFinished(50) || process->state() == QProcess::NotRunning;
        });
        if (ended == running.end())
            continue;
        QProcess &process = **ended;
        const QString column = process.objectName();
        for (const QString &line : QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts))
            table.set(column, line.section(u'\t', 0, 0), line.section(u'\t', 1));
        const bool well = process.exitStatus() == QProcess::NormalExit && process.exitCode() == EXIT_SUCCESS;
        errors() << column << (well ? ": as it is to be" : ": NOT as it is to be") << Qt::endl;
        allIsWell = allIsWell && well;
        running.erase(ended);
    }
    return allIsWell ? std::optional(table) : std::nullopt;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "--one") == 0) // Nobody else notices when its links go down.
        vynlex::PrivateNetwork::enter(argv);
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Plays what users do while services fail: all faults, or those that are named."_s);
    parser.addHelpOption();
    parser.addOptions(
        {{u"one"_s, u"One fault, in this process; prints a line for each row."_s},
         {u"load"_s, u"Many clients and messages while the sandbox is killed, for so long."_s, u"seconds"_s},
         {u"long-run"_s, u"Rounds of faults at random, for so long."_s, u"minutes"_s},
         {u"seed"_s, u"For the same random choices once more."_s, u"number"_s},
         {u"write"_s, u"Puts the table into this document in place of its own."_s, u"document"_s},
         {u"compare"_s, u"The table of this document must say the same."_s, u"document"_s}});
    parser.addPositionalArgument(u"fault"_s, u"As the table names it."_s, u"[fault...]"_s);
    parser.process(application);

    const unsigned seed = parser.isSet(u"seed"_s) ? parser.value(u"seed"_s).toUInt() : std::random_device()();
    if (parser.isSet(u"load"_s))
        return playLoad(std::chrono::seconds(parser.value(u"load"_s).toInt()), seed);
    if (parser.isSet(u"long-run"_s))
        return playLongRun(std::chrono::minutes(parser.value(u"long-run"_s).toInt()), seed);

    QStringList names = parser.positionalArguments();
    if (names.isEmpty()) {
        for (const FaultColumn &column : allColumns())
            names << column.name;
    }
    for (const QString &name : std::as_const(names)) {
        const auto column = std::ranges::find(allColumns(), name, &FaultColumn::name);
        if (column == allColumns().end()) {
            errors() << "There is no fault \"" << name << "\".\n";
            return 2;
        }
        if (parser.isSet(u"one"_s))
            return playOne(*column);
    }

    const auto table = playAll(names);
    if (!table)
        return EXIT_FAILURE;
    QString problem;
    if (parser.isSet(u"write"_s))
        problem = table->writeInto(parser.value(u"write"_s));
    else if (parser.isSet(u"compare"_s))
        problem = table->compareWith(parser.value(u"compare"_s));
    else
        QTextStream(stdout) << table->markdown();
    if (!problem.isEmpty())
        errors() << problem << '\n';
    return problem.isEmpty() ? EXIT_SUCCESS : EXIT_FAILURE;
}
