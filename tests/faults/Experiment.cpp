#include "tests/faults/Experiment.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "EventLoop.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace faults {
namespace {

constexpr auto preparing = 120s; // Both as patient as tests are with busy machines, twice over.
constexpr auto untilLateOnesAsk = 60s;
constexpr auto untilEverybodyAsks = 2s;
constexpr qint64 settlingMs = 500; // What has come is shown on a later turn.
constexpr auto recovering = 120s;

/// Seconds as people tell them, in steps of 5: none for what takes a few.
QString rounded(qint64 ms)
{
    const auto seconds = static_cast<int>(std::lround(static_cast<double>(ms) / 5000)) * 5;
    return seconds < 10 ? QString() : u" %1 s"_s.arg(seconds);
}

/// One round.
class Round {
public:
    Round(Experiment &experiment, const FaultColumn &column, const std::vector<FaultRow *> &failing)
        : m_laboratory(experiment.laboratory())
        , m_rows(experiment.rows())
        , m_column(column)
        , m_failing(failing)
    {
    }

    Findings play()
    {
        act();
        actAgain();
        return m_findings;
    }

private:
    void complain(const FaultRow &row, const QString &what)
    {
        m_findings.complaints << u"%1, %2: %3."_s.arg(row.name, m_column.name, what);
    }
    /// The ways out are those of a host, which rows may share.
    [[nodiscard]] bool mayFail(const FaultRow *row) const
    {
        return m_column.outage || std::ranges::any_of(m_failing, [&](const FaultRow *failing) {
                   return failing == row || (m_column.wayOut && failing->host == row->host);
               });
    }

    void act()
    {
        m_column.begin(m_laboratory, m_failing);
        if (m_column.outage)
            actUntilAllAsk();
        QElapsedTimer clock;
        clock.start();
        if (m_column.outage)
            m_column.strike(m_laboratory);
        else
            std::ranges::for_each(m_rows, &FaultRow::act);

        std::map<const FaultRow *, QString> cells;
        std::map<const FaultRow *, qint64> atRestSince;
        const auto settle = [&](FaultRow &row) {
            const qint64 now = clock.elapsed();
            const bool tooLong = now > std::chrono::milliseconds(row.patience).count();
            if (row.isBusy() && !tooLong)
                atRestSince.erase(&row);
            else if (const qint64 since = atRestSince.try_emplace(&row, now).first->second; now - since >= settlingMs)
                cells[&row] = cellOf(row, since, tooLong);
        };
        examples::waitUntil(
            [&] {
                for (FaultRow *const row : m_rows) {
                    if (!cells.contains(row))
                        settle(*row);
                }
                return cells.size() == m_rows.size();
            },
            std::chrono::minutes(5));
        for (const FaultRow *const row : m_rows)
            m_findings.cells << row->name + u'\t' + cells[row];
        m_column.end(m_laboratory);
    }

    /// Those first whose service is not the first that they need.
    void actUntilAllAsk()
    {
        std::vector<FaultRow *> late = m_rows;
        std::erase_if(late, &FaultRow::isAsking);
        std::ranges::for_each(late, &FaultRow::act);
        const auto asks = [](FaultRow *row) { return !row->isBusy() || row->isAsking(); };
        examples::waitUntil([&] { return std::ranges::all_of(late, asks); }, untilLateOnesAsk);
        for (FaultRow *const row : m_rows) {
            if (std::ranges::find(late, row) == late.end())
                row->act();
        }
        examples::letPass(untilEverybodyAsks);
        for (const FaultRow *const row : late) {
            if (!row->isAsking())
                complain(*row, u"was over, or had not begun, when the outage came"_s);
        }
    }

    QString cellOf(FaultRow &row, qint64 ms, bool tooLong)
    {
        row.abandon();
        const bool through = row.cameThrough();
        if (const QString wrong = through ? QString() : row.complaint(); !wrong.isEmpty())
            complain(row, wrong);
        if (!through && !mayFail(&row))
            complain(row, u"failed, though its service was well"_s);
        return (through ? u"✓"_s : u"✗"_s) + (tooLong || !row.isTimed ? QString() : rounded(ms));
    }

    void actAgain()
    {
        std::ranges::for_each(m_rows, &FaultRow::actAgain);
        const auto works = [](FaultRow *row) { return !row->isBusy() && row->cameThrough(); };
        examples::waitUntil([&] { return std::ranges::all_of(m_rows, works); }, recovering);
        for (FaultRow *const row : m_rows) {
            if (!works(row))
                complain(*row, u"does not work after the fault has gone"_s);
        }
    }

    Laboratory &m_laboratory;
    const std::vector<FaultRow *> m_rows;
    const FaultColumn &m_column;
    const std::vector<FaultRow *> &m_failing;
    Findings m_findings;
};

} // namespace

Experiment::Experiment()
{
    addHomeRows(m_rows, m_laboratory);
    addChatRows(m_rows, m_laboratory);
    addTalkRows(m_rows, m_laboratory);
}

std::vector<FaultRow *> Experiment::rows() const
{
    std::vector<FaultRow *> rows;
    for (const auto &row : m_rows)
        rows.push_back(row.get());
    return rows;
}

Findings Experiment::prepare()
{
    std::ranges::for_each(rows(), &FaultRow::prepare);
    return awaitReadiness();
}

Findings Experiment::prepareAgain()
{
    m_laboratory.forgetLines();
    std::ranges::for_each(rows(), &FaultRow::prepareAgain);
    return awaitReadiness();
}

Findings Experiment::awaitReadiness()
{
    const auto ready = [](FaultRow *row) { return !row->isBusy(); };
    examples::waitUntil([&] { return std::ranges::all_of(rows(), ready); }, preparing);
    Findings findings;
    for (FaultRow *const row : rows()) {
        if (!ready(row))
            findings.complaints << u"%1 does not come to where it begins, without any fault."_s.arg(row->name);
    }
    return findings;
}

Findings Experiment::round(const FaultColumn &column, const std::vector<FaultRow *> &failing)
{
    return Round(*this, column, failing).play();
}

} // namespace faults
