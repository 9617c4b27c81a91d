#include <QTest>
#include <QTestEventLoop>

#include <atomic>
#include <filesystem>
#include <iterator>

#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/VLWebSocketManager.h"
#include "language/LanguageTranslation.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/speech/CloudSpeechService.h"
#include "screens/ChatVC.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/TestPlatform.h"
#include "tests/platform/net/Frames.h"
#include "tests/platform/net/TappedSockets.h"
#include "translation/SpeachToTextViewModel.h"
#include "translation/TextToSpeachViewModel.h"
#include <malloc.h>

using namespace vynlex;
using namespace Qt::StringLiterals;

namespace {

class SilentPlayer final : public AudioPlayer {
public:
    tl::expected<void, QString> start(const AudioFormat & /*format*/) override { return {}; }
    void write(const QByteArray & /*pcm*/) override {}
    void finish(Ended ended) override { ended({}); }
    void stop() override {}
};

std::ptrdiff_t countOf(const char *folder)
{
    return std::distance(std::filesystem::directory_iterator(folder), {});
}

struct Held {
    std::ptrdiff_t threads = countOf("/proc/self/task");
    std::ptrdiff_t descriptors = countOf("/proc/self/fd");
    std::size_t bytes = mallinfo2().uordblks; ///< A sanitizer's allocator tells nothing.
};

} // namespace

/// What is begun and ended a thousand times leaves nothing behind: shipped speech client and sockets, over loopback.
class TestSoak : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_connections = 0;
        m_server = std::make_unique<LocalServer>([this](Peer &peer) {
            upgrade(peer);
            ++m_connections;
            ++m_meetings;
            drain(peer);
            --m_connections;
        });
        m_fakes = std::make_unique<TestPlatform>();
        connectTo(*m_server);
        Platform platform = *Platform::current();
        platform.makeAudioPlayer = [] { return std::make_unique<SilentPlayer>(); };
        platform.speechService = std::make_shared<CloudSpeechService>(platform.socketWorker, platform.makeAudioPlayer);
        Platform::install(std::move(platform));
        m_api = std::make_unique<VLApiManager>();
        m_api->translatedConfig = VLTranslationConfig(secrets::speechKey, u"testregion"_s, secrets::translationKey);
        m_languages = std::make_unique<LanguageTranslation>(m_fakes->userDefaults);
    }

    void cleanup()
    {
        // What was begun on other threads ends before the objects that it was given go.
        const FakeAudio &audio = *m_fakes->audio;
        TRY_VERIFY(audio.captureCount() == 0 || !audio.lastCapture().isAlive());
        TRY_COMPARE(m_connections.load(), 0);
    }

    void recognitionsThatAreStoppedLeaveNothing()
    {
        auto model = std::make_shared<SpeachToTextViewModel>(*m_api, *m_languages);
        repeat(256, [&](int i) {
            model->startSpeechRecognition(i % 2 == 0, [](const QString &, std::int64_t) {});
            meet(i);
            model->stopSpeechRecognition();
        });
    }

    void textsThatAreStoppedLeaveNothing()
    {
        TextToSpeachViewModel model(*m_api, *m_languages);
        std::atomic<int> speaking = 0;
        repeat(256, [&](int i) {
            ++speaking;
            const auto call = model.announce();
            GlobalQueue::async([&, call] {
                model.speakText(call, u"नमस्ते"_s, true, {}, [] {});
                --speaking;
            });
            meet(i);
            model.stopSpeaking();
            if (i % 8 == 0)
                TRY_COMPARE(speaking.load(), 0);
        });
        TRY_COMPARE(speaking.load(), 0);
    }

    void chatsThatAreLeftLeaveNothing()
    {
        ChatViewModel chat(*m_api);
        FakeHttpNetwork &backend = *m_fakes->network;
        repeat(4096, [&](int i) {
            const auto root = std::make_shared<ViewController>();
            const auto screen = std::make_shared<ChatVC>(chat, *m_api, *m_languages);
            screen->userModel = {u"asha"_s, u"Asha"_s, {}, u"98765"_s};
            root->present(screen, Animated::No);
            if (i % 2 == 0) // else it is left before the backend has answered
                backend.answer(backend.requestCount() - 1, 200, R"({"_id":"T1"})");
            if (i % 4 == 0)
                backend.answer(backend.requestCount() - 1, 200, R"({"messages":[{"_id":"m","threadId":"T1"}]})");
            if (i % 3 == 0) // left in the middle of a recording
                screen->voiceChatAction();
        });
    }

    void connectionsThatAreLostLeaveNothing()
    {
        const LocalServer server([this](Peer &peer) { hearAcknowledgements(peer); });
        connectTo(server);
        VLWebSocketManager session(VLApiServer::demo, secrets::jwt);
        session.isConnectedToNetwork = true;
        session.isUserJoinedMeeting = true;
        QTestEventLoop loop; // which, unlike waiting for a condition, does not sleep between events
        session.onNewChatMessage = [&](const VLChatMessage &) { loop.exitLoop(); };
        session.connect();
        repeat(64, [&](int) {
            loop.enterLoopMSecs(patienceMs);
            QVERIFY(!loop.timeout());
        });
        QCOMPARE(m_wrong.copy(), QByteArrayList());
        QVERIFY(session.pendingRequests.empty());
        QVERIFY(m_fakes->clock->runningTimers() <= 1U);
    }

