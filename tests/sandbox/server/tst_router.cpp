#include "sandbox/server/Router.h"

#include <QTest>

#include "sandbox/server/Target.h"
#include "tests/fakes/Rows.h"

using namespace sandbox;
using namespace vynlex;

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
        addRows<QByteArray, QByteArray, QByteArray, bool>({
            {"exact", "api.example.com", "POST", "/translate", true},
            {"host in capitals", "API.Example.COM", "POST", "/translate", true},
            {"loopback", "127.0.0.1", "POST", "/translate", true},
            {"other method", "api.example.com", "GET", "/translate", false},
            {"below", "x.tts.example.com", "PUT", "/tts/a/b", true},
            {"the folder itself", "x.tts.example.com", "PUT", "/tts", false},
            {"two labels", "x.y.tts.example.com", "PUT", "/tts/a", false},
            {"no label", "tts.example.com", "PUT", "/tts/a", false},
            {"a WebSocket", "x.stt.example.com", "GET", "/listen", false},
        });
    }
    void aRequestFindsItsRoute()
    {
        const auto [host, method, path, found] = currentRow<QByteArray, QByteArray, QByteArray, bool>();
        QCOMPARE(m_router.findHttp(host.toStdString(), method.toStdString(), path.toStdString()) != nullptr, found);
    }

    void targetsAreTakenApart_data()
    {
        addRows<QByteArray, QByteArray>({
            {"path only", "/a", "/a"},
            {"decoded", "/a%20b?x=%E0%A4%95&y=1+2", "/a b x=\u0915 y=1 2"},
            {"cut percent", "/?a=%4", {}},
            {"not hexadecimal", "/%zz", {}},
            {"not a path", "http://x/", {}},
        });
    }
    void targetsAreTakenApart()
    {
        const auto [target, shown] = currentRow<QByteArray, QByteArray>();
        const auto parsed = Target::parse(target.toStdString());
        std::string all = parsed ? parsed->path : "";
        if (parsed) {
            for (const auto &[name, value] : parsed->query)
                all += " " + name + "=" + value;
        }
        QCOMPARE(QByteArray::fromStdString(all), shown);
    }
};

QTEST_GUILESS_MAIN(RouterTest)
#include "tst_router.moc"
