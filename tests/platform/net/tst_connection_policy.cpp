#include <QtTest>

#include <QNetworkProxy>

#include "platform/dispatch/Guarded.h"
#include "platform/net/BeastSocketWorker.h"
#include "platform/net/CurlHttpTransport.h"
#include "tests/fakes/Patience.h"
#include "tests/platform/net/Frames.h"

using namespace vynlex;

namespace {

/// Refuses everybody, WebSockets too: whoever hears of it trusted the server.
void serve(Peer &peer)
{
    peer.readHead();
    peer.write("HTTP/1.1 403 Reached\r\nContent-Length: 0\r\n\r\n");
}

/// What became of an attempt, told alike by both adapters: "403" is the server's answer, else the name of the error.
QString overHttp(const QUrl &url)
{
    CurlHttpTransport session;
    HttpRequest request;
    request.url = url;
    request.headers = {{"X-Token", "secret"}};
    QString result;
    session.send(request, [&](const tl::expected<HttpResponse, TransportError> &outcome) {
        using Kind = TransportError::Kind;
        if (outcome)
            result = QString::number(outcome->status);
        else if (outcome.error().kind == Kind::Tls)
            result = QStringLiteral("Tls");
        else
            result = outcome.error().kind == Kind::Proxy ? QStringLiteral("Proxy") : outcome.error().message;
    });
    if (!eventually([&] { return !result.isEmpty(); }))
        qFatal("no outcome");
    return result;
}

QString overWebSocket(QUrl url)
{
    url.setScheme(QStringLiteral("wss"));
    BeastSocketWorker worker;
    Guarded<QString> result;
    std::unique_ptr<WebSocketClient> client;
    worker.post([&] {
        client = worker.makeClient();
        client->connect({url, {{"X-Token", "secret"}}}, [&](const WebSocketEvent &event) {
            using Kind = WebSocketError::Kind;
            const auto *failed = std::get_if<websocket::Error>(&event);
            if (!failed)
                result.set(QStringLiteral("connected"));
            else if (failed->error.kind == Kind::UpgradeRefused)
                result.set(QString::number(failed->error.httpStatus));
            else if (failed->error.kind == Kind::Tls)
                result.set(QStringLiteral("Tls"));
            else
                result.set(failed->error.kind == Kind::Proxy ? QStringLiteral("Proxy") : failed->error.message);
        });
    });
    if (!eventually([&] { return !result.copy().isEmpty(); }))
        qFatal("no outcome");
    std::atomic<bool> gone = false;
    worker.post([&] {
        client.reset();
        gone = true;
    });
    if (!eventually([&] { return gone.load(); }))
        qFatal("the worker hangs");
    return result.copy();
}

QUrl urlOf(const QString &host, const LocalServer &server)
{
    return QUrl(QStringLiteral("https://%1:%2/").arg(host).arg(server.port()));
}

} // namespace

class TestConnectionPolicy : public QObject {
    Q_OBJECT

