#pragma once

namespace vynlex {

/// Sets the shared audio session up so that speech comes from the loudspeaker while the microphone stays usable.
class AudioManager {
public:
    /// Any thread. A failure is a console line, and speaking goes on regardless.
    static void setUpAudioSession();
};

} // namespace vynlex
