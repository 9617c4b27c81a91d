#pragma once

#include <mutex>
#include <utility>

namespace vynlex {

/// A value that several threads share. The only lock that code outside `platform/` ever uses, and it uses it through
/// this class: `with` runs a short function on the value under the lock. Never call out of the kit from inside `with`.
template<typename T> class Guarded {
public:
    Guarded() = default;
    explicit Guarded(T value)
        : m_value(std::move(value))
    {
    }

    template<typename Function> decltype(auto) with(Function &&function)
    {
        const std::lock_guard lock(m_mutex);
        return std::forward<Function>(function)(m_value);
    }

    [[nodiscard]] T copy() const
    {
        const std::lock_guard lock(m_mutex);
        return m_value;
    }

    void set(T value)
    {
        // The old value is destroyed after the lock is gone: its destructor may be long, or come back here.
        const std::lock_guard lock(m_mutex);
        std::swap(m_value, value);
    }

    [[nodiscard]] T exchange(T value)
    {
        const std::lock_guard lock(m_mutex);
        std::swap(m_value, value);
        return value;
    }

private:
    mutable std::mutex m_mutex;
    T m_value{};
};

} // namespace vynlex
