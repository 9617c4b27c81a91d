#include "tests/faults/Laboratory.h"

#include <QSslConfiguration>
#include <QTcpSocket>

#include <algorithm>
#include <atomic>

#include "EventLoop.h"
#include "api/VLNetworkClient.h"
#include "language/LanguageOption.h"
#include "platform/audio/WavAudioPlayer.h"
#include "platform/audio/WavFile.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "tests/fakes/FakeReachabilitySource.h"
#include "tests/fakes/MemoryUserDefaults.h"
#include "tests/platform/network/PrivateNetwork.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace faults {
namespace {

constexpr auto reachWorld = "route add default via 192.0.2.1 dev cable"_L1;
constexpr unsigned loudspeakers = 32; ///< Files, which are written in turn.

void ip(const QString &arguments)
{
    if (const QString complaint = PrivateNetwork::ip(arguments); !complaint.isEmpty())
        qFatal("%s", qPrintable(complaint));
}

std::unique_ptr<examples::SandboxProcess> startSandbox(const QString &folder)
{
    auto sandbox = examples::SandboxProcess::start(examples::SandboxProcess::defaultProgram(), folder);
    if (!sandbox)
        qFatal("%s", qPrintable(sandbox.error()));
    return std::move(*sandbox);
}

/// Counts the requests that are under way.
class CountingTransport final : public HttpTransport {
public:
    CountingTransport(std::unique_ptr<HttpTransport> transport, std::shared_ptr<int> underWay)
        : m_transport(std::move(transport))
        , m_underWay(std::move(underWay))
    {
    }

    void send(HttpRequest request, Completion completion) override
    {
        ++*m_underWay;
        m_transport->send(std::move(request), [underWay = m_underWay, completion = std::move(completion)](auto answer) {
            --*underWay;
            completion(std::move(answer));
        });
    }

private:
    std::unique_ptr<HttpTransport> m_transport;
    std::shared_ptr<int> m_underWay;
};

} // namespace

class Laboratory::Ways final : public QNetworkProxyFactory {
public:
    explicit Ways(std::shared_ptr<const QMap<QString, quint16>> ways)
        : m_ways(std::move(ways))
    {
    }

    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override
    {
        return {QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s,
                              m_ways->value(query.peerHostName(), m_ways->value({})))};
    }

private:
    const std::shared_ptr<const QMap<QString, quint16>> m_ways;
};

