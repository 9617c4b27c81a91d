#pragma once

#include <QString>
#include <QVariant>

#include <map>
#include <tl/expected.hpp>

#include "Album.h"
#include "Device.h"
#include "Room.h"
#include "Stage.h"
#include "VoiceActor.h"
#include "screens/ChatVC.h"
#include "two/DeviceProtocol.h"
#include "two/Person.h"

namespace host {

/// Plays a person who uses the chat screen: records voice messages, listens to them, sends them, and plays what comes.
///
/// Main thread. Every wait has a limit, and what did not come through is one clear line.
class ChatPlayer {
public:
    /// Pictures and sound go into `folder`.
    ChatPlayer(const Person &person, Stage &stage, Room &room, const Device &device, const QString &folder);
    ~ChatPlayer();

    /// Signs in as the person, with a session of the backend's socket, and opens the chat with the other one.
    tl::expected<void, QString> open();

    /// Scrolls up to older messages.
    void lookBack();
    tl::expected<SaidAnswer, QString> say(const SayRequest &request);
    tl::expected<HeardAnswer, QString> hear(const HearRequest &request);

private:
    struct Saying;

    tl::expected<void, QString> signIn();
    tl::expected<void, QString> connectSocket();
    [[nodiscard]] vynlex::ChatVC *screen() const;
    [[nodiscard]] QVariant cell(int row, const char *role) const;
    [[nodiscard]] tl::expected<Saying, QString> whatToSay(const SayRequest &request);
    [[nodiscard]] tl::expected<QString, QString> record(const Saying &saying, const SayRequest &request);
    [[nodiscard]] tl::expected<void, QString> preview(const QString &name);
    [[nodiscard]] tl::expected<void, QString> play(int row, const HearRequest &request, const QString &wavFile);
    [[nodiscard]] tl::expected<QString, QString> storedText(const QString &messageId) const;
    [[nodiscard]] QString pictureName(const QString &name, const char *state) const;

    const Person m_person;
    Stage &m_stage;
    Room &m_room;
    const Device &m_device;
    Album m_album;
    VoiceActor m_actor;
    std::map<QString, qint64> m_arrivals; ///< Messages that came over the socket, and when.
};

} // namespace host
