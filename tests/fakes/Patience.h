#pragma once

#include <QTest>

namespace vynlex {

/// How long a test waits for what another thread, a socket, a device or a process does. Qt's own 5 s are too few for a
/// build with sanitizers on a busy machine.
inline constexpr int patienceMs = 60'000;

template<typename Condition> bool eventually(const Condition &condition)
{
    return QTest::qWaitFor(condition, patienceMs);
}

} // namespace vynlex

#define TRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, vynlex::patienceMs)
#define TRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, vynlex::patienceMs)
