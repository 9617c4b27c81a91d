#pragma once

#include <QThread>
#include <QtTest>

#include <atomic>
#include <functional>
#include <memory>

#include "platform/network/ReachabilitySource.h"
#include "tests/fakes/Patience.h"

/// What every `ReachabilitySource` keeps, whatever is behind it.
namespace vynlex::contract {

/// `set` brings the network to these flags; it starts unreachable, and is left so.
inline void sourceKeepsItsPromises(const std::function<std::unique_ptr<ReachabilitySource>()> &make,
                                   const std::function<void(ReachabilityFlags)> &set)
{
    constexpr ReachabilityFlags reachable = reachabilityFlag::reachable;
    struct Heard {
        std::atomic<ReachabilityFlags> last = ~0U;
        std::atomic<int> count = 0;
        std::atomic<bool> onTestThread = false;
    };
    const auto heardBy = [test = QThread::currentThread()](const std::shared_ptr<Heard> &heard) {
        return [heard, test](ReachabilityFlags flags) {
            heard->onTestThread = heard->onTestThread || QThread::currentThread() == test;
            heard->last = flags;
            ++heard->count;
        };
    };

    const auto source = make();
    source->stop(); // nothing to stop
    const auto heard = std::make_shared<Heard>();
    QVERIFY(source->start(heardBy(heard)));
    set(reachable);
    TRY_COMPARE(heard->last.load(), reachable);
    QCOMPARE(source->currentFlags().value_or(~0U), reachable);
    set(0);
    TRY_COMPARE(heard->last.load(), 0U);
    QCOMPARE(source->currentFlags().value_or(~0U), 0U);

    // Another one hears what the stopped one does not.
    const auto other = make();
    const auto heardByOther = std::make_shared<Heard>();
    source->stop();
    QVERIFY(other->start(heardBy(heardByOther)));
    const int before = heard->count;
    set(reachable);
    TRY_COMPARE(heardByOther->last.load(), reachable);
    QCOMPARE(heard->count.load(), before);
    QCOMPARE(source->currentFlags().value_or(~0U), reachable);

    // Started again, and destroyed by what it calls.
    const auto fleeting = std::make_shared<std::unique_ptr<ReachabilitySource>>(make());
    const auto gone = std::make_shared<std::atomic<bool>>(false);
    QVERIFY((*fleeting)->start([fleeting, gone](ReachabilityFlags) {
        fleeting->reset();
        *gone = true;
    }));
    QVERIFY(source->start(heardBy(heard)));
    set(0);
    TRY_COMPARE(heard->last.load(), 0U);
    TRY_VERIFY(gone->load());
    QVERIFY(!heard->onTestThread && !heardByOther->onTestThread);
}

} // namespace vynlex::contract
