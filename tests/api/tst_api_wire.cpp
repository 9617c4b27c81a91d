#include <QTest>

#include <QNetworkProxy>

#include "api/VLApiManager.h"
#include "platform/dispatch/Guarded.h"
#include "platform/net/CurlHttpTransport.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"
#include "tests/platform/net/LocalServer.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

/// Over real connections: the deployment's own host name, TLS and a proxy, with a server behind it that keeps what it
/// receives, byte for byte.
class TestApiWire : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const Identity authority = makeAuthority("wire");
        trustOnly({authority.certificatePem});
        CertificateWish wish;
        wish.commonName = "demo.confera.example";
        wish.alternativeNames = {"DNS:demo.confera.example"};
        m_server.emplace([this](Peer &peer) { serve(peer); }, LocalServer::Tls{makeIdentity(wish, &authority)});
        m_proxy.emplace(connectProxy(m_server->port(), [](const QByteArray &) {}));
        QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, u"127.0.0.1"_s, m_proxy->port()});
    }
    void cleanupTestCase()
    {
        QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
        m_proxy.reset();
        m_server.reset();
    }
    void init()
    {
        const TestPlatform fakes;
        Platform platform = *Platform::current();
        platform.makeHttpTransport = [](const HttpSessionConfiguration &configuration) {
            return std::make_unique<CurlHttpTransport>(configuration);
        };
        Platform::install(std::move(platform));
        QCoreApplication::setApplicationName(u"host"_s);
        m_manager = std::make_unique<VLApiManager>();
    }
    void cleanup() { m_manager.reset(); }

    void aRequestIsWhatItShouldBeByteForByte()
    {
        m_manager->getJWToken(u"w\"t"_s, [&](const VLApiResult<VLTokenResponse> &) { m_isAnswered = true; });
        const QByteArray token = "{\"jwt\":\"w\\\"t\"}";
        QCOMPARE(received(), head("POST /api/externalservertp/get-token") +
                                 "Content-Type: application/json\r\ndeviceId:\r\nx-source: myvyn-vynevents\r\n" +
                                 "Content-Length: " + QByteArray::number(token.size()) + "\r\n\r\n" + token);

        m_manager->setCredentials(u"u1"_s, u"a.b.c"_s);
        m_manager->uploadContacts({{{}, u"अ"_s, {}, u"+91 98-1"_s}},
                                  [&](const VLApiResult<VLSuccessResponse> &) { m_isAnswered = true; });
        const QByteArray contacts = "{\"contacts\":[{\"name\":\"अ\",\"phoneNo\":\"91981\"}]}";
        const QByteArray ownHeaders =
            "Content-Type: application/json\r\ndeviceId:\r\nauthorization: a.b.c\r\n"; // no scheme word
        QCOMPARE(received(), head("PUT /api/contacts/append") + ownHeaders +
                                 "Content-Length: " + QByteArray::number(contacts.size()) + "\r\n\r\n" + contacts);

        m_manager->getContacts({{u"search"_s, u"a b&c=न+"_s}, {u"limit"_s, 5}},
                               [&](const VLApiResult<VLContactsResponse> &) { m_isAnswered = true; });
        QCOMPARE(received(),
                 head("GET /api/contacts/all?limit=5&search=a%20b%26c%3D%E0%A4%A8%2B") + ownHeaders + "\r\n");
    }

private:
    static QByteArray head(const QByteArray &methodAndTarget)
    {
        return methodAndTarget + " HTTP/1.1\r\nHost: demo.confera.example\r\nAccept-Encoding: gzip, deflate, br\r\n" +
               "Connection: keep-alive\r\n";
    }

    /// One request, one answer, and the end of the connection.
    void serve(Peer &peer)
    {
        QByteArray request = peer.readHead();
        if (const qsizetype at = request.indexOf("Content-Length: "); at >= 0)
            request += peer.read(request.mid(at + 16).split('\r').first().toLongLong());
        m_request.set(request);
        peer.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}");
    }

    /// The request of the call that was just made, without the line that names the machine.
    QByteArray received()
    {
        if (!eventually([this] { return m_isAnswered; }))
            qFatal("no answer");
        m_isAnswered = false;
        QByteArrayList lines = m_request.copy().split('\n');
        if (lines.value(4).startsWith("User-Agent: host/") && lines.value(4).endsWith(" ConferaNetwork/1.0\r"))
            lines.removeAt(4);
        return lines.join('\n');
    }

    bool m_isAnswered = false;
    Guarded<QByteArray> m_request;
    std::optional<LocalServer> m_server;
    std::optional<LocalServer> m_proxy;
    std::unique_ptr<VLApiManager> m_manager;
};

template struct vynlex::InSuite<TestApiWire>;

#include "tst_api_wire.moc"
