#include <QEventLoop>
#include <QSemaphore>
#include <QTest>

#include <array>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "platform/dispatch/Console.h"
#include "platform/dispatch/FatalError.h"
#include "platform/dispatch/Lifetime.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/dispatch/SerialQueue.h"
#include "platform/dispatch/SystemClock.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/FakeClock.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"

using namespace std::chrono_literals;
using namespace vynlex;

class TestDispatch : public QObject {
    Q_OBJECT

private slots:
    void mainQueueKeepsOrderAndNeverRunsInsideTheCall()
    {
        std::vector<int> order;
        MainQueue::async([&] {
            order.push_back(1);
            MainQueue::async([&] { order.push_back(3); });
        });
        MainQueue::async([&] { order.push_back(2); });
        MainQueue::async([&] { // a nested event loop does not hold up the queue
            QEventLoop loop;
            MainQueue::async([&] { loop.quit(); });
            loop.exec();
            order.push_back(4);
        });
        QVERIFY(order.empty());
        TRY_COMPARE(order, (std::vector{1, 2, 3, 4}));
    }

    void mainQueueServesManyThreadsAndLosesNothing()
    {
        constexpr int perThread = 2000;
        std::array<int, 4> last{};
        int count = 0;
        bool inOrder = true;
        std::vector<std::thread> threads;
        for (std::size_t t = 0; t < last.size(); ++t) {
            threads.emplace_back([&, t] {
                for (int i = 1; i <= perThread; ++i) {
                    MainQueue::async([&, t, i] {
                        inOrder = inOrder && MainQueue::isCurrent() && last.at(t) == i - 1;
                        last.at(t) = i;
                        ++count;
                    });
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        TRY_COMPARE(count, perThread * 4);
        QVERIFY(inOrder);
    }

    void aSerialQueueKeepsOrderOnAThreadOfItsName()
    {
        std::vector<int> order; // unguarded on purpose: the queue is the guard
        std::atomic<bool> busy = false;
        std::atomic<bool> alone = true;
        std::array<char, 16> name{};
        QSemaphore done;
        // Begun by a thread that is gone by then: nothing of it may be needed to name the pool's.
        std::thread([&] {
            SerialQueue queue(QStringLiteral("conversionQueueOfOneScreen"));
            for (int i = 0; i < 1000; ++i) {
                queue.async([&, i] {
                    alone = alone && !busy.exchange(true);
                    std::this_thread::yield();
                    order.push_back(i);
                    busy = false;
                });
            }
            queue.async([&] {
                pthread_getname_np(pthread_self(), name.data(), name.size());
                done.release();
            });
            done.acquire();
        }).join();
        QCOMPARE(name.data(), "conversionQueue");
        QVERIFY(alone && order.size() == 1000 && std::ranges::is_sorted(order));
    }

    void aTaskMayOwnTheOwnerOfItsSerialQueue()
    {
        struct Owner {
            SerialQueue queue{QStringLiteral("test")};
        };
        auto owner = std::make_shared<Owner>();
        const std::weak_ptr<Owner> weak = owner;
        QSemaphore started;
        QSemaphore proceed;
        std::atomic<bool> droppedTaskRan = false;
        owner->queue.async([owner, &started, &proceed] {
            started.release();
            proceed.acquire();
        });
        owner->queue.async([&] { droppedTaskRan = true; });
        QVERIFY(started.tryAcquire(1, patienceMs));
        owner.reset(); // the running task is the last owner
        proceed.release();
        TRY_VERIFY(weak.expired());
        QVERIFY(!droppedTaskRan);
    }

    void aGuardedCallbackOfADeadObjectDoesNothing()
    {
        int calls = 0;
        auto lifetime = std::make_unique<Lifetime>();
        auto callback = lifetime->guard([&](int by) { calls += by; });
        callback(2);
        lifetime.reset();
        callback(2);
        QCOMPARE(calls, 2);
    }

    void clocksFireInOrderAndStopWhenDestroyed_data() { addRows<bool>({{"fake", true}, {"shipped", false}}); }
    void clocksFireInOrderAndStopWhenDestroyed()
    {
        const auto [isFake] = currentRow<bool>();
        FakeClock fake;
        SystemClock shipped;
        Clock &clock = isFake ? static_cast<Clock &>(fake) : shipped;
        std::vector<int> fired;
        int ticks = 0;
        const auto start = clock.now();
        const auto second = clock.after(400ms, [&] { fired.push_back(2); });
        const auto first = clock.after(20ms, [&] { fired.push_back(1); });
        auto never = clock.after(10ms, [&] { fired.push_back(0); });
        never.reset();
        std::unique_ptr<Timer> ticker = clock.every(10ms, [&] {
            if (++ticks == 3)
                ticker.reset(); // from inside its own task
        });
        const auto pass = [&] { isFake ? fake.advance(20ms) : QTest::qWait(20); };
        for (int i = 0; i < 100 && (fired.size() < 2 || ticks < 3); ++i)
            pass();
        pass();
        QCOMPARE(fired, (std::vector{1, 2}));
        QCOMPARE(ticks, 3);
        QVERIFY(clock.now() - start >= 60ms);
    }

    void consoleLinesComeWholeFromEveryThread()
    {
        const CapturedConsole console;
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([] {
                for (int i = 0; i < 200; ++i)
                    consoleLine(QStringLiteral("नमस्ते"));
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(console.lines().count(QStringLiteral("नमस्ते")), 800);
    }

    void aFatalErrorEndsTheProcessWithItsSentence()
    {
        QCOMPARE(fatalErrorOf([] { fatalError(QStringLiteral("Nothing is left to do.")); }),
                 QStringLiteral("Fatal error: Nothing is left to do."));
        QVERIFY(fatalErrorOf([] {}).isNull());
    }
};

QTEST_GUILESS_MAIN(TestDispatch)
#include "tst_dispatch.moc"
