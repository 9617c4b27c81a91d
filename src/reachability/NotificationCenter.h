#pragma once

#include <QString>

#include <functional>
#include <map>
#include <memory>

#include "platform/dispatch/Guarded.h"

namespace vynlex {

/// What a notification may be about.
class NotificationObject {
public:
    virtual ~NotificationObject() = default;
};

struct Notification {
    QString name;
    std::shared_ptr<NotificationObject> object;
};

/// Passes notifications on to who observes their name and object.
///
/// Any thread; observers run on the poster's thread, within `post`.
class NotificationCenter {
public:
    using Observer = std::function<void(const Notification &)>;

    /// Keeps the observer registered while it lives. One that is running on another thread meanwhile may still finish.
    class Registration {
    public:
        Registration() = default;
        Registration(Registration &&other) noexcept;
        Registration &operator=(Registration &&other) noexcept;
        ~Registration();

    private:
        friend class NotificationCenter;
        Registration(NotificationCenter *center, int id);

        NotificationCenter *m_center = nullptr;
        int m_id = 0;
    };

    /// The process's own; never destroyed. Others outlive their registrations.
    static NotificationCenter &defaultCenter();

    /// `object` is compared by identity and not kept alive.
    [[nodiscard]] Registration addObserver(const QString &name, const NotificationObject *object, Observer observer);

    void post(const Notification &notification);

private:
    struct Entry {
        QString name;
        const NotificationObject *object = nullptr;
        std::shared_ptr<const Observer> observer;
    };
    struct Entries {
        std::map<int, Entry> byId;
        int lastId = 0;
    };

    void remove(int id);

    Guarded<Entries> m_entries;
};

} // namespace vynlex
