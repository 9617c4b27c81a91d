#pragma once

#include <functional>
#include <memory>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/AudioPlayer.h"
#include "platform/audio/AudioSession.h"
#include "platform/contacts/ContactStore.h"
#include "platform/dispatch/Clock.h"
#include "platform/net/HttpTransport.h"
#include "platform/net/WebSocketClient.h"
#include "platform/network/ReachabilitySource.h"
#include "platform/speech/SpeechService.h"
#include "platform/storage/UserDefaults.h"

namespace vynlex {

/// What the device supplies. One record per process; everything that the kit asks of the world goes through it.
///
/// `shared_ptr` members are one instance each; functions make a new instance per call (main thread or a global queue).
struct Platform {
    std::shared_ptr<Clock> clock;
    std::shared_ptr<UserDefaults> userDefaults;
    /// The session of default settings that everyone shares.
    std::shared_ptr<HttpTransport> httpSession;
    /// A session of one's own.
    std::function<std::unique_ptr<HttpTransport>(const HttpSessionConfiguration &)> makeHttpTransport;
    std::shared_ptr<SocketWorker> socketWorker;
    std::shared_ptr<SpeechService> speechService;
    std::function<std::unique_ptr<AudioEngine>()> makeAudioEngine;
    std::function<std::unique_ptr<AudioPlayer>()> makeAudioPlayer;
    std::shared_ptr<AudioSession> audioSession;
    std::shared_ptr<ContactStore> contactStore;
    /// A device that cannot tell has none.
    std::function<std::unique_ptr<ReachabilitySource>()> makeReachabilitySource;

    /// The shipped platform: Qt, curl, Beast, the device's microphone and loudspeaker.
    static Platform shipped();

    /// The current platform, never null. The shipped one is installed on first use unless another was installed before.
    /// Any thread.
    static std::shared_ptr<const Platform> current();

    /// Replaces the current platform; who holds something of the old one keeps it. Any thread, while the kit is idle.
    static void install(Platform platform);
};

} // namespace vynlex
