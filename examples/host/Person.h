#pragma once

#include <QString>

#include <array>
#include <optional>

#include "api/DirectoryRecords.h"

namespace host {

/// A user of the sandbox's backend, as it is seeded.
struct Person {
    QString word; ///< Names the person's device on the command line, and their files.
    vynlex::User user;

    /// What a host would get when this person signs in to it.
    [[nodiscard]] QString webToken() const { return QStringLiteral("web-token-") + user.id; }
};

/// Two who have written to each other before.
[[nodiscard]] const std::array<Person, 2> &people();

/// Whom the first of them has not written to yet.
[[nodiscard]] const Person &newcomer();

[[nodiscard]] std::optional<Person> personNamed(const QString &word);
[[nodiscard]] const Person &otherThan(const Person &person);

} // namespace host
