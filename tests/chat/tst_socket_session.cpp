#include <QTest>

#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Secrets.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace {

const QByteArray chatMessage =
    QByteArray("{\"event\":\"chatMessage\",\"data\":{\"_id\":\"m1\",\"threadId\":\"T1\",\"createdBy\":\"asha\","
               "\"messageComponent\":{\"text\":\"") +
    secrets::chatText.data() + "\"}}}";

/// "login", "amAlive" or, of an acknowledgement, "ack" and what it is for.
QString describe(const QByteArray &request)
{
    const QJsonObject json = QJsonDocument::fromJson(request).object();
    const QJsonValue original = json[u"data"][u"originalEvent"];
    return json[u"event"].toString() + (original.isString() ? u' ' + original.toString() : QString());
}

QStringList describe(const std::vector<FakeSocketMessage> &messages)
{
    QStringList all;
    for (const FakeSocketMessage &message : messages)
        all << (message.kind == FakeSocketMessage::Kind::Binary ? describe(message.data) : u"text"_s);
    return all;
}

} // namespace

class TestSocketMessages : public QObject {
    Q_OBJECT

private slots:
    void whatIsSent()
    {
        const auto sent = [](const SocketRequest &request) { return encodeJson(request); };
        QCOMPARE(sent(LoginSocketRequest(u"a\"b"_s)), "{\"data\":{\"token\":\"a\\\"b\"},\"event\":\"login\"}");
        QCOMPARE(LoginSocketRequest({}).data.at(u"token"_s), QString());
        QCOMPARE(sent(AmAliveSocketRequest(u"a.b"_s)), "{\"data\":{\"token\":\"a.b\"},\"event\":\"amAlive\"}");
        QCOMPARE(AmAliveSocketRequest({}).data.at(u"token"_s), u"(null)"_s);

        const qint64 before = QDateTime::currentSecsSinceEpoch();
        const AckSocketRequest acknowledgement(u"नया"_s);
        const qint64 after = QDateTime::currentSecsSinceEpoch();
        const QString time = acknowledgement.data.at(u"timestamp"_s);
        QVERIFY(time.toLongLong() >= before && time.toLongLong() <= after);
        QCOMPARE(sent(acknowledgement),
                 "{\"data\":{\"originalEvent\":\"नया\",\"timestamp\":\"" + time.toUtf8() + "\"},\"event\":\"ack\"}");
    }
};

