#pragma once

#include <QTest>

#include <memory>
#include <vector>

namespace vynlex {

/// Several test classes in one executable, which saves linking the same libraries again. One file of the executable has
/// a main function that calls `runSuite`.
using SuiteEntry = int (*)(int, char **);
inline std::vector<SuiteEntry> &suite()
{
    static std::vector<SuiteEntry> entries;
    return entries;
}

/// `template struct vynlex::InSuite<TestFoo>;` puts the class `TestFoo` into the executable's suite.
template<typename Test> struct InSuite {
    InSuite() = delete;

    static int run(int argc, char **argv)
    {
        Test test;
        return QTest::qExec(&test, argc, argv);
    }
    static const bool added;
};
template<typename Test> const bool InSuite<Test>::added = (suite().push_back(run), true);

inline int runSuite(int argc, char **argv)
{
    int failed = 0;
    for (const SuiteEntry run : suite())
        failed += run(argc, argv);
    return failed;
}

/// The main function of an executable whose classes are a suite; `Application` is Qt's.
#define SUITE_MAIN(Application)                                                                                        \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        const Application application(argc, argv);                                                                     \
        return vynlex::runSuite(argc, argv);                                                                           \
    }

/// For `initTestCase_data` of a suite that runs over a port's fake and over what ships.
inline void addFakeAndShipped()
{
    QTest::addColumn<bool>("shipped");
    QTest::newRow("fake") << false;
    QTest::newRow("shipped") << true;
}

/// The one of the two that the suite runs over now.
template<typename Subject, typename Fake, typename Shipped> std::unique_ptr<Subject> makeFakeOrShipped()
{
    QFETCH_GLOBAL(bool, shipped);
    return shipped ? std::unique_ptr<Subject>(std::make_unique<Shipped>()) : std::make_unique<Fake>();
}

} // namespace vynlex
