#pragma once

#include <QThread>
#include <QtTest>

#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "platform/contacts/ContactStore.h"
#include "tests/fakes/Patience.h"

/// What every `ContactStore` keeps, whatever is behind it.
namespace vynlex::contract {

struct Enumerated {
    std::vector<AddressBookContact> contacts;
    tl::expected<void, QString> result;
};

/// Empty for a success.
inline QString failureOf(const tl::expected<void, QString> &result)
{
    return result ? QString() : result.error();
}

/// On another thread, as the store asks for.
inline Enumerated enumerated(ContactStore &store)
{
    Enumerated all;
    bool onOneThread = true;
    std::thread([&] {
        const std::thread::id thread = std::this_thread::get_id();
        all.result = store.enumerateContacts([&](const AddressBookContact &contact) {
            onOneThread = onOneThread && std::this_thread::get_id() == thread;
            all.contacts.push_back(contact);
        });
    }).join();
    if (!onOneThread)
        qFatal("A contact was visited on another thread than the one that enumerates.");
    return all;
}

/// What is answered to a request of `store`, which is gone by then.
inline bool accessGrantedBy(std::unique_ptr<ContactStore> store)
{
    std::optional<bool> answer;
    store->requestAccess([&](bool granted) {
        if (answer || QThread::currentThread() != qApp->thread())
            qFatal("Access is answered once, on the main thread.");
        answer = granted;
    });
    if (answer)
        qFatal("Access was answered before the call returned.");
    store.reset();
    const bool answered = eventually([&] { return answer.has_value(); });
    QTest::qWait(0); // for a second answer
    return answered && *answer;
}

} // namespace vynlex::contract