private:
    static constexpr int times = 1000;

    static void connectTo(const LocalServer &server)
    {
        Platform platform = *Platform::current();
        platform.socketWorker = TappedSockets::toLoopback(server.port());
        Platform::install(std::move(platform));
    }

    /// Sends ten messages, of which the last is one of the chat, and resets the connection once all are acknowledged.
    void hearAcknowledgements(Peer &peer)
    {
        upgrade(peer);
        QByteArrayList words{"\"login\""};
        for (int i = 0; i < 9; ++i) {
            words << "\"number " + QByteArray::number(i) + '"';
            peer.write(frame(TextFrame, "{\"event\":" + words.last() + "}"));
        }
        words << "\"chatMessage\"";
        peer.write(frame(TextFrame, "{\"event\":\"chatMessage\",\"data\":{\"_id\":\"m\",\"threadId\":\"T\"}}"));
        for (const QByteArray &word : words) {
            const Frame received = readFrame(peer);
            if (received.opcode != -1 && (received.opcode != BinaryFrame || !received.payload.contains(word)))
                m_wrong.with([&](QByteArrayList &all) { all << word + " is not in " + received.payload; });
        }
        peer.resetAtEnd();
    }

    /// Every eighth time lets the conversation with the service begin, so that it is ended at different stages.
    void meet(int i)
    {
        if (i % 8 != 0)
            return;
        for (const QDeadlineTimer end(patienceMs); m_meetings == m_earlierMeetings && !end.hasExpired();)
            settle();
        QVERIFY(m_meetings > m_earlierMeetings);
    }

    /// `bytesEach`: what the fakes may write down.
    void repeat(std::size_t bytesEach, const std::function<void(int)> &cycle)
    {
        run(times / 10, cycle);
        TRY_VERIFY(m_connections <= 1);
        const Held before;
        run(times, cycle);
        TRY_VERIFY(m_connections <= 1); // the latest recognition may stand
        const Held after;
        // Threads of the pool come and go, each with a descriptor.
        QVERIFY2(after.threads < before.threads + 20, qPrintable(QString::number(after.threads)));
        QVERIFY2(after.descriptors < before.descriptors + 20, qPrintable(QString::number(after.descriptors)));
        const std::size_t grown = after.bytes > before.bytes ? after.bytes - before.bytes : 0;
        QVERIFY2(grown < times * bytesEach, qPrintable(QString::number(grown)));
    }

    /// One more time than `count`, so that the last one meets the service, and what was queued before is over.
    void run(int count, const std::function<void(int)> &cycle)
    {
        const CapturedConsole console;
        for (int i = 0; i <= count; ++i) {
            m_earlierMeetings = m_meetings;
            cycle(i);
            settle();
        }
    }

    std::atomic<int> m_connections = 0; ///< that stand
    std::atomic<int> m_meetings = 0;
    int m_earlierMeetings = 0;
    Guarded<QByteArrayList> m_wrong;
    std::unique_ptr<LocalServer> m_server;
    std::unique_ptr<TestPlatform> m_fakes;
    std::unique_ptr<VLApiManager> m_api;
    std::unique_ptr<LanguageTranslation> m_languages;
};

QTEST_MAIN(TestSoak)
#include "tst_soak.moc"
