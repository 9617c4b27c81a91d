#pragma once

#include <QString>

#include <memory>
#include <vector>

#include "chat/ChatViewModel.h"
#include "screens/ChatVC.h"
#include "tests/views/ScreenStage.h"

namespace vynlex {

/// The chat screen on a stage: a talk between the user ("me") and the person with the id "them".
class ChatStage : public ScreenStage {
public:
    /// With "Asha Rao".
    explicit ChatStage(const DeviceShape &shape);
    ~ChatStage();

    [[nodiscard]] static const std::vector<Scene<ChatStage>> &scenes();

    /// Opens the chat with a person of this name instead.
    void open(const QString &name);
    /// The backend answers with the thread and a page of so many messages.
    bool load(int messages);
    /// One more message comes over the socket. An empty name is for the screen to fill in.
    void receive(const QString &name = {});
    /// The backend has taken one more message of the user.
    void sent();
    /// They and the user in turn, this often each, until the last is to be seen.
    bool talk(int times);

    /// The play button of message `number`, from 0, as an assistive tool names it. Without a name who wrote it is
    /// "You".
    [[nodiscard]] static QString playName(int number, const QString &who = QStringLiteral("You"));
    /// Whether this control of a message is where the list shows it whole.
    [[nodiscard]] bool isInSight(const QString &name) const;

    /// Starts a recording by finger and lets so many seconds pass.
    bool record(int seconds);
    /// Records a sentence and stops.
    bool recordAndStop(int seconds);
    /// Of message `number`, from 0, as its cell shows it.
    [[nodiscard]] static QString time(int number);

    ChatViewModel chat;
    std::shared_ptr<ChatVC> screen;

private:
    [[nodiscard]] VLChatMessage next(const QString &creator);

    int m_messages = 0;
};

} // namespace vynlex