Laboratory::Laboratory()
    : m_ways(std::make_shared<QMap<QString, quint16>>())
{
    if (PrivateNetwork::isEntered()) {
        ip("link set lo up"_L1);
        m_hasCable = PrivateNetwork::plugInCable();
        if (m_hasCable)
            ip(reachWorld);
    }
    m_sandbox = startSandbox(m_folder.filePath(u"sandbox"_s));
    leadEverythingToTheSandbox();
    installWays();
    QObject::connect(&m_refusingProxy, &QTcpServer::newConnection, [this] {
        QTcpSocket *const client = m_refusingProxy.nextPendingConnection();
        QObject::connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
        QObject::connect(client, &QTcpSocket::readyRead, [client] {
            client->write("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
            client->disconnectFromHost();
        });
    });
    m_refusingProxy.listen(QHostAddress::LocalHost);
    installPlatform();
    m_listener = std::make_unique<VLNetworkClient>();
    m_listener->onNetworkStateChanged = [this](bool isConnected) { m_isReachable = isConnected; };
    m_recording = record();
}

Laboratory::~Laboratory() = default;

void Laboratory::setNetworkGone(bool gone)
{
    if (!PrivateNetwork::isEntered()) {
        if (gone)
            qWarning("Without a network of its own: the sandbox stands still instead.");
        m_sandbox->setFrozen(gone);
        return;
    }
    const auto state = gone ? "down"_L1 : "up"_L1;
    ip("link set lo "_L1 + state);
    if (m_hasCable)
        ip("link set cable "_L1 + state);
    if (m_hasCable && !gone)
        ip(reachWorld); // The kernel forgets it with the link.
    if (m_hasCable && !examples::waitUntil([&] { return m_isReachable != gone; }, 5s))
        qFatal("The kit does not notice that the network is %s.", gone ? "gone" : "back");
}

void Laboratory::restartSandbox()
{
    if (const auto restarted = m_sandbox->restart(); !restarted)
        qFatal("%s", qPrintable(restarted.error()));
    installWays();
}

/// A sandbox that starts leads everything to itself.
void Laboratory::installWays()
{
    QNetworkProxyFactory::setApplicationProxyFactory(new Ways(m_ways)); // Qt's from here on
}

void Laboratory::installPlatform()
{
    Platform platform = Platform::shipped();
    platform.userDefaults = std::make_shared<MemoryUserDefaults>();
    if (!m_hasCable)
        platform.makeReachabilitySource = [] { return FakeNetworkPath().makeSource(); };
    const auto contacts = std::make_shared<FakeContactStore>();
    contacts->setContacts({{u"Zoë"_s, u"Pinto"_s, {u"+91 90000-01006"_s}}, {u"Nobody"_s, {}, {u"12345"_s}}});
    platform.contactStore = contacts;
    platform.makeAudioEngine = [this] { return m_nextMicrophone.makeEngine(); };
    platform.makeAudioPlayer = [folder = m_folder.path(), number = std::make_shared<std::atomic<unsigned>>()] {
        return std::make_unique<WavAudioPlayer>(u"%1/%2.wav"_s.arg(folder).arg((*number)++ % loudspeakers),
                                                WavAudioPlayer::Pace::AsFastAsWritten);
    };
    platform.makeHttpTransport = [this, make = platform.makeHttpTransport](const HttpSessionConfiguration &session) {
        return std::make_unique<CountingTransport>(make(session), m_nextRequests);
    };
    Platform::install(std::move(platform));
}

QString Laboratory::sentence()
{
    return u"Where is the hotel?"_s;
}

PcmBuffer Laboratory::record()
{
    const auto keys = examples::SandboxProcess::configuration();
    auto config = SpeechConfig::fromSubscription(keys.speechKey(), keys.speechRegion());
    config->setSpeechSynthesisVoiceName(languageEntry(allLanguageOptions.front()).synthesisVoice);
    bool spoken = false;
    GlobalQueue::async([&] {
        const auto result = (*Platform::current()->speechService->makeSynthesizer(*config))->speakText(sentence());
        MainQueue::async([&] { spoken = true; });
    });
    examples::waitUntil([&] { return spoken; }, std::chrono::minutes(1));
    const auto sound = WavFile::read(m_folder.filePath(u"0.wav"_s));
    if (!sound)
        qFatal("The sandbox's voice cannot be recorded: %s", qPrintable(sound.error()));
    return *sound;
}

qsizetype Laboratory::linesWith(const QString &beginning) const
{
    const QStringList lines = m_console->lines();
    return std::ranges::count_if(lines, [&](const QString &line) { return line.startsWith(beginning); });
}

void Laboratory::forgetLines()
{
    m_console.reset();
    m_console = std::make_unique<CapturedConsole>();
}

void Laboratory::useNext(const WavMicrophone &microphone, std::shared_ptr<int> requests)
{
    m_nextMicrophone = microphone;
    m_nextRequests = std::move(requests);
}

void Laboratory::lead(const QString &host, WayOut wayOut)
{
    m_ways->insert(host, portOf(wayOut));
}

quint16 Laboratory::portOf(WayOut wayOut)
{
    switch (wayOut) {
    case WayOut::NobodyListens: {
        QTcpServer momentary;
        momentary.listen(QHostAddress::LocalHost);
        return momentary.serverPort();
    }
    case WayOut::ProxyRefuses:
        return m_refusingProxy.serverPort();
    case WayOut::UntrustedCertificate:
        if (!m_impostor) {
            const QSslConfiguration trust = QSslConfiguration::defaultConfiguration();
            m_impostor = startSandbox(m_folder.filePath(u"impostor"_s));
            QSslConfiguration::setDefaultConfiguration(trust);
            installWays();
        }
        return m_impostor->address().proxyPort;
    }
    Q_UNREACHABLE();
}

void Laboratory::leadEverythingToTheSandbox()
{
    m_ways->clear();
    m_ways->insert({}, m_sandbox->address().proxyPort);
}

} // namespace faults
