#include "platform/audio/QtAudioEngine.h"
#include "platform/audio/QtAudioPlayer.h"
#include "platform/audio/QtAudioSession.h"
#include "platform/contacts/DeviceContactStore.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/SystemClock.h"
#include "platform/net/BeastSocketWorker.h"
#include "platform/net/CurlHttpTransport.h"
#include "platform/network/DeviceReachabilitySource.h"
#include "platform/network/PathWatchingSource.h"
#include "platform/speech/CloudSpeechService.h"
#include "platform/storage/QSettingsUserDefaults.h"

namespace vynlex {

Platform Platform::shipped()
{
    Platform platform;
    platform.clock = std::make_shared<SystemClock>();
    platform.userDefaults = std::make_shared<QSettingsUserDefaults>();
    platform.makeHttpTransport = [](const HttpSessionConfiguration &configuration) {
        return std::make_unique<CurlHttpTransport>(configuration);
    };
    platform.httpSession = std::make_shared<CurlHttpTransport>();
    const auto sockets = std::make_shared<BeastSocketWorker>();
    platform.socketWorker = sockets;
    platform.makeAudioEngine = [] { return std::make_unique<QtAudioEngine>(); };
    platform.makeAudioPlayer = [] { return std::make_unique<QtAudioPlayer>(); };
    platform.audioSession = std::make_shared<QtAudioSession>();
    platform.contactStore = std::make_shared<DeviceContactStore>();
    // A connection over Wi-Fi is dead on the cellular network, and would find out when a write is not acknowledged.
    platform.makeReachabilitySource = [weakSockets = std::weak_ptr(sockets)] {
        return std::make_unique<PathWatchingSource>(std::make_unique<DeviceReachabilitySource>(), [weakSockets] {
            if (const auto alive = weakSockets.lock())
                alive->pathChanged();
        });
    };
    // Through the current platform: a host that brings its own loudspeaker means speech above all.
    platform.speechService = std::make_shared<CloudSpeechService>(
        platform.socketWorker, [] { return Platform::current()->makeAudioPlayer(); });
    return platform;
}

} // namespace vynlex
