#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "screens/HomeVC.h"
#include "tests/views/ScreenStage.h"

namespace vynlex {

/// The home screen on a stage. The people in it have numbers, but for every fifth.
class HomeStage : public ScreenStage {
public:
    explicit HomeStage(const DeviceShape &shape);
    ~HomeStage();

    [[nodiscard]] static const std::vector<Scene<HomeStage>> &scenes();

    /// Presses the tab, and the backend answers with calls of these people.
    bool showRecents(const QStringList &names);
    bool showRecents(int people);
    /// The address book has these people, and the user has pressed the tab. The backend knows none of them.
    bool showContacts(const QStringList &names);
    /// By finger and keyboard.
    bool searchFor(const QString &text);
    /// Letters of the English alphabet, into what has the keyboard.
    void type(const QString &text);
    /// Whether the field of the search has the keyboard.
    [[nodiscard]] bool isEditing() const;
    /// The rows in sight whose people can be called, in the order of the list.
    [[nodiscard]] QStringList people() const;

    ChatViewModel chat;
    SocketManager sockets;
    std::shared_ptr<HomeVC> screen;
};

} // namespace vynlex
