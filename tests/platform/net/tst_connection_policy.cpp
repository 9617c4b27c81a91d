#include <QNetworkProxy>
#include <QTest>

#include <atomic>

#include "platform/dispatch/Guarded.h"
#include "platform/net/BeastSocketWorker.h"
#include "platform/net/CurlHttpTransport.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/platform/net/Frames.h"

using namespace vynlex;

namespace {

const QString reached = QStringLiteral("403");
/// Refuses everybody, WebSockets too: whoever hears of it trusted the server.
const QByteArray answer = "HTTP/1.1 403 Reached\r\nContent-Length: 0\r\n\r\n";

void serve(Peer &peer)
{
    peer.readHead();
    peer.write(answer);
}

/// What became of an attempt, told alike by both adapters: "403" is the server's answer, else the kind and the words of
/// the error.
template<typename Error> QString told(const Error &error)
{
    const QString kind = error.kind == Error::Kind::Tls     ? QStringLiteral("Tls ")
                         : error.kind == Error::Kind::Proxy ? QStringLiteral("Proxy ")
                                                            : QString();
    return kind + error.message;
}

QString overHttp(const QUrl &url)
{
    CurlHttpTransport session;
    HttpRequest request;
    request.url = url;
    request.headers = {{"X-Token", "secret"}};
    QString result;
    session.send(request, [&](const tl::expected<HttpResponse, TransportError> &outcome) {
        result = outcome ? QString::number(outcome->status) : told(outcome.error());
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
            const auto *failed = std::get_if<websocket::Error>(&event);
            QString outcome;
            if (!failed)
                outcome = QStringLiteral("connected");
            else if (failed->error.kind == WebSocketError::Kind::UpgradeRefused)
                outcome = QString::number(failed->error.httpStatus);
            else
                outcome = told(failed->error);
            client.reset();
            result.set(outcome); // The main thread goes on from here, and nothing of this may be touched any more.
        });
    });
    if (!eventually([&] { return !result.copy().isEmpty(); }))
        qFatal("no outcome");
    return result.copy();
}

QUrl urlOf(const QString &host, const LocalServer &server)
{
    return QUrl(QStringLiteral("https://%1:%2/").arg(host).arg(server.port()));
}

