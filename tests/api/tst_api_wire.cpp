#include <QTest>

#include <QNetworkProxy>

#include "api/VLApiManager.h"
#include "platform/dispatch/Guarded.h"
#include "platform/net/CurlHttpTransport.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"
#include "tests/platform/net/LocalServer.h"
#include <zlib.h>

using namespace Qt::StringLiterals;
using namespace vynlex;
using Kind = TransportError::Kind;

namespace {

constexpr qint64 limitBytes = 16LL * 1024 * 1024;

QByteArray answer(const QByteArray &body, const QByteArray &headers = {})
{
    return "HTTP/1.1 200 OK\r\n" + headers + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

QByteArray gzip(const QByteArray &plain)
{
    QByteArray packed(static_cast<qsizetype>(compressBound(static_cast<uLong>(plain.size()))) + 64, '\0');
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(plain.constData()));
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    return packed;
}

/// The whole of an answer that is JSON, `size` bytes of it.
QByteArray padded(qsizetype size)
{
    const QByteArray json = R"({"success":true})";
    return QByteArray(size - json.size(), ' ') + json;
}

} // namespace

/// Over real connections: the deployment's own host name, TLS and all, with a server of the test behind it.
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
        m_manager->setCredentials(u"u1"_s, u"a.b.c"_s);
    }
    void cleanup() { m_manager.reset(); }

    void theWholeHeadOfARequest()
    {
        m_answer.set(answer(R"({"success":true})"));
        QVERIFY(outcomeOfUpload());
        const QByteArray body = R"({"contacts":[{"name":"A","phoneNo":"1"}]})";
        QByteArrayList lines = m_request.copy().split('\n');
        QVERIFY2(lines.value(4).startsWith("User-Agent: host/"), lines.value(4));
        lines.removeAt(4);
        QCOMPARE(lines.join('\n'), QByteArray("PUT /api/contacts/append HTTP/1.1\r\n"
                                              "Host: demo.confera.example\r\n"
                                              "Accept-Encoding: gzip, deflate, br\r\n"
                                              "Connection: keep-alive\r\n"
                                              "Content-Type: application/json\r\n"
                                              "deviceId:\r\n"
                                              "authorization: a.b.c\r\n"
                                              "Content-Length: " +
                                              QByteArray::number(body.size()) + "\r\n\r\n" + body));
    }

    void anAnswerThatIsNotWholeOrTooLargeIsANetworkFailure_data()
    {
        QTest::addColumn<QByteArray>("response");
        QTest::addColumn<int>("kind"); // -1: an answer
        const auto row = [](const char *name, const QByteArray &response, Kind kind) {
            QTest::newRow(name) << response << static_cast<int>(kind);
        };
        const QByteArray gzipped = "Content-Encoding: gzip\r\n";
        QTest::newRow("just within the limit") << answer(padded(limitBytes)) << -1;
        QTest::newRow("compressed") << answer(gzip(padded(1000)), gzipped) << -1;
        row("over the limit", answer(padded(limitBytes + 1)), Kind::TooLarge);
        row("a bomb", answer(gzip(padded(4 * limitBytes)), gzipped), Kind::TooLarge);
        row("cut off", answer(R"({"success":true})").chopped(1), Kind::Truncated);
        row("cut off within the compression", answer(gzip(padded(1000)), gzipped).chopped(9), Kind::Truncated);
    }
    void anAnswerThatIsNotWholeOrTooLargeIsANetworkFailure()
    {
        QFETCH(const QByteArray, response);
        QFETCH(const int, kind);
        m_answer.set(response);
        const auto outcome = outcomeOfUpload();
        QCOMPARE(outcome.has_value(), kind < 0);
        if (kind < 0) {
            QVERIFY(outcome->success == true);
        } else {
            QVERIFY(outcome.error().which() == VLApiRequestError::Case::networkFailure);
            QCOMPARE(static_cast<int>(outcome.error().transportError()->kind), kind);
        }
    }

private:
    /// One request, one answer, and the end of the connection.
    void serve(Peer &peer)
    {
        const QByteArray head = peer.readHead();
        const qsizetype length = head.mid(head.indexOf("Content-Length: ") + 16).split('\r').first().toLongLong();
        m_request.set(head + peer.read(length));
        peer.write(m_answer.copy());
    }

    VLApiResult<VLSuccessResponse> outcomeOfUpload()
    {
        std::optional<VLApiResult<VLSuccessResponse>> outcome;
        m_manager->uploadContacts({{{}, u"A"_s, {}, u"1"_s}},
                                  [&](const VLApiResult<VLSuccessResponse> &result) { outcome = result; });
        if (!QTest::qWaitFor([&] { return outcome.has_value(); }, 60'000))
            qFatal("no outcome");
        return *outcome;
    }

    Guarded<QByteArray> m_request;
    Guarded<QByteArray> m_answer;
    std::optional<LocalServer> m_server;
    std::optional<LocalServer> m_proxy;
    std::unique_ptr<VLApiManager> m_manager;
};

static const InSuite<TestApiWire> inSuite;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return runSuite(argc, argv);
}

#include "tst_api_wire.moc"
