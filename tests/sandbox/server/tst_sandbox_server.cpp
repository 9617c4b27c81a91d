#include "sandbox/server/Server.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/ssl/error.hpp>
#include <boost/asio/write.hpp>
#include <boost/json/parse.hpp>

#include <QTest>

#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/sandbox/server/RunningServer.h"
#include "tests/sandbox/server/TestClient.h"

using namespace sandbox;
using namespace vynlex;
namespace asio = boost::asio;
using boost::system::system_error;

namespace {

const std::string apiHost = "api.example.com";

void addEcho(ServerContext &context)
{
    context.router.addHttp(apiHost, "POST", "/echo", [](const HttpRequest &request) -> asio::awaitable<HttpResponse> {
        co_return textResponse(200, request.body());
    });
    context.router.addHttp("*.regions.example.com", "GET", "/name",
                           [](const HttpRequest &request) -> asio::awaitable<HttpResponse> {
                               co_return textResponse(200, std::string(request["Host"]));
                           });
    context.router.addHttp(apiHost, "GET", "/fails", [](const HttpRequest &) -> asio::awaitable<HttpResponse> {
        throw std::runtime_error("as the test wants");
        co_return HttpResponse{};
    });
}

/// What the server says to `bytes` on one of its ports without TLS, until it ends the connection.
std::string rawAnswer(std::uint16_t port, const std::string &bytes)
{
    asio::io_context io;
    asio::ip::tcp::socket socket(io);
    socket.connect({asio::ip::address_v4::loopback(), port});
    asio::write(socket, asio::buffer(bytes));
    std::string answer;
    boost::system::error_code error;
    asio::read(socket, asio::dynamic_buffer(answer), error);
    return answer;
}

} // namespace

class SandboxServerTest : public QObject {
    Q_OBJECT

    RunningServer m_server{addEcho};

private slots:
    void theServedNamesAreCertifiedAndNoOther()
    {
        for (const char *host : {"api.example.com", "west.regions.example.com", "localhost", "127.0.0.1"})
            QCOMPARE(TestClient(m_server.listening(), host).request("GET", "/nothing-here").status, 404U);
        for (const char *host : {"bank.example.com", "a.west.regions.example.com"})
            QVERIFY_EXCEPTION_THROWN(TestClient(m_server.listening(), host), system_error);
    }

    void aRequestThatHasNoRouteGetsItsReason_data()
    {
        addRows<QByteArray, QByteArray, QByteArray, unsigned>({
            {"path", "POST", "/ech", "api.example.com", 404U},
            {"method", "GET", "/echo", "api.example.com", 405U},
            {"another host", "GET", "/name", "west.regions.example.com", 421U},
            {"no host", "POST", "/echo", "", 400U},
            {"cut percent sign", "POST", "/echo?a=%4", "api.example.com", 400U},
            {"handler fails", "GET", "/fails", "api.example.com", 500U},
        });
    }
    void aRequestThatHasNoRouteGetsItsReason()
    {
        const auto [method, target, host, status] = currentRow<QByteArray, QByteArray, QByteArray, unsigned>();
        TestClient client(m_server.listening(), apiHost);
        const auto answer = client.request(method.toStdString(), target.toStdString(), {{"Host", host.toStdString()}});
        QCOMPARE(answer.status, status);
        QVERIFY(!answer.body.empty());
        QCOMPARE(client.request("POST", "/echo", {}, "on").body, "on");
    }

    void theProxyTunnelsToKnownHostsOnly()
    {
        TestClient client(m_server.listening(), "west.regions.example.com", Way::ThroughProxy);
        QCOMPARE(client.request("GET", "/name").body, "west.regions.example.com");

        const auto proxy = m_server.listening().proxyPort;
        const auto unknown =
            rawAnswer(proxy, "CONNECT bank.example.com:443 HTTP/1.1\r\nHost: bank.example.com\r\n\r\n");
        QVERIFY2(unknown.starts_with("HTTP/1.1 502"), unknown.c_str());
        const auto plain =
            rawAnswer(proxy, "GET http://api.example.com/echo HTTP/1.1\r\nHost: api.example.com\r\n\r\n");
        QVERIFY2(plain.starts_with("HTTP/1.1 405"), plain.c_str());
    }

