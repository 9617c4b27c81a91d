#pragma once

#include <QAbstractListModel>

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "screens/InitialsImage.h"
#include "screens/UserList.h"

namespace vynlex {

/// The rows of the home screen for its view: all people of a list, or those that a search has found. Main thread.
///
/// What it shows stands until the next `reload`, whatever becomes of the lists meanwhile. A row costs something only
/// when it is asked for.
///
/// Roles: `name` and `phoneNumber` (text), `phoneNumberHidden` (bool), `initials` (text), `initialsColor` (color),
/// `callImage` and `voiceImage` (url). A person has a new colour after every reload.
class UserTable : public QAbstractListModel {
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    /// Shows the people of `users`, which is not null, at the places `found`, in this order; without `found` all.
    void reload(std::shared_ptr<const UserList> users, std::optional<std::vector<int>> found = {});

    /// The person that the row shows; null when there is no such row.
    [[nodiscard]] const User *userAt(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

private:
    enum Role { Name = Qt::UserRole, PhoneNumber, PhoneNumberHidden, Initials, InitialsColor, CallImage, VoiceImage };

    [[nodiscard]] const InitialsImage &initialsOf(int row) const;

    std::shared_ptr<const UserList> m_users = std::make_shared<const UserList>();
    std::optional<std::vector<int>> m_found;
    /// Of the rows that were asked for since the last reload: a cell asks for its parts one by one, and they belong
    /// together.
    mutable std::unordered_map<int, InitialsImage> m_initials;
};

} // namespace vynlex
