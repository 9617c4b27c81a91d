#pragma once

#include <QString>

#include <memory>

#include "Room.h"
#include "platform/dispatch/Guarded.h"

namespace host {

/// The device that the kit runs on: its own microphone and loudspeaker where there are any, the room's files otherwise.
///
/// Main thread; one per process.
class Device {
public:
    /// Becomes the kit's platform. The room must outlive the kit's work. Choices of languages are kept in
    /// `settingsFile`, unless that is empty in the user's own settings.
    Device(Room &room, const QString &settingsFile, bool headless);

    [[nodiscard]] bool hasMicrophone() const { return m_hasMicrophone; }
    /// The voice of the speech service that was asked for last.
    [[nodiscard]] QString lastVoice() const { return m_lastVoice->copy(); }

private:
    bool m_hasMicrophone = true;
    std::shared_ptr<vynlex::Guarded<QString>> m_lastVoice = std::make_shared<vynlex::Guarded<QString>>();
};

} // namespace host
