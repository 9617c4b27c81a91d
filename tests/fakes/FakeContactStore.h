#pragma once

#include <condition_variable>
#include <limits>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/contacts/ContactStore.h"
#include "platform/dispatch/MainQueue.h"

namespace vynlex {

/// An address book of the test's own: empty, and open to the kit. Any thread.
class FakeContactStore final : public ContactStore {
public:
    void setContacts(std::vector<AddressBookContact> contacts)
    {
        change([&](State &state) { state.contacts = std::move(contacts); });
    }
    void refuseAccess()
    {
        change([](State &state) { state.refuses = true; });
    }
    /// Every enumeration fails with this, after it has visited all contacts.
    void failReading(const QString &failure)
    {
        change([&](State &state) { state.failure = failure; });
    }
    /// Enumerations wait once they have visited so many contacts, until `letRead`.
    void holdReadingAfter(std::size_t count)
    {
        change([&](State &state) { state.readable = count; });
    }
    void letRead() { holdReadingAfter(std::numeric_limits<std::size_t>::max()); }

    [[nodiscard]] int accessRequests() const
    {
        const std::lock_guard lock(m_mutex);
        return m_state.accessRequests;
    }

    void requestAccess(AccessAnswered answered) override
    {
        const std::lock_guard lock(m_mutex);
        ++m_state.accessRequests;
        MainQueue::async([answered = std::move(answered), granted = !m_state.refuses] { answered(granted); });
    }

    tl::expected<void, QString> enumerateContacts(const Visit &visit) override
    {
        if (MainQueue::isCurrent())
            qFatal("FakeContactStore: a real address book would hold up the main thread.");
        std::unique_lock lock(m_mutex);
        if (m_state.refuses)
            return tl::unexpected(QStringLiteral("The fake address book must not be read."));
        const State state = m_state;
        for (std::size_t i = 0; i < state.contacts.size(); ++i) {
            m_changed.wait(lock, [&] { return i < m_state.readable; });
            lock.unlock();
            visit(state.contacts[i]);
            lock.lock();
        }
        if (state.failure)
            return tl::unexpected(*state.failure);
        return {};
    }

private:
    struct State {
        std::vector<AddressBookContact> contacts;
        bool refuses = false;
        std::optional<QString> failure;
        std::size_t readable = std::numeric_limits<std::size_t>::max();
        int accessRequests = 0;
    };

    template<typename Change> void change(const Change &change)
    {
        const std::lock_guard lock(m_mutex);
        change(m_state);
        m_changed.notify_all();
    }

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state;
};

} // namespace vynlex
