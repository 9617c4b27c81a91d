#pragma once

#include <QString>

#include <memory>
#include <tl/expected.hpp>

#include "Album.h"
#include "Room.h"
#include "Stage.h"
#include "Transcript.h"
#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageOption.h"

namespace host {

/// Plays people who use the conversation screen: they choose languages, press buttons, speak, read and listen.
///
/// Main thread. Every wait has a limit, and what did not come through is one clear line.
class ConversationPlayer {
public:
    /// Pictures and sound go into `folder`.
    ConversationPlayer(Stage &stage, Room &room, const QString &folder);

    /// Opens the conversation screen over the host's page, and closes it again.
    void openScreen();
    void closeScreen();

    /// Through the picker, unless the side has this language already.
    tl::expected<void, QString> chooseLanguage(vynlex::Side side, vynlex::LanguageOption language);

    /// One turn: `side` says the recording, and the other side has the translation read aloud. Files are named after
    /// `name`.
    tl::expected<TurnRecord, QString> playTurn(vynlex::Side side, const QString &wavFile, const QString &name);

    /// Pictures of every state of every screen, as the conversation goes by.
    tl::expected<void, QString> takePicturesOfEveryState(const QString &wavFile,
                                                         const std::function<void()> &holdTranslation);

private:
    struct Half;
    [[nodiscard]] Half half(vynlex::Side side) const;

    Stage &m_stage;
    Room &m_room;
    Album m_album;
    std::shared_ptr<vynlex::ConversationTranslateVC> m_screen;
};

} // namespace host
