#pragma once

#include "platform/audio/AudioEngine.h"

namespace vynlex {

/// The device's default microphone, through QtMultimedia.
///
/// The hardware format is the device's preferred rate, up to 2 channels, and Int16 samples unless it prefers floating
/// point. Asking for it and starting wait for the sound server (5 s at most).
class QtAudioEngine final : public AudioEngine {
public:
    /// A device that was taken away says nothing; it is noticed after so long without sound.
    static constexpr int watchdogMs = 2000;

    QtAudioEngine();
    ~QtAudioEngine() override;

    [[nodiscard]] AudioFormat inputFormat() const override;
    void installTap(int bufferFrames, Tap tap) override;
    void removeTap() override;
    void prepare() override;
    tl::expected<void, QString> start() override;
    void stop() override;

private:
    struct Capture;
    std::shared_ptr<Capture> m_capture;
};

} // namespace vynlex