class TestSocketSession : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_session.reset();
        m_platform = std::make_unique<TestPlatform>();
        m_session = std::make_unique<VLWebSocketManager>(VLApiServer::staging, secrets::jwt);
        m_session->isConnectedToNetwork = true;
        m_session->isUserJoinedMeeting = true;
    }

    void theHolderStartsASessionThatFeedsTheChat()
    {
        VLApiManager api;
        ChatViewModel chat(api);
        chat.receivedID = u"asha"_s;
        SocketManager holder(chat);
        holder.start(); // without a session
        holder.webSocketManager = std::make_unique<VLWebSocketManager>(VLApiServer::demo, secrets::jwt);
        holder.start();
        QVERIFY(holder.webSocketManager->isStartedManually);
        settle();
        QCOMPARE(server().request().url, QUrl(u"wss://socket.demo.confera.example/ws"_s));
        QVERIFY(server().request().headers.empty());
        QCOMPARE(server().request().connectTimeout, 20s);
        server().connected();
        settle();
        QCOMPARE(server().takeSent(),
                 (std::vector<FakeSocketMessage>{
                     {FakeSocketMessage::Kind::Binary, encodeJson<SocketRequest>(LoginSocketRequest(secrets::jwt))}}));
        server().text(chatMessage);
        settle();
        QCOMPARE(chat.aryMessages.size(), 1U);
        QVERIFY(chat.aryMessages.front().isIncomingMessage);
        m_platform->clock->advance(50s);
        settle();
        QCOMPARE(describe(server().takeSent()), (QStringList{u"ack chatMessage"_s, u"amAlive"_s, u"amAlive"_s}));

        const FakeSocket first = server();
        holder.webSocketManager = std::make_unique<VLWebSocketManager>(VLApiServer::demo, u"d.e.f"_s);
        holder.start();
        settle();
        QVERIFY(!first.isAlive());
        QVERIFY(server().isConnecting());
        QCOMPARE(m_platform->clock->runningTimers(), 0U);
    }

    void connectingIsRefusedWhile()
    {
        using Prepare = std::function<void(VLWebSocketManager &)>;
        for (const auto &[prepare, sockets] : std::initializer_list<std::pair<Prepare, int>>{
                 {[](auto &) {}, 1},
                 {[](auto &session) { session.connect(); }, 1}, // it connects
                 {[](auto &session) { session.isSocketConnected = true; }, 0},
                 {[](auto &session) { session.useCustomSocketMessages = true; }, 0},
                 {[](auto &session) { session.isConnectedToNetwork = false; }, 0}}) {
            init();
            prepare(*m_session);
            m_session->connect();
            settle();
            QCOMPARE(m_platform->socketWorker->socketCount(), sockets);
        }
    }

    void whatAnEventDoesToASessionThatStands_data()
    {
        using namespace websocket;
        addRows<WebSocketEvent, bool, bool, int, std::size_t>({
            // connected, connecting, connections made, timers running
            {"disconnected", Disconnected{{}, 1000}, false, false, 1, 1},
            {"error", Error{{}}, false, true, 2, 0},
            {"another path", ReconnectSuggested{true}, false, true, 2, 0},
            {"no other path", ReconnectSuggested{false}, true, false, 1, 1},
            {"cancelled", Cancelled{}, false, false, 1, 0},
            {"ended without a word", PeerClosed{}, true, false, 1, 1},
            {"binary", Binary{chatMessage}, true, false, 1, 1},
            {"ping", Ping{}, true, false, 1, 1},
            {"pong", Pong{}, true, false, 1, 1},
            {"viability", ViabilityChanged{false}, true, false, 1, 1},
        });
    }
    void whatAnEventDoesToASessionThatStands()
    {
        const auto [event, connected, connecting, sockets, timers] =
            currentRow<WebSocketEvent, bool, bool, int, std::size_t>();
        standing();
        m_session->didReceive(event, *m_session->socketConnection);
        QCOMPARE(m_session->isSocketConnected, connected);
        QCOMPARE(m_session->isSocketInConnectingState, connecting);
        settle();
        QCOMPARE(m_platform->socketWorker->socketCount(), sockets);
        QCOMPARE(m_platform->clock->runningTimers(), timers);
        QVERIFY(server().sent().empty());
        QCOMPARE(m_session->amAliveTimer != nullptr, timers > 0);
        QVERIFY(!m_session->pendingRequests.size());
    }

    void anErrorBeforeTheFirstConnectionOrWhereNoneMayFollowIsTheEnd()
    {
        standing();
        m_session->isUserJoinedMeeting = false;
        server().deliver(websocket::Error{{}});
        settle();
        QVERIFY(m_session->isSocketConnected);
        QCOMPARE(m_platform->socketWorker->socketCount(), 1);

        init();
        m_session->connect();
        m_platform->socketWorker->advance(20s); // the limit for connecting
        settle();
        QVERIFY(server().hasEnded());
        QVERIFY(m_session->isSocketInConnectingState);
        m_session->connect();
        settle();
        QCOMPARE(m_platform->socketWorker->socketCount(), 1);
    }

    void keepAlivesOfADisconnectedSessionPileUp()
    {
        standing();
        server().disconnected(1001, u"going away"_s);
        settle();
        m_platform->clock->advance(25s);
        QCOMPARE(pending(), QStringList{u"amAlive"_s});

        // Another connection starts another timer; the one before goes on beside it, and closing does not stop
        // it.
        m_session->connect();
        settle();
        server().connected();
        settle();
        m_platform->clock->advance(25s);
        settle();
        QCOMPARE(describe(server().takeSent()), (QStringList{u"login"_s, u"amAlive"_s, u"amAlive"_s}));
        m_session->disconnect();
        settle();
        QCOMPARE(server().closing(), (FakeSocketClose{1000, {}}));
        m_platform->clock->advance(25s);
        QCOMPARE(pending(), (QStringList{u"amAlive"_s, u"amAlive"_s}));
        m_session.reset();
        QCOMPARE(m_platform->clock->runningTimers(), 0U);
    }

    void aClosedConnectionStillTellsItsEnd()
    {
        standing();
        FakeSocket first = server();
        first.deliver(websocket::ReconnectSuggested{true});
        settle();
        QCOMPARE(first.closing(), (FakeSocketClose{1000, {}}));
        server().connected();
        settle();
        QVERIFY(m_session->isSocketConnected);
        first.disconnected(1000, {});
        settle();
        QVERIFY(!first.isAlive());
        QVERIFY(!m_session->isSocketConnected); // although the second one stands
        server().text(chatMessage);
        settle();
        QCOMPARE(pending(), QStringList{u"ack chatMessage"_s});

        const FakeSocket second = server();
        server().deliver(websocket::Error{{}});
        settle();
        QVERIFY(!second.isAlive());
        QVERIFY(server().isConnecting());
        QCOMPARE(m_platform->socketWorker->socketCount(), 3);
    }

    void nothingReachesASessionThatIsGone()
    {
        m_session->connect();
        settle();
        server().connected();
        server().text(chatMessage);
        m_session.reset(); // while both events wait for the main thread
        settle();
        QVERIFY(!server().isAlive());
        QVERIFY(server().sent().empty());

        init();
        standing();
        int heard = 0;
        m_session->onNewChatMessage = [&](const VLChatMessage &) {
            m_session.reset();
            ++heard;
        };
        server().text(chatMessage);
        server().text(chatMessage);
        settle();
        QVERIFY(!server().isAlive());
        QCOMPARE(heard, 1);

        init();
        m_session->connect();
        settle();
        m_session->didReceive(websocket::Connected{}, *m_session->socketConnection);
        QCOMPARE(m_platform->clock->runningTimers(), 0U); // It starts on a later turn.
        m_session.reset();
        settle();
        QCOMPARE(m_platform->clock->runningTimers(), 0U);
    }

private:
    [[nodiscard]] FakeSocket server() const { return m_platform->socketWorker->lastSocket(); }
    [[nodiscard]] QStringList pending() const
    {
        QStringList all;
        for (const SocketRequest &request : m_session->pendingRequests)
            all << describe(encodeJson(request));
        return all;
    }

    void settle()
    {
        for (int turn = 0; turn < 4; ++turn) {
            m_platform->socketWorker->run();
            QCoreApplication::processEvents();
        }
    }

    /// Connected and logged in, with its timer.
    void standing()
    {
        m_session->connect();
        settle();
        server().connected();
        settle();
        QCOMPARE(describe(server().takeSent()), QStringList{u"login"_s});
        QCOMPARE(m_platform->clock->runningTimers(), 1U);
    }

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLWebSocketManager> m_session;
};

template struct vynlex::InSuite<TestSocketMessages>;
template struct vynlex::InSuite<TestSocketSession>;

#include "tst_socket_session.moc"