void useProxy(quint16 port, const QString &user = {}, const QString &password = {})
{
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), port, user, password));
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
        QTest::addColumn<LocalServer::Tls>("server");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("result");
        const QString name = QStringLiteral("service.test");
        const auto row = [&](const char *title, const CertificateWish &wish, const QString &result,
                             const Identity *issuer) {
            QTest::newRow(title) << LocalServer::Tls{makeIdentity(wish, issuer)} << name << result;
        };
        const auto named = [&](const char *title, const CertificateWish &wish, const QString &result) {
            row(title, wish, result, &m_root);
        };
        const auto addressed = [&](const char *title, const CertificateWish &wish, const QString &result) {
            QTest::newRow(title) << LocalServer::Tls{makeIdentity(wish, &m_root)} << QStringLiteral("127.0.0.1")
                                 << result;
        };
        // In OpenSSL's words, so that a case is refused for its own fault.
        named("good", {}, reached);
        named("good RSA", {.rsaBits = 2048}, reached);
        named("wildcard", {.alternativeNames = {"DNS:*.test"}}, "hostname mismatch"); // a whole top-level domain
        named("expired", {.validFromDays = -30, .validToDays = -1}, "certificate has expired");
        named("not yet valid", {.validFromDays = 1}, "certificate is not yet valid");
        named("another's name", {.alternativeNames = {"DNS:other.test"}}, "hostname mismatch");
        named("common name only", {.alternativeNames = {}}, "hostname mismatch");
        named("for clients", {.forServers = false}, "certificate purpose");
        named("SHA-1", {.sha1 = true}, "digest algorithm too weak");
        named("weak key", {.rsaBits = 1024}, "key too weak");
        addressed("the address", {.alternativeNames = {"IP:127.0.0.1"}}, reached);
        addressed("another address", {.alternativeNames = {"IP:127.0.0.2"}}, "IP address mismatch");
        addressed("address as a name", {.commonName = "127.0.0.1", .alternativeNames = {"DNS:127.0.0.1"}},
                  "IP address mismatch");
        row("signed by itself", {}, "self-signed certificate", nullptr);
        const Identity unknown = makeAuthority("Unknown root");
        row("unknown root", {}, "self-signed certificate in certificate chain", &unknown);
        const Identity between = makeAuthority("Between", &m_root);
        row("with its intermediate", {}, reached, &between);
        Identity lonely = makeIdentity({}, &between);
        lonely.chainPem = lonely.certificatePem;
        QTest::newRow("without its intermediate")
            << LocalServer::Tls{lonely} << name << "unable to get local issuer certificate";
        QTest::newRow("TLS 1.1") << LocalServer::Tls{makeIdentity({}, &m_root), true} << name << "protocol version";
    }
    void onlyGoodCertificatesAreTrusted()
    {
        QFETCH(LocalServer::Tls, server);
        QFETCH(QString, host);
        QFETCH(QString, result);
        std::atomic<int> requests = 0;
        const LocalServer tls(
            [&](Peer &peer) {
                if (!peer.readHead().isEmpty())
                    ++requests;
                peer.write(answer);
            },
            server);
        const LocalServer proxy(connectProxy(tls.port(), [](const QByteArray &) {}));
        useProxy(proxy.port());
        const QUrl url = urlOf(host, tls);
        for (const QString &outcome : {overHttp(url), overWebSocket(url)}) {
            QVERIFY2(outcome.startsWith(result == reached ? reached : QStringLiteral("Tls")), qPrintable(outcome));
            QVERIFY2(outcome.contains(result), qPrintable(outcome));
        }
        QCOMPARE(requests.load(), result == reached ? 2 : 0);
    }

    void anAuthorityCountsFromTheNextConnectionOn()
    {
        const LocalServer server(serve, LocalServer::Tls{makeIdentity({}, &m_root)});
        const QUrl url = urlOf(QStringLiteral("127.0.0.1"), server);
        trustOnly({makeAuthority("Other root").certificatePem});
        QVERIFY(overHttp(url).startsWith("Tls") && overWebSocket(url).startsWith("Tls"));
        trustOnly({m_root.certificatePem});
        QVERIFY(overHttp(url) == reached && overWebSocket(url) == reached);
    }

    void theProxyIsAskedForATunnelAndToldNothingElse()
    {
        const LocalServer server(serve, LocalServer::Tls{makeIdentity({}, &m_root)});
        Guarded<QByteArrayList> heads;
        const LocalServer proxy(connectProxy(
            server.port(), [&](const QByteArray &head) { heads.with([&](QByteArrayList &all) { all << head; }); }));
        useProxy(proxy.port(), QStringLiteral("me"), QStringLiteral("word"));
        const QUrl url = urlOf(QStringLiteral("service.test"), server);
        QVERIFY(overHttp(url) == reached && overWebSocket(url) == reached);
        QCOMPARE(heads.copy().size(), 2);
        for (const QByteArray &head : heads.copy()) {
            QVERIFY(head.startsWith("CONNECT service.test:" + QByteArray::number(server.port()) + " HTTP/1.1\r\n"));
            QVERIFY(head.contains("Proxy-Authorization: Basic " + QByteArray("me:word").toBase64() + "\r\n"));
            QVERIFY(!head.contains("X-Token"));
        }
    }

    void aProxyThatRefusesOrIsGoneIsAProxyError()
    {
        const QUrl url(QStringLiteral("https://service.test/"));
        const auto fails = [&] { return overHttp(url).startsWith("Proxy") && overWebSocket(url).startsWith("Proxy"); };
        auto proxy = std::make_unique<LocalServer>(connectProxy(
            1, [](const QByteArray &) {}, "HTTP/1.1 407 Authenticate\r\nContent-Length: 0\r\n\r\n"));
        useProxy(proxy->port());
        QVERIFY(fails());
        proxy.reset();
        QVERIFY(fails());
    }
};

template struct vynlex::InSuite<TestConnectionPolicy>;

#include "tst_connection_policy.moc"