    void hostileBytesEndTheirConnectionOnly_data()
    {
        addRows<QByteArray, QByteArray>({
            {"huge header", "POST /echo HTTP/1.1\r\nHost: api.example.com\r\nX: " + QByteArray(20'000, 'x'),
             "HTTP/1.1 431"},
            {"huge body promised",
             "POST /echo HTTP/1.1\r\nHost: api.example.com\r\nContent-Length: 99999999999\r\n\r\n", "HTTP/1.1 413"},
            {"two lengths",
             QByteArray("POST /echo HTTP/1.1\r\nHost: api.example.com\r\nContent-Length: 1\r\n"
                        "Content-Length: 2\r\n\r\nab"),
             "HTTP/1.1 400"},
        });
    }
    void hostileBytesEndTheirConnectionOnly()
    {
        const auto [bytes, begins] = currentRow<QByteArray, QByteArray>();
        TestClient hostile(m_server.listening(), apiHost);
        hostile.sendRaw(bytes.toStdString());
        const auto answer = QByteArray::fromStdString(hostile.readToEnd());
        QVERIFY2(answer.startsWith(begins), answer.constData());

        TestClient other(m_server.listening(), apiHost);
        QCOMPARE(other.request("POST", "/echo", {}, "alive").body, "alive");
    }

    void aClientThatDribblesIsCutOff()
    {
        ServerOptions options;
        options.limits.header = std::chrono::milliseconds(50);
        options.limits.body = std::chrono::milliseconds(50);
        options.limits.handshake = std::chrono::milliseconds(200);
        RunningServer server(addEcho, options);
        QCOMPARE(rawAnswer(server.listening().tlsPort, "\x16"), ""); // a TLS record that never comes
        QCOMPARE(rawAnswer(server.listening().proxyPort, "CONNECT api.exam"), "");
        QCOMPARE(rawAnswer(server.listening().controlPort, "GET /state HTTP/1.1\r\nHo"), "");
        QCOMPARE(rawAnswer(server.listening().controlPort,
                           "POST /faults HTTP/1.1\r\nHost: localhost\r\nContent-Length: 10\r\n\r\n["),
                 "");
    }

    void connectionsBeyondTheLimitAreClosed()
    {
        ServerOptions options;
        options.mostConnections = 3;
        RunningServer server(addEcho, options);
        std::vector<std::unique_ptr<TestClient>> clients;
        for (int i = 0; i < 3; ++i) {
            clients.push_back(std::make_unique<TestClient>(server.listening(), apiHost));
            QCOMPARE(clients.back()->request("POST", "/echo", {}, "in").body, "in");
        }
        QVERIFY_EXCEPTION_THROWN(TestClient(server.listening(), apiHost), system_error);
        QCOMPARE(clients.front()->request("POST", "/echo", {}, "still").body, "still");
    }

    void theControlPortAnswersToLoopbackNamesOnly()
    {
        const auto port = m_server.listening().controlPort;
        QCOMPARE(plainRequest(port, "GET", "/state").status, 200U);
        QCOMPARE(plainRequest(port, "GET", "/state", "", "rebound.example.com").status, 404U);
        QVERIFY(TestClient(m_server.listening(), apiHost).request("GET", "/state").status == 404U);
    }

    void theControlPortTellsWhatWasServed()
    {
        RunningServer server(addEcho);
        TestClient client(server.listening(), apiHost, Way::ThroughProxy);
        client.request("POST", "/echo?api_key=topsecret&x=1",
                       {{"Authorization", "Bearer topsecret"}, {"X-Other", "yes"}}, "12345");
        client.request("POST", "/echo");

        const auto requests = plainRequest(server.listening().controlPort, "GET", "/requests").body;
        QVERIFY(requests.find("topsecret") == std::string::npos);
        const auto first = boost::json::parse(requests).at(0);
        QCOMPARE(first.at("target").as_string(), "/echo?api_key=***&x=1");
        QCOMPARE(first.at("headers").at("X-Other").as_string(), "yes");
        QVERIFY(first.at("throughProxy").as_bool());

        const auto state = boost::json::parse(plainRequest(server.listening().controlPort, "GET", "/state").body);
        const auto total = state.at("totals").at("POST api.example.com /echo");
        QCOMPARE(total.at("requests").to_number<int>(), 2);
        QCOMPARE(total.at("byStatus").at("200").to_number<int>(), 2);
        QCOMPARE(total.at("bytesReceived").to_number<int>(), 5);
    }

    void aPortInUseIsReported()
    {
        ServerOptions options;
        options.tlsPort = m_server.listening().tlsPort;
        QVERIFY_EXCEPTION_THROWN(RunningServer(addEcho, options), std::runtime_error);
    }
};

template struct vynlex::InSuite<SandboxServerTest>;

SUITE_MAIN(QCoreApplication)

#include "tst_sandbox_server.moc"
