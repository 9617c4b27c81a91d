#pragma once

#include "Props.h"
#include "language/LanguageOption.h"

namespace host {

/// Plays a person at the language picker, over whatever screen it lies. Main thread; what does not come is told by the
/// hand.
class PickerPlayer {
public:
    explicit PickerPlayer(Props &props);

    void awaitOpen();
    void choose(vynlex::LanguageOption language);
    void close();

private:
    Stage &m_stage;
    Hand &m_hand;
};

} // namespace host
