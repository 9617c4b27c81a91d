#pragma once

#include <QTest>

#include <vector>

namespace vynlex {

/// Several test classes in one executable, which saves linking the same libraries again. Each has an `InSuite`; one
/// file of the executable has a main function that calls `runSuite`.
using SuiteEntry = int (*)(int, char **);
inline std::vector<SuiteEntry> suite; // NOLINT: filled before main

template<typename Test> struct InSuite {
    InSuite()
    {
        suite.push_back([](int argc, char **argv) {
            Test test;
            return QTest::qExec(&test, argc, argv);
        });
    }
};

inline int runSuite(int argc, char **argv)
{
    int failed = 0;
    for (const SuiteEntry run : suite)
        failed += run(argc, argv);
    return failed;
}

} // namespace vynlex
