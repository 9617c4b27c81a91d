#include <QTest>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>
#include <QProcess>

#include "chat/VLWebSocketManager.h"
#include "platform/net/BeastSocketWorker.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/TestPlatform.h"
#include "tests/platform/net/Certificates.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

/// The session over a proxy and TLS, with another library's server behind them. `said` is what the server tells.
class TestChatPeer : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const Identity authority = makeAuthority("peer");
        trustOnly({authority.certificatePem});
        CertificateWish wish;
        wish.alternativeNames.clear();
        wish.alternativeNames << "DNS:" + VLApiServer(VLApiServer::demo).socketHost().toLatin1();
        const Identity identity = makeIdentity(wish, &authority);

        m_node.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_node.start(u"node"_s, {QStringLiteral(CHAT_SERVER)});
        const QJsonObject setUp{{u"certificate"_s, QString::fromLatin1(identity.chainPem)},
                                {u"key"_s, QString::fromLatin1(identity.keyPem)},
                                {u"sentences"_s, QJsonArray::fromStringList(sentences)}};
        m_node.write(QJsonDocument(setUp).toJson(QJsonDocument::Compact) + '\n');
        TRY_VERIFY(m_node.canReadLine());
        QNetworkProxy::setApplicationProxy(
            {QNetworkProxy::HttpProxy, u"127.0.0.1"_s, m_node.readLine().trimmed().toUShort()});

        Platform platform = *Platform::current();
        platform.socketWorker = std::make_shared<BeastSocketWorker>();
        Platform::install(std::move(platform));
    }
    void cleanupTestCase()
    {
        m_session.reset();
        m_node.closeWriteChannel();
        QVERIFY(m_node.waitForFinished(patienceMs));
    }
    void cleanup()
    {
        m_session.reset();
        TRY_COMPARE(said().filter(u"closed"_s).size(), m_said.filter(u"login"_s).size());
        m_said.clear();
        m_heard.clear();
    }

    void everyScriptArrivesWholeAndIsAcknowledged()
    {
        start("pieces");
        TRY_COMPARE(m_heard, sentences);
        TRY_COMPARE(said().size(), 1 + 2 * sentences.size());
        QCOMPARE(m_said.first(), u"binary login pieces"_s);
        QCOMPARE(m_said.count(u"pong beat"_s), sentences.size());
        QCOMPARE(m_said.count(u"binary ack chatMessage"_s), sentences.size());
        m_session->disconnect();
        TRY_COMPARE(said().last(), u"closed 1000"_s);
    }

    void aLostConnectionIsReplaced_data()
    {
        QTest::addColumn<QString>("closed");
        QTest::newRow("reset") << u"closed 1006"_s;
        QTest::newRow("size 1048577") << u"closed 1009"_s;
    }
    void aLostConnectionIsReplaced()
    {
        QFETCH(QString, closed);
        const QString login = u"binary login "_s + QLatin1String(QTest::currentDataTag());
        start(QTest::currentDataTag());
        TRY_COMPARE(m_heard, QStringList{u"again"_s});
        TRY_COMPARE(said().size(), 4);
        QVERIFY(m_said.contains(closed));
        QCOMPARE(m_said.count(login), 2);
        QCOMPARE(m_said.last(), u"binary ack chatMessage"_s);
    }

private:
    void start(const QByteArray &token)
    {
        m_session = std::make_unique<VLWebSocketManager>(VLApiServer::demo, QString::fromLatin1(token));
        m_session->isConnectedToNetwork = true;
        m_session->isUserJoinedMeeting = true;
        m_session->onNewChatMessage = [this](const VLChatMessage &message) { m_heard << message.messageText; };
        m_session->connect();
    }

    QStringList said()
    {
        while (m_node.canReadLine())
            m_said << QString::fromUtf8(m_node.readLine()).trimmed();
        return m_said;
    }

    const QStringList sentences{u"Where is the station?"_s, u"स्टेशन कहाँ है?"_s,  u"સ્ટેશન ક્યાં છે?"_s,
                                u"स्टेशन कुठे आहे?"_s,           u"স্টেশন কোথায়?"_s, u"స్టేషన్ ఎక్కడ ఉంది?"_s};
    const TestPlatform m_fakes;
    QProcess m_node;
    QStringList m_said;
    QStringList m_heard;
    std::unique_ptr<VLWebSocketManager> m_session;
};

QTEST_GUILESS_MAIN(TestChatPeer)

#include "tst_chat_peer.moc"
