#pragma once

#include <memory>

#include "platform/device/Platform.h"
#include "tests/fakes/FakeAudio.h"
#include "tests/fakes/FakeClock.h"
#include "tests/fakes/FakeContactStore.h"
#include "tests/fakes/FakeHttpTransport.h"
#include "tests/fakes/FakeReachabilitySource.h"
#include "tests/fakes/FakeSocketWorker.h"
#include "tests/fakes/FakeSpeechService.h"
#include "tests/fakes/MemoryUserDefaults.h"

namespace vynlex {

/// A device made of fakes, installed as the current platform when it is made. One per test, on the main thread.
struct TestPlatform {
    TestPlatform();

    const std::shared_ptr<FakeClock> clock = std::make_shared<FakeClock>();
    const std::shared_ptr<MemoryUserDefaults> userDefaults = std::make_shared<MemoryUserDefaults>();
    const std::shared_ptr<FakeHttpNetwork> network = std::make_shared<FakeHttpNetwork>();
    const std::shared_ptr<FakeSocketWorker> socketWorker = std::make_shared<FakeSocketWorker>();
    const std::shared_ptr<FakeSpeechService> speechService = std::make_shared<FakeSpeechService>();
    const std::shared_ptr<FakeAudio> audio = std::make_shared<FakeAudio>();
    const std::shared_ptr<FakeContactStore> contactStore = std::make_shared<FakeContactStore>();
    const std::shared_ptr<FakeNetworkPath> networkPath = std::make_shared<FakeNetworkPath>();
};

/// Runs what is on the main queue by now.
void settle();

} // namespace vynlex