    const Identity m_root = makeAuthority("Test root");

private slots:
    void init() { trustOnly({m_root.certificatePem}); }
    void cleanup() { QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::NoProxy)); }

    void onlyGoodCertificatesAreTrusted_data()
    {
        QTest::addColumn<Identity>("identity");
        QTest::addColumn<QString>("result");
        const QString reached = QStringLiteral("403");
        const QString refused = QStringLiteral("Tls");
        const auto row = [&](const char *name, const CertificateWish &wish, const Identity *issuer,
                             const QString &result) { QTest::newRow(name) << makeIdentity(wish, issuer) << result; };
        row("good", {}, &m_root, reached);
        row("wildcard for a whole top-level domain", {.alternativeNames = {"DNS:*.test"}}, &m_root, refused);
        row("good RSA", {.rsaBits = 2048}, &m_root, reached);
        row("expired", {.validFromDays = -30, .validToDays = -1}, &m_root, refused);
        row("not yet valid", {.validFromDays = 1}, &m_root, refused);
        row("another's name", {.alternativeNames = {"DNS:other.test"}}, &m_root, refused);
        row("common name only", {.alternativeNames = {}}, &m_root, refused);
        row("for clients", {.forServers = false}, &m_root, refused);
        row("SHA-1", {.sha1 = true}, &m_root, refused);
        row("weak key", {.rsaBits = 1024}, &m_root, refused);
        row("signed by itself", {}, nullptr, refused);
        const Identity unknown = makeAuthority("Unknown root");
        row("unknown root", {}, &unknown, refused);
        const Identity between = makeAuthority("Between", &m_root);
        row("with its intermediate", {}, &between, reached);
        Identity lonely = makeIdentity({}, &between);
        lonely.chainPem = lonely.certificatePem;
        QTest::newRow("without its intermediate") << lonely << refused;
    }
    void onlyGoodCertificatesAreTrusted()
    {
        QFETCH(Identity, identity);
        QFETCH(QString, result);
        const LocalServer server(serve, LocalServer::Tls{identity});
        const LocalServer proxy(connectProxy(server.port(), [](const QByteArray &) {}));
        QNetworkProxy::setApplicationProxy(
            QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), proxy.port()));
        QCOMPARE(overHttp(urlOf(QStringLiteral("service.test"), server)), result);
        QCOMPARE(overWebSocket(urlOf(QStringLiteral("service.test"), server)), result);
    }

    void anAddressNeedsItsOwnName_data()
    {
        QTest::addColumn<QByteArray>("alternativeName");
        QTest::addColumn<QString>("result");
        QTest::newRow("the address") << QByteArray("IP:127.0.0.1") << "403";
        QTest::newRow("another") << QByteArray("IP:127.0.0.2") << "Tls";
        QTest::newRow("as a name") << QByteArray("DNS:127.0.0.1") << "Tls";
    }
    void anAddressNeedsItsOwnName()
    {
        QFETCH(QByteArray, alternativeName);
        QFETCH(QString, result);
        CertificateWish wish;
        wish.commonName = "127.0.0.1";
        wish.alternativeNames = {alternativeName};
        const LocalServer server(serve, LocalServer::Tls{makeIdentity(wish, &m_root)});
        QCOMPARE(overHttp(urlOf(QStringLiteral("127.0.0.1"), server)), result);
        QCOMPARE(overWebSocket(urlOf(QStringLiteral("127.0.0.1"), server)), result);
    }

    void oldTlsIsRefused()
    {
        const LocalServer server(serve, LocalServer::Tls{makeIdentity({}, &m_root), true});
        QCOMPARE(overHttp(urlOf(QStringLiteral("127.0.0.1"), server)), "Tls");
        QCOMPARE(overWebSocket(urlOf(QStringLiteral("127.0.0.1"), server)), "Tls");
        QCOMPARE(server.handshakeCount(), 0);
    }

    void anAuthorityCountsFromTheNextConnectionOn()
    {
        const LocalServer server(serve, LocalServer::Tls{makeIdentity({}, &m_root)});
        const QUrl url = urlOf(QStringLiteral("127.0.0.1"), server);
        trustOnly({makeAuthority("Other root").certificatePem});
        QCOMPARE(overHttp(url), "Tls");
        QCOMPARE(overWebSocket(url), "Tls");
        trustOnly({m_root.certificatePem});
        QCOMPARE(overHttp(url), "403");
        QCOMPARE(overWebSocket(url), "403");
    }

    void theProxyIsAskedForATunnelAndToldNothingElse()
    {
        const LocalServer server(serve, LocalServer::Tls{makeIdentity({}, &m_root)});
        Guarded<QByteArrayList> heads;
        const LocalServer proxy(connectProxy(
            server.port(), [&](const QByteArray &head) { heads.with([&](QByteArrayList &all) { all << head; }); }));
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"),
                                                         proxy.port(), QStringLiteral("me"), QStringLiteral("word")));
        const QUrl url = urlOf(QStringLiteral("service.test"), server);
        QCOMPARE(overHttp(url), "403");
        QCOMPARE(overWebSocket(url), "403");
        QCOMPARE(heads.copy().size(), 2);
        for (const QByteArray &head : heads.copy()) {
            QVERIFY(head.startsWith("CONNECT service.test:" + QByteArray::number(server.port()) + " HTTP/1.1\r\n"));
            QVERIFY(head.contains("Proxy-Authorization: Basic " + QByteArray("me:word").toBase64() + "\r\n"));
            QVERIFY(!head.contains("X-Token"));
        }
    }

    void aProxyThatRefusesOrIsGoneIsAProxyError_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("wants a password") << QByteArray("HTTP/1.1 407 Authenticate\r\nContent-Length: 0\r\n\r\n");
        QTest::newRow("cannot") << QByteArray("HTTP/1.1 502 Bad\r\nContent-Length: 0\r\n\r\n");
        QTest::newRow("is gone") << QByteArray();
    }
    void aProxyThatRefusesOrIsGoneIsAProxyError()
    {
        QFETCH(QByteArray, answer);
        auto proxy = std::make_unique<LocalServer>(connectProxy(
            1, [](const QByteArray &) {}, answer));
        QNetworkProxy::setApplicationProxy(
            QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), proxy->port()));
        if (answer.isEmpty())
            proxy.reset();
        QCOMPARE(overHttp(QUrl(QStringLiteral("https://service.test/"))), "Proxy");
        QCOMPARE(overWebSocket(QUrl(QStringLiteral("https://service.test/"))), "Proxy");
    }
};

QTEST_GUILESS_MAIN(TestConnectionPolicy)
#include "tst_connection_policy.moc"
