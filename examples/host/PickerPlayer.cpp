#include "PickerPlayer.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {
namespace {

constexpr int allTheWay = 8; // notches of the wheel

} // namespace

PickerPlayer::PickerPlayer(Props &props)
    : m_stage(props.stage)
    , m_hand(props.hand)
{
}

void PickerPlayer::awaitOpen()
{
    m_hand.await(u"Close"_s, QAccessible::Button);
    m_stage.settle();
}

void PickerPlayer::choose(LanguageOption language)
{
    const QString &name = languageEntry(language).displayName;
    if (!m_hand.sees(name, QAccessible::RadioButton))
        m_hand.scroll(allTheWay); // a low window has no room for all of them
    m_hand.press(name, QAccessible::RadioButton);
}

void PickerPlayer::close()
{
    m_hand.press(u"Close"_s);
    m_hand.await(u"The end of the picker"_s, [this] { return !m_hand.sees(u"Close"_s); });
    m_stage.settle();
}

} // namespace host
