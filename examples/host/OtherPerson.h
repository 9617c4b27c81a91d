#pragma once

#include <QString>

#include <memory>
#include <tl/expected.hpp>

#include "Person.h"
#include "api/VLApiManager.h"

namespace host {

/// A user of the sandbox's backend whose device nobody sees: signs in, sends messages, and reads what came.
///
/// Main thread. What fails is one clear line.
class OtherPerson {
public:
    static tl::expected<std::unique_ptr<OtherPerson>, QString> signIn(const Person &person);

    /// To the conversation with this user. Gives the message's id.
    tl::expected<QString, QString> send(const vynlex::User &to, const QString &wireText);
    /// Of a message in the conversation with this user, as it is stored.
    tl::expected<QString, QString> textOf(const QString &messageId, const vynlex::User &with);

private:
    explicit OtherPerson(Person person);
    tl::expected<QString, QString> threadWith(const vynlex::User &user);

    const Person m_person;
    vynlex::VLApiManager m_api; ///< Apart from the kit's own.
};

} // namespace host
