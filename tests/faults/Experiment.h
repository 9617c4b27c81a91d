#pragma once

#include <QStringList>

#include <memory>
#include <vector>

#include "tests/faults/FaultColumn.h"

namespace faults {

/// A sentence for each thing that is wrong, and a line "row<tab>cell" for each row.
struct Findings {
    QStringList complaints;
    QStringList cells;
};

/// All rows, which act at the same time in one process. Main thread.
class Experiment {
public:
    Experiment();

    Laboratory &laboratory() { return m_laboratory; }
    [[nodiscard]] std::vector<FaultRow *> rows() const;

    /// Once, before the first round.
    Findings prepare();
    /// Everybody acts while the services of `failing` fail in this way, then once more with all well. Who is not among
    /// them must not notice, except an outage.
    Findings round(const FaultColumn &column, const std::vector<FaultRow *> &failing);
    /// Before any further round.
    Findings prepareAgain();

private:
    Findings awaitReadiness();

    Laboratory m_laboratory;
    FaultRows m_rows;
};

} // namespace faults
