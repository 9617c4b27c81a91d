#include "tests/fakes/TestPlatform.h"

#include <QCoreApplication>

#include "platform/dispatch/MainQueue.h"

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
    platform.contactStore = contactStore;
    platform.makeReachabilitySource = [path = networkPath] { return path->makeSource(); };
    Platform::install(std::move(platform));
}

void settle()
{
    bool settled = false;
    MainQueue::async([&] { settled = true; });
    while (!settled)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace vynlex
