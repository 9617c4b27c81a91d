#include <QTest>
#include <QTestEventLoop>

#include <array>
#include <atomic>

#include "chat/VLWebSocketManager.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"
#include "tests/platform/net/Frames.h"
#include "tests/platform/net/TappedSockets.h"
#include <malloc.h>

using namespace Qt::StringLiterals;
using namespace vynlex;

/// A server that resets every connection once its ten messages are acknowledged.
class TestSocketSoak : public QObject {
    Q_OBJECT

private slots:
    void aThousandReconnects()
    {
        const LocalServer server([this](Peer &peer) { serve(peer); });
        const TestPlatform fakes;
        Platform platform = *Platform::current();
        platform.socketWorker = TappedSockets::toLoopback(server.port());
        Platform::install(std::move(platform));

        VLWebSocketManager session(VLApiServer::demo, secrets::jwt);
        session.isConnectedToNetwork = true;
        session.isUserJoinedMeeting = true;
        int heard = 0;
        QTestEventLoop loop; // which, unlike waiting for a condition, does not sleep between events
        std::array<std::size_t, 2> usedBytes{};
        session.onNewChatMessage = [&](const VLChatMessage &) {
            ++heard;
            if (heard == 100 || heard == connections)
                usedBytes[heard == 100 ? 0 : 1] = mallinfo2().uordblks;
            if (heard > connections)
                loop.exitLoop();
        };
        session.connect();
        loop.enterLoopMSecs(patienceMs);
        TRY_COMPARE(m_served.load(), connections + 1);
        QCOMPARE(m_wrong.copy(), QByteArrayList());
        QCOMPARE(heard, connections + 1);
        QVERIFY(session.isSocketConnected);
        QVERIFY(session.pendingRequests.empty());
        TRY_COMPARE(fakes.clock->runningTimers(), 1U);
        // What a connection leaves behind. Sanitizers' allocators tell nothing.
        const auto grownBytes = static_cast<double>(usedBytes[1]) - static_cast<double>(usedBytes[0]);
        QVERIFY2(grownBytes / connections < 32, qPrintable(QString::number(grownBytes)));
    }

private:
    static constexpr int connections = 1000;

    void serve(Peer &peer)
    {
        upgrade(peer);
        expect(peer, "\"login\"");
        for (int i = 0; i < 9; ++i)
            peer.write(frame(TextFrame, "{\"event\":\"number " + QByteArray::number(i) + "\"}"));
        peer.write(frame(TextFrame, "{\"event\":\"chatMessage\",\"data\":{\"_id\":\"m\",\"threadId\":\"T\"}}"));
        for (int i = 0; i < 9; ++i)
            expect(peer, "\"number " + QByteArray::number(i) + '"');
        expect(peer, "\"chatMessage\"");
        if (++m_served > connections)
            drain(peer);
        else
            peer.resetAtEnd();
    }

    void expect(Peer &peer, const QByteArray &word)
    {
        const Frame received = readFrame(peer);
        if (received.opcode != BinaryFrame || !received.payload.contains(word))
            m_wrong.with([&](QByteArrayList &all) { all << word + " is not in " + received.payload; });
    }

    std::atomic<int> m_served = 0;
    Guarded<QByteArrayList> m_wrong;
};

template struct vynlex::InSuite<TestSocketSoak>;

#include "tst_socket_soak.moc"
