#include "reachability/NotificationCenter.h"

#include <utility>
#include <vector>

namespace vynlex {

NotificationCenter::Registration::Registration(NotificationCenter *center, int id)
    : m_center(center)
    , m_id(id)
{
}

NotificationCenter::Registration::Registration(Registration &&other) noexcept
    : m_center(std::exchange(other.m_center, nullptr))
    , m_id(other.m_id)
{
}

NotificationCenter::Registration &NotificationCenter::Registration::operator=(Registration &&other) noexcept
{
    std::swap(m_center, other.m_center);
    std::swap(m_id, other.m_id);
    return *this;
}

NotificationCenter::Registration::~Registration()
{
    if (m_center)
        m_center->remove(m_id);
}

NotificationCenter &NotificationCenter::defaultCenter()
{
    static auto *const center = new NotificationCenter;
    return *center;
}

NotificationCenter::Registration NotificationCenter::addObserver(const QString &name, const NotificationObject *object,
                                                                 Observer observer)
{
    auto shared = std::make_shared<const Observer>(std::move(observer));
    const int id = m_entries.with([&](Entries &entries) {
        entries.byId.emplace(++entries.lastId, Entry{name, object, std::move(shared)});
        return entries.lastId;
    });
    return {this, id};
}

void NotificationCenter::post(const Notification &notification)
{
    const auto ids = m_entries.with([&](Entries &entries) {
        std::vector<int> matching;
        for (const auto &[id, entry] : entries.byId)
            if (entry.name == notification.name && entry.object == notification.object.get())
                matching.push_back(id);
        return matching;
    });
    for (const int id : ids) {
        // Looked up again: the observer before may have removed this one.
        const auto observer = m_entries.with([&](Entries &entries) {
            const auto found = entries.byId.find(id);
            return found == entries.byId.end() ? nullptr : found->second.observer;
        });
        if (observer)
            (*observer)(notification);
    }
}

void NotificationCenter::remove(int id)
{
    // The observer is destroyed after the lock is gone: what it owns may come back here.
    const auto dropped = m_entries.with([&](Entries &entries) { return entries.byId.extract(id); });
}

} // namespace vynlex
