#include "sandbox/server/Server.h"

#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>
#include <boost/json/parse.hpp>

#include <QTest>

#include <memory>
#include <stdexcept>
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
    context.router.addHttp(
        "*.regions.example.com", "POST", "/echo",
        [](const HttpRequest &) -> asio::awaitable<HttpResponse> { co_return textResponse(200, "a region"); });
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
            {"another host", "POST", "/echo", "west.regions.example.com", 421U},
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
        QCOMPARE(client.request("POST", "/echo").body, "a region");
        for (const auto &[asked, status] : {std::pair{"CONNECT bank.example.com:443", "HTTP/1.1 502"},
                                            {"GET http://api.example.com/echo", "HTTP/1.1 405"}}) {
            const auto answer = rawAnswer(m_server.listening().proxyPort,
                                          asked + std::string(" HTTP/1.1\r\nHost: api.example.com\r\n\r\n"));
            QVERIFY2(answer.starts_with(status), answer.c_str());
        }
    }

    void hostileBytesEndTheirConnectionOnly()
    {
        for (const auto &[header, status] : {std::pair{"X: " + std::string(20'000, 'x'), "HTTP/1.1 431"},
                                             {"Content-Length: 99999999999\r\n\r\n", "HTTP/1.1 413"},
                                             {"Content-Length: 1\r\nContent-Length: 2\r\n\r\nab", "HTTP/1.1 400"}}) {
            TestClient hostile(m_server.listening(), apiHost);
            hostile.sendRaw("POST /echo HTTP/1.1\r\nHost: api.example.com\r\n" + header);
            const auto answer = hostile.readToEnd();
            QVERIFY2(answer.starts_with(status), answer.c_str());
        }
        QCOMPARE(TestClient(m_server.listening(), apiHost).request("POST", "/echo", {}, "alive").body, "alive");
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
        }
        QVERIFY_EXCEPTION_THROWN(TestClient(server.listening(), apiHost), system_error);
        QCOMPARE(clients.front()->request("POST", "/echo", {}, "still").body, "still");
    }

    void theControlPortTellsWhatWasServed()
    {
        RunningServer server(addEcho);
        const auto control = server.listening().controlPort;
        TestClient client(server.listening(), apiHost, Way::ThroughProxy);
        client.request("POST", "/echo?api_key=topsecret&x=1",
                       {{"Authorization", "Bearer topsecret"}, {"X-Other", "yes"}}, "12345");
        client.request("POST", "/echo");

        const auto requests = plainRequest(control, "GET", "/requests").body;
        QVERIFY(requests.find("topsecret") == std::string::npos);
        const auto first = boost::json::parse(requests).at(0);
        QCOMPARE(first.at("target").as_string(), "/echo?api_key=***&x=1");
        QCOMPARE(first.at("headers").at("X-Other").as_string(), "yes");
        QVERIFY(first.at("throughProxy").as_bool());

        const auto state = boost::json::parse(plainRequest(control, "GET", "/state").body);
        const auto total = state.at("totals").at("POST api.example.com /echo");
        QCOMPARE(total.at("requests").to_number<int>(), 2);
        QCOMPARE(total.at("byStatus").at("200").to_number<int>(), 2);
        QCOMPARE(total.at("bytesReceived").to_number<int>(), 5);

        // By a loopback name alone, or a page in a browser could ask.
        QCOMPARE(plainRequest(control, "GET", "/state", "", "rebound.example.com").status, 404U);
        QCOMPARE(client.request("GET", "/state").status, 404U);
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
