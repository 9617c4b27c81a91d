#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

#include "tests/faults/FaultRow.h"
#include "tests/faults/Laboratory.h"

namespace faults {

/// A way for a service to fail.
struct FaultColumn {
    enum class Outage { ServerCrashes, NetworkIsGone };

    QString name;
    /// One of these: a fault of the sandbox, as its control port takes it but for the route; another way; or something
    /// that happens to everybody while they wait.
    QJsonObject fault;
    std::optional<Laboratory::WayOut> wayOut;
    std::optional<Outage> outage;

    void begin(Laboratory &laboratory, const std::vector<FaultRow *> &rows) const;
    /// For an outage, once everybody waits: it comes, and what it struck comes back.
    void strike(Laboratory &laboratory) const;
    void end(Laboratory &laboratory) const;
};

/// In the order of the table.
const std::vector<FaultColumn> &allColumns();

} // namespace faults
