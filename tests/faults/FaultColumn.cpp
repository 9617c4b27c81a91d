#include "tests/faults/FaultColumn.h"

#include <QJsonArray>

#include "EventLoop.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace faults {
namespace {

constexpr int longLatencyMs = 10'000; ///< Everybody waits when an outage strikes, and some time afterwards.
constexpr auto networkOutage = 10s;

FaultColumn status(int code)
{
    return {QString::number(code), {{"kind", "status"}, {"status", code}, {"body", R"({"message":"No."})"}}, {}, {}};
}

QJsonObject on(const FaultRow &row, QJsonObject fault)
{
    fault["host"] = row.host;
    fault["path"] = row.path;
    return fault;
}

} // namespace

void FaultColumn::begin(Laboratory &laboratory, const std::vector<FaultRow *> &rows) const
{
    QJsonArray faults;
    for (const FaultRow *row : rows) {
        if (wayOut)
            laboratory.lead(row->host, *wayOut);
        else if (!outage)
            faults << on(*row, fault);
        else if (row->takesTime)
            faults << on(*row, {{"kind", "latency"}, {"ms", longLatencyMs}, {"times", 1}});
    }
    if (const auto added = laboratory.sandbox().addFaults(faults); !added)
        qFatal("%s", qPrintable(added.error()));
}

void FaultColumn::strike(Laboratory &laboratory) const
{
    examples::SandboxProcess &sandbox = laboratory.sandbox();
    if (outage == Outage::ServerCrashes) {
        sandbox.kill();
        examples::letPass(1s);
        laboratory.restartSandbox();
    } else if (outage == Outage::NetworkIsGone) {
        laboratory.setNetworkGone(true);
        examples::letPass(networkOutage);
        laboratory.setNetworkGone(false);
    }
}

void FaultColumn::end(Laboratory &laboratory) const
{
    laboratory.sandbox().clearFaults();
    laboratory.leadEverythingToTheSandbox();
}

const std::vector<FaultColumn> &allColumns()
{
    using enum Laboratory::WayOut;
    static const std::vector<FaultColumn> columns{
        {u"refused"_s, {}, NobodyListens, {}},
        {u"reset before the answer"_s, {{"kind", "reset"}}, {}, {}},
        {u"reset in mid-answer"_s, {{"kind", "reset"}, {"afterBytes", 60}, {"afterMessages", 1}}, {}, {}},
        {u"silence"_s, {{"kind", "silence"}}, {}, {}},
        {u"1 byte a second"_s, {{"kind", "slow"}, {"bytesPerSecond", 1}}, {}, {}},
        {u"half a body"_s, {{"kind", "truncate"}}, {}, {}},
        {u"garbage"_s, {{"kind", "garbledBody"}}, {}, {}},
        status(401),
        status(403),
        status(429),
        status(500),
        status(503),
        {u"bad certificate"_s, {}, UntrustedCertificate, {}},
        {u"proxy refuses"_s, {}, ProxyRefuses, {}},
        {u"network gone for 10 s"_s, {}, {}, FaultColumn::Outage::NetworkIsGone},
        {u"server killed, restarted"_s, {}, {}, FaultColumn::Outage::ServerCrashes},
    };
    return columns;
}

} // namespace faults
