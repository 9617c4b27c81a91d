#pragma once

#include <QString>
#include <QVariant>

#include <functional>
#include <map>
#include <memory>
#include <tl/expected.hpp>

#include "HomePlayer.h"
#include "Person.h"
#include "Props.h"
#include "screens/ChatVC.h"
#include "two/DeviceProtocol.h"

namespace host {

/// Plays a person who uses the chat screen: records voice messages, listens to them, sends them, and plays what comes.
///
/// Main thread. Every wait has a limit, and what did not come through is one clear line.
class ChatPlayer {
public:
    ChatPlayer(const Person &person, Props &props);

    enum class Past { Nothing, Messages };
    /// From the home screen, the chat with this person; `past` is what is in it already. Tells also what kept the hand
    /// from coming there.
    tl::expected<void, QString> open(const Person &partner, Past past);

    /// Makes the next message take a while to be sent, so that a picture can be taken of that; may be empty.
    std::function<void()> holdSending;

    /// Scrolls up to older messages.
    void lookBack();
    tl::expected<SaidAnswer, QString> say(const SayRequest &request);
    tl::expected<HeardAnswer, QString> hear(const HearRequest &request);

private:
    struct Saying;

    void noteArrivals();
    [[nodiscard]] vynlex::ChatVC *screen() const;
    [[nodiscard]] QVariant cell(int row, const char *role) const;
    [[nodiscard]] tl::expected<Saying, QString> whatToSay(const SayRequest &request);
    [[nodiscard]] tl::expected<QString, QString> record(const Saying &saying, const SayRequest &request);
    [[nodiscard]] tl::expected<void, QString> preview(const QString &name);
    [[nodiscard]] tl::expected<void, QString> play(int row, const HearRequest &request, const QString &wavFile);
    [[nodiscard]] QString pictureName(const QString &name, const char *state) const;

    const Person m_person;
    Stage &m_stage;
    Hand &m_hand;
    Room &m_room;
    const Device &m_device;
    Album &m_album;
    VoiceActor &m_actor;
    HomePlayer m_home;
    /// Messages that came over the socket, and when. Shared, because the kit's session lives on.
    const std::shared_ptr<std::map<QString, qint64>> m_arrivals = std::make_shared<std::map<QString, qint64>>();
};

} // namespace host
