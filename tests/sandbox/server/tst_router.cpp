#include "sandbox/server/Router.h"

#include <QTest>

#include "sandbox/server/Target.h"

using namespace sandbox;

namespace {

HttpHandler handler()
{
    return [](const HttpRequest &) -> boost::asio::awaitable<HttpResponse> { co_return HttpResponse{}; };
}

} // namespace

class RouterTest : public QObject {
    Q_OBJECT

    Router m_router;

private slots:
    void initTestCase()
    {
        m_router.addHttp("api.example.com", "POST", "/translate", handler());
        m_router.addHttp("*.tts.example.com", "*", "/tts/*", handler());
        m_router.addWebSocket("*.stt.example.com", "/listen", {});
    }

    void aRequestFindsItsRoute_data()
    {
        QTest::addColumn<QByteArray>("host");
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<bool>("found");
        QTest::newRow("exact") << QByteArray("api.example.com") << QByteArray("POST") << QByteArray("/translate")
                               << true;
        QTest::newRow("host in capitals")
            << QByteArray("API.Example.COM") << QByteArray("POST") << QByteArray("/translate") << true;
        QTest::newRow("loopback") << QByteArray("127.0.0.1") << QByteArray("POST") << QByteArray("/translate") << true;
        QTest::newRow("other method") << QByteArray("api.example.com") << QByteArray("GET") << QByteArray("/translate")
                                      << false;
        QTest::newRow("longer path") << QByteArray("api.example.com") << QByteArray("POST") << QByteArray("/translate/")
                                     << false;
        QTest::newRow("below") << QByteArray("x.tts.example.com") << QByteArray("PUT") << QByteArray("/tts/a/b")
                               << true;
        QTest::newRow("the folder itself")
            << QByteArray("x.tts.example.com") << QByteArray("PUT") << QByteArray("/tts") << false;
        QTest::newRow("two labels") << QByteArray("x.y.tts.example.com") << QByteArray("PUT") << QByteArray("/tts/a")
                                    << false;
        QTest::newRow("no label") << QByteArray("tts.example.com") << QByteArray("PUT") << QByteArray("/tts/a")
                                  << false;
        QTest::newRow("a WebSocket") << QByteArray("x.stt.example.com") << QByteArray("GET") << QByteArray("/listen")
                                     << false;
    }
    void aRequestFindsItsRoute()
    {
        QFETCH(QByteArray, host);
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, path);
        QTEST(m_router.findHttp(host.toStdString(), method.toStdString(), path.toStdString()) != nullptr, "found");
    }

    void webSocketsAreFoundByHostAndPath()
    {
        QVERIFY(m_router.findWebSocket("eu.stt.example.com", "/listen"));
        QVERIFY(!m_router.findWebSocket("eu.tts.example.com", "/listen"));
        QVERIFY(m_router.hasPath("eu.stt.example.com", "/listen"));
    }

    void theHostsAreThoseOfTheRoutes()
    {
        QCOMPARE(m_router.hosts(),
                 (std::vector<std::string>{"*.stt.example.com", "*.tts.example.com", "api.example.com"}));
        QVERIFY(m_router.hasHost("a.stt.example.com"));
        QVERIFY(!m_router.hasHost("example.com"));
    }

    void targetsAreTakenApart_data()
    {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("shown"); // path, then name=value; empty when malformed
        QTest::newRow("path only") << QByteArray("/a") << QByteArray("/a");
        QTest::newRow("decoded") << QByteArray("/a%20b?x=%E0%A4%95&y=1+2") << QByteArray("/a b x=\u0915 y=1 2");
        QTest::newRow("repeated, bare, empty") << QByteArray("/?to=a&to=b&c&&d=") << QByteArray("/ to=a to=b c= d=");
        QTest::newRow("equals in a value") << QByteArray("/?k=a=b") << QByteArray("/ k=a=b");
        QTest::newRow("cut percent") << QByteArray("/?a=%4") << QByteArray();
        QTest::newRow("not hexadecimal") << QByteArray("/%zz") << QByteArray();
        QTest::newRow("signed") << QByteArray("/%-1") << QByteArray();
        QTest::newRow("not a path") << QByteArray("http://x/") << QByteArray();
    }
    void targetsAreTakenApart()
    {
        QFETCH(QByteArray, target);
        const auto parsed = Target::parse(target.toStdString());
        std::string all = parsed ? parsed->path : "";
        if (parsed) {
            for (const auto &[name, value] : parsed->query)
                all += " " + name + "=" + value;
        }
        QTEST(QByteArray::fromStdString(all), "shown");
    }
};

QTEST_GUILESS_MAIN(RouterTest)
#include "tst_router.moc"
