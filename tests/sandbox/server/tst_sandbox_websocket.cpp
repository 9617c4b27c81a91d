#include "sandbox/server/Server.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/json/parse.hpp>

#include <QTest>

#include <memory>

#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/sandbox/server/RunningServer.h"
#include "tests/sandbox/server/TestClient.h"

using namespace sandbox;
namespace asio = boost::asio;
using boost::system::error_code;
using boost::system::system_error;
using namespace vynlex;

namespace {

const std::string host = "west.stt.example.com";

asio::awaitable<void> sendNumber(std::shared_ptr<WebSocketConnection> connection, int number)
{
    co_await connection->sendText(std::to_string(number) + std::string(static_cast<std::size_t>(number) * 1000, '.'));
}

/// Echoes; "burst" is answered by several writers at once.
asio::awaitable<void> serve(std::shared_ptr<WebSocketConnection> connection, const HttpRequest &)
{
    for (;;) {
        const auto message = co_await connection->read();
        if (!message)
            co_return;
        if (message->data == "burst") {
            for (int i = 0; i < 100; ++i)
                asio::co_spawn(connection->executor(), sendNumber(connection, i), asio::detached);
        } else if (message->binary) {
            co_await connection->sendBinary(message->data);
        } else {
            co_await connection->sendText(message->data);
        }
    }
}

void addSocket(ServerContext &context)
{
    WebSocketHandler handler;
    handler.refuse = [](const HttpRequest &request) -> std::optional<HttpResponse> {
        if (request["Ocp-Apim-Subscription-Key"] == "good")
            return std::nullopt;
        return textResponse(401, "wrong key");
    };
    handler.serve = serve;
    handler.maxMessageBytes = 200'000;
    context.router.addWebSocket("*.stt.example.com", "/listen", handler);
}

const Headers key{{"Ocp-Apim-Subscription-Key", "good"}};

} // namespace

class SandboxWebSocketTest : public QObject {
    Q_OBJECT

    RunningServer m_server{addSocket};

    void switchOn(const char *fault) { m_server.faults().add(boost::json::array{boost::json::parse(fault)}); }
    std::unique_ptr<TestClient> socket(Way way = Way::Direct)
    {
        auto client = std::make_unique<TestClient>(m_server.listening(), host, way);
        client->upgrade("/listen", key);
        return client;
    }

private slots:
    void cleanup() { m_server.faults().clear(); }

    void aRefusalGoesOutInsteadOfTheUpgrade()
    {
        TestClient client(m_server.listening(), host);
        QCOMPARE(client.upgrade("/listen", {{"Ocp-Apim-Subscription-Key", "bad"}}), 401U);
        QCOMPARE(TestClient(m_server.listening(), host).upgrade("/elsewhere", key), 404U);
        QCOMPARE(TestClient(m_server.listening(), host).request("GET", "/listen", key).status, 426U);
    }

    void manyWritersKeepTheirOrderAndTheirMessagesWhole()
    {
        const auto client = socket();
        client->sendText("burst");
        for (std::size_t i = 0; i < 100; ++i)
            QCOMPARE(client->receive().text, std::to_string(i) + std::string(i * 1000, '.'));
    }

    void aMessageBeyondTheLimitEndsTheConnection()
    {
        const auto client = socket();
        client->sendText(std::string(200'001, 'x'));
        QCOMPARE(client->receive().closeCode.value_or(0), 1009);
    }

    void pingsAreAnsweredUnlessPongsAreDropped()
    {
        const auto well = socket();
        well->sendPing();
        well->sendText("after the pong");
        QCOMPARE(well->receive().text, "after the pong");
        QCOMPARE(well->pongs(), 1);

        switchOn(R"({"kind":"dropPongs","times":1})");
        const auto ill = socket();
        // Frames of every header size, and bodies full of what looks like a pong's first byte, come through whole.
        for (const std::size_t size : {2U, 124U, 126U, 65534U, 65536U, 190'000U}) {
            ill->sendPing();
            const std::string data(size, '\x8a');
            ill->sendBinary(data);
            QCOMPARE(ill->receive().text, data);
        }
        QCOMPARE(ill->pongs(), 0);
    }

    void aSocketClosesAfterSoManyMessages()
    {
        switchOn(R"({"host":"*.stt.example.com","kind":"close","code":1011,"reason":"as told","afterMessages":2})");
        const auto client = socket();
        for (const char *text : {"one", "two"}) {
            client->sendText(text);
            QCOMPARE(client->receive().text, text);
        }
        const auto event = client->receive();
        QCOMPARE(event.closeCode.value_or(0), 1011);
        QCOMPARE(event.closeReason, "as told");
    }

    void aSocketIsLost_data()
    {
        addRows<QByteArray, int, error_code>({
            {"after a message", R"({"kind":"reset","afterMessages":1})", 1, error_code(asio::error::connection_reset)},
            {"within a message", R"({"kind":"truncate"})", 0, error_code(asio::ssl::error::stream_truncated)},
        });
    }
    void aSocketIsLost()
    {
        const auto [fault, messagesBefore, reason] = currentRow<QByteArray, int, error_code>();
        switchOn(fault.constData());
        const auto client = socket(Way::ThroughProxy);
        client->sendText("one");
        try {
            for (int i = 0; i < messagesBefore; ++i)
                QCOMPARE(client->receive().text, "one");
            client->receive();
            QFAIL("still connected");
        } catch (const system_error &error) {
            QVERIFY2(error.code() == reason, error.what());
        }
    }

    void aSocketFallsSilent()
    {
        switchOn(R"({"kind":"silence","afterMessages":1,"times":1})");
        {
            const auto client = socket();
            for (const char *text : {"one", "two", "three"})
                client->sendText(text);
            QCOMPARE(client->receive().text, "one");
            m_server.faults().clear();
        }
        // What came in after it was read all the same.
        TRY_VERIFY(!m_server.log().recent().empty() &&
                   m_server.log().recent().back().at("messagesReceived").to_number<int>() == 3);
    }

    void anUpgradeMeetsTheFaultsOfItsRoute()
    {
        switchOn(R"({"kind":"status","status":429,"times":1})");
        QCOMPARE(TestClient(m_server.listening(), host).upgrade("/listen", key), 429U);
        switchOn(R"({"kind":"reset","times":1})");
        QVERIFY_EXCEPTION_THROWN(TestClient(m_server.listening(), host).upgrade("/listen", key), system_error);
        QCOMPARE(TestClient(m_server.listening(), host).upgrade("/listen", key), 101U);
    }

    void stoppingDropsOpenSocketsAndWhatWaitsToBeSent()
    {
        auto server = std::make_unique<RunningServer>(addSocket);
        TestClient client(server->listening(), host);
        client.upgrade("/listen", key);
        client.sendText("burst"); // five megabytes, of which the sockets' buffers hold only a part
        QVERIFY(client.receive().text.starts_with("0"));
        server.reset();
        QVERIFY_EXCEPTION_THROWN(while (true) client.receive(), system_error);
    }
};

template struct vynlex::InSuite<SandboxWebSocketTest>;

#include "tst_sandbox_websocket.moc"
