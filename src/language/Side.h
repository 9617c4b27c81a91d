#pragma once

namespace vynlex {

/// The two people of a conversation: the speaker holds the device, the listener sits opposite.
enum class Side { Speaker, Listener };

[[nodiscard]] constexpr Side otherSide(Side side)
{
    return side == Side::Speaker ? Side::Listener : Side::Speaker;
}

} // namespace vynlex
