#include "sandbox/server/Server.h"

#include <boost/json/parse.hpp>

#include <QElapsedTimer>
#include <QTest>

#include "tests/fakes/Patience.h"
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
const std::string text = R"({"answer":"a sentence of some length"})";

void addAnswer(ServerContext &context)
{
    context.router.addHttp(apiHost, "GET", "/answer", [](const HttpRequest &) -> asio::awaitable<HttpResponse> {
        co_return jsonResponse(200, text);
    });
}

} // namespace

/// Faults as a client meets them, switched on through the control port.
class SandboxFaultsTest : public QObject {
    Q_OBJECT

    RunningServer m_server{addAnswer};

    void switchOn(const std::string &fault)
    {
        const auto answer = plainRequest(m_server.listening().controlPort, "POST", "/faults", fault);
        QVERIFY2(answer.status == 200, answer.body.c_str());
    }

private slots:
    void cleanup()
    {
        QCOMPARE(plainRequest(m_server.listening().controlPort, "DELETE", "/faults").status, 200U);
        TestClient client(m_server.listening(), apiHost);
        QCOMPARE(client.request("GET", "/answer").body, text); // all is well again
    }

    void anAnswerMeetsTheFaultsOfItsRoute_data()
    {
        const QByteArray whole = QByteArray::fromStdString(text);
        addRows<QByteArray, unsigned, QByteArray, int>({
            {"status", R"({"host":"api.example.com","path":"/answer","kind":"status","status":503,"body":"later"})",
             503, "later", 1},
            {"empty", R"([{"kind":"emptyBody"}])", 200, "", 1},
            {"late", R"({"kind":"latency","ms":30,"jitterMs":10})", 200, whole, 1},
            {"other path", R"({"path":"/other","kind":"status","status":500})", 200, whole, 0},
            {"other host", R"({"host":"*.example.org","kind":"reset"})", 200, whole, 0},
        });
    }
    void anAnswerMeetsTheFaultsOfItsRoute()
    {
        const auto [fault, status, body, met] = currentRow<QByteArray, unsigned, QByteArray, int>();
        switchOn(QByteArray(fault).replace(R"("kind")", R"("times":1,"kind")").toStdString());
        TestClient client(m_server.listening(), apiHost);
        const auto answer = client.request("GET", "/answer");
        QCOMPARE(answer.status, status);
        QCOMPARE(QByteArray::fromStdString(answer.body), body);
        QCOMPARE(int(m_server.log().recent().back().at("faults").as_array().size()), met);
        QCOMPARE(client.request("GET", "/answer").status, 200U); // once
    }

    void anAnswerIsGarbledOrTruncated()
    {
        TestClient client(m_server.listening(), apiHost);
        switchOn(R"({"kind":"garbledBody","times":1})");
        const auto garbled = client.request("GET", "/answer").body;
        QCOMPARE(garbled.size(), text.size());
        QVERIFY_EXCEPTION_THROWN(boost::json::parse(garbled), system_error);

        switchOn(R"({"kind":"truncate","bytes":10,"times":1})");
        client.sendRaw("GET /answer HTTP/1.1\r\nHost: api.example.com\r\n\r\n");
        const auto received = client.readToEnd();
        QVERIFY(received.find("Content-Length: " + std::to_string(text.size())) != std::string::npos);
        QVERIFY(received.ends_with("\r\n\r\n" + text.substr(0, 10)));
    }

    void aConnectionIsResetBeforeOrInTheAnswer()
    {
        for (const char *fault : {R"({"kind":"reset","times":1})", R"({"kind":"reset","afterBytes":30,"times":1})"}) {
            switchOn(fault);
            TestClient client(m_server.listening(), apiHost, Way::ThroughProxy);
            try {
                client.request("GET", "/answer");
                QFAIL("answered");
            } catch (const system_error &error) {
                QVERIFY2(error.code() == asio::error::connection_reset, error.what());
            }
        }
    }

    void aSlowAnswerTakesItsTimeAndArrivesComplete()
    {
        // Two seconds' allowance goes out at once, the rest second by second; the answer is three times as much.
        switchOn(R"({"kind":"slow","bytesPerSecond":60,"times":1})");
        TestClient client(m_server.listening(), apiHost);
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(client.request("GET", "/answer").body, text);
        QVERIFY(clock.elapsed() >= 900);
    }

    void silenceLastsUntilTheClientGivesUp()
    {
        switchOn(R"({"kind":"silence","times":1})");
        {
            TestClient client(m_server.listening(), apiHost);
            client.sendRaw("GET /answer HTTP/1.1\r\nHost: api.example.com\r\nX-Mark: silent\r\n\r\n");
        }
        // The request is logged, without a status, when its connection is over.
        TRY_VERIFY(!m_server.log().recent().empty() &&
                   m_server.log().recent().back().at("headers").as_object().contains("X-Mark"));
        QCOMPARE(m_server.log().recent().back().at("status").to_number<int>(), 0);
    }

    void aWrongFaultIsExplainedAndNoneIsAdded_data()
    {
        addRows<QByteArray, QByteArray>({
            {"no object", "5", "object"},
            {"unknown kind", R"({"kind":"slowish"})", "slowish"},
            {"missing parameter", R"({"kind":"slow"})", "bytesPerSecond"},
            {"misspelled parameter", R"({"kind":"reset","after":1})", "after"},
            {"out of range", R"({"kind":"status","status":600})", "100 to 599"},
            {"text for a number", R"({"kind":"latency","ms":"1"})", "ms"},
            {"never", R"({"kind":"silence","times":0})", "times"},
            {"body without a place", R"({"kind":"status","status":204,"body":"x"})", "204"},
            {"unknown point", R"({"point":"p","kind":"drop"})", "point"},
            {"no JSON", "{", ""},
        });
    }
    void aWrongFaultIsExplainedAndNoneIsAdded()
    {
        const auto [fault, reason] = currentRow<QByteArray, QByteArray>();
        const auto port = m_server.listening().controlPort;
        const auto answer =
            plainRequest(port, "POST", "/faults", "[{\"kind\":\"silence\"}," + fault.toStdString() + "]");
        QCOMPARE(answer.status, 400U);
        QVERIFY2(QByteArray::fromStdString(answer.body).contains(reason), answer.body.c_str());
        QCOMPARE(plainRequest(port, "GET", "/faults").body, "[]");
    }
};

template struct vynlex::InSuite<SandboxFaultsTest>;

#include "tst_sandbox_faults.moc"
