#include "tests/fakes/TestPlatform.h"

namespace vynlex {

TestPlatform::TestPlatform()
{
    Platform platform;
    platform.clock = clock;
    platform.userDefaults = userDefaults;
    platform.httpSession = network->makeSession();
    platform.makeHttpTransport = network->sessionFactory();
    platform.speechService = speechService;
    platform.socketWorker = socketWorker;
    platform.makeAudioEngine = [audio = audio] { return audio->makeEngine(); };
    platform.makeAudioPlayer = [audio = audio] { return audio->makePlayer(); };
    platform.audioSession = audio->session();
    platform.makeReachabilitySource = [path = networkPath] { return path->makeSource(); };
    Platform::install(std::move(platform));
}

} // namespace vynlex
