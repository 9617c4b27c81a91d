#pragma once

#include <algorithm>
#include <map>
#include <memory>

#include "platform/dispatch/Clock.h"

namespace vynlex {

/// A clock that stands still until the test moves it. Timers fire in the order of their times, on the test's thread.
class FakeClock final : public Clock {
public:
    [[nodiscard]] std::chrono::steady_clock::time_point now() const override { return m_state->now; }

    [[nodiscard]] std::unique_ptr<Timer> after(std::chrono::milliseconds delay, Task task) override
    {
        return add(delay, std::chrono::milliseconds(0), std::move(task));
    }

    [[nodiscard]] std::unique_ptr<Timer> every(std::chrono::milliseconds interval, Task task) override
    {
        return add(interval, std::max(interval, std::chrono::milliseconds(1)), std::move(task));
    }

    void advance(std::chrono::milliseconds time)
    {
        const auto end = m_state->now + time;
        while (!m_state->timers.empty() && m_state->timers.begin()->first.first <= end) {
            auto node = m_state->timers.extract(m_state->timers.begin());
            m_state->now = std::max(m_state->now, node.key().first);
            const Task task = node.mapped().task;
            if (node.mapped().interval.count() > 0) {
                node.key().first += node.mapped().interval;
                m_state->timers.insert(std::move(node));
            }
            task();
        }
        m_state->now = end;
    }

    [[nodiscard]] std::size_t runningTimers() const { return m_state->timers.size(); }

private:
    using Key = std::pair<std::chrono::steady_clock::time_point, std::uint64_t>; // the number keeps the order of starts

    struct Entry {
        std::chrono::milliseconds interval;
        Task task;
    };

    struct State {
        std::chrono::steady_clock::time_point now{};
        std::uint64_t lastNumber = 0;
        std::map<Key, Entry> timers;
    };

    class FakeTimer final : public Timer {
    public:
        FakeTimer(std::weak_ptr<State> state, std::uint64_t number)
            : m_state(std::move(state))
            , m_number(number)
        {
        }
        ~FakeTimer() override
        {
            if (const auto state = m_state.lock())
                std::erase_if(state->timers, [&](const auto &entry) { return entry.first.second == m_number; });
        }

    private:
        std::weak_ptr<State> m_state;
        std::uint64_t m_number;
    };

    std::unique_ptr<Timer> add(std::chrono::milliseconds delay, std::chrono::milliseconds interval, Task task)
    {
        const std::uint64_t number = ++m_state->lastNumber;
        m_state->timers.emplace(Key{m_state->now + delay, number}, Entry{interval, std::move(task)});
        return std::make_unique<FakeTimer>(m_state, number);
    }

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace vynlex
