#pragma once

#include <QString>

#include <tl/expected.hpp>

#include "PickerPlayer.h"
#include "Props.h"
#include "Transcript.h"
#include "language/LanguageOption.h"

namespace host {

/// Plays people who use the conversation screen, which is open: they choose languages, press buttons, speak, read and
/// listen.
///
/// Main thread. Every wait has a limit, and what did not come through is one clear line.
class ConversationPlayer {
public:
    explicit ConversationPlayer(Props &props);

    /// Taps a side's language; what then is to be done with the picker is another's matter.
    void openPicker(vynlex::Side side);
    /// Through the picker, unless the side has this language already.
    tl::expected<void, QString> chooseLanguage(vynlex::Side side, vynlex::LanguageOption language);

    enum class Pictures { OfTheResult, OfEveryState };
    /// One turn: `side` says the recording, and the other side has the translation read aloud. Files are named after
    /// `name`.
    tl::expected<TurnRecord, QString> playTurn(vynlex::Side side, const QString &wavFile, const QString &name,
                                               Pictures pictures = Pictures::OfTheResult);
    /// A turn of which the service makes nothing: what is said is in none of the sentences that it knows.
    tl::expected<void, QString> playMisunderstanding(vynlex::Side side, const QString &wavFile);

private:
    struct Half;
    [[nodiscard]] Half half(vynlex::Side side) const;
    tl::expected<void, QString> listen(const Half &half, const QString &wavFile, const QString &name,
                                       Pictures pictures);
    tl::expected<void, QString> readAloud(const Half &half, const QString &name, Pictures pictures);

    Stage &m_stage;
    Hand &m_hand;
    Room &m_room;
    Album &m_album;
    PickerPlayer m_picker;
};

} // namespace host
