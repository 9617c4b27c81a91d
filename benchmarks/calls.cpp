// Calls to the backend over real connections: the deployment's host name, TLS, and a server and a proxy on loopback.
//   a burst: 60 calls, answered after 200 ms each, of which 15 go at a time
//   one after another over a kept connection, beside the same call by curl alone

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QNetworkProxy>
#include <QTextStream>

#include <algorithm>
#include <atomic>
#include <vector>

#include "api/ApiRequests.h"
#include "api/VLApiRequestManager.h"
#include "platform/device/Platform.h"
#include "platform/net/CurlHttpTransport.h"
#include "tests/platform/net/LocalServer.h"
#include <curl/curl.h>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

constexpr int burst = 60;
constexpr int rounds = 15;
constexpr int callsPerRound = 100;

const QByteArray host = "demo.confera.example";

std::atomic<int> delayMs = 0;
std::atomic<int> underWay = 0;
std::atomic<int> mostUnderWay = 0;

void serve(Peer &peer)
{
    static const QByteArray body = R"({"moreAvailable":false,"total":0,"contacts":[]})";
    static const QByteArray answer =
        "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    while (!peer.readHead().isEmpty()) {
        mostUnderWay = std::max(mostUnderWay.load(), ++underWay);
        if (delayMs > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
        --underWay;
        peer.write(answer);
    }
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values.at(values.size() / 2);
}

/// Seconds that `count` calls take which are all made at once.
double kitSeconds(VLApiRequestManager &manager, int count)
{
    const VLCaller caller{VLApiServer::demo, u"a.b.c"_s, {}, {}};
    int left = count;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i) {
        manager.send(GetContactsRequest(), caller, [&](const VLApiResult<VLContactsResponse> &result) {
            if (!result)
                qFatal("%s", qPrintable(result.error().errorMessage()));
            --left;
        });
    }
    while (left > 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

std::size_t collect(char *data, std::size_t size, std::size_t count, void *into)
{
    static_cast<QByteArray *>(into)->append(data, static_cast<qsizetype>(size * count));
    return size * count;
}

/// curl's easy interface, on the calling thread, with the same request.
class BareCurl {
public:
    BareCurl(quint16 proxyPort, const QByteArray &authorityPem)
        : m_handle(curl_easy_init())
    {
        curl_blob authority{const_cast<char *>(authorityPem.constData()), static_cast<std::size_t>(authorityPem.size()),
                            CURL_BLOB_COPY};
        for (const char *const header :
             {"Accept-Encoding: gzip, deflate, br", "Connection: keep-alive", "User-Agent: bare",
              "Content-Type: application/json", "deviceId;", "authorization: a.b.c", "Accept:"})
            m_headers = curl_slist_append(m_headers, header);
        curl_easy_setopt(m_handle, CURLOPT_URL, ("https://" + host + "/api/contacts/all").constData());
        curl_easy_setopt(m_handle, CURLOPT_HTTPHEADER, m_headers);
        curl_easy_setopt(m_handle, CURLOPT_ACCEPT_ENCODING, "gzip, deflate, br");
        curl_easy_setopt(m_handle, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
        curl_easy_setopt(m_handle, CURLOPT_CAINFO_BLOB, &authority);
        curl_easy_setopt(m_handle, CURLOPT_PROXY, "http://127.0.0.1");
        curl_easy_setopt(m_handle, CURLOPT_PROXYPORT, static_cast<long>(proxyPort));
        curl_easy_setopt(m_handle, CURLOPT_HTTPPROXYTUNNEL, 1L);
        curl_easy_setopt(m_handle, CURLOPT_NOPROXY, "");
        curl_easy_setopt(m_handle, CURLOPT_WRITEFUNCTION, collect);
    }
    ~BareCurl()
    {
        curl_easy_cleanup(m_handle);
        curl_slist_free_all(m_headers);
    }
    BareCurl(const BareCurl &) = delete;
    BareCurl &operator=(const BareCurl &) = delete;

    double callSeconds()
    {
        QByteArray body;
        QElapsedTimer timer;
        timer.start();
        curl_easy_setopt(m_handle, CURLOPT_WRITEDATA, &body);
        if (const CURLcode result = curl_easy_perform(m_handle); result != CURLE_OK || body.isEmpty())
            qFatal("curl: %s", curl_easy_strerror(result));
        return static_cast<double>(timer.nsecsElapsed()) / 1e9;
    }

private:
    CURL *m_handle;
    curl_slist *m_headers = nullptr;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const Identity authority = makeAuthority("calls");
    trustOnly({authority.certificatePem});
    CertificateWish wish;
    wish.commonName = host;
    wish.alternativeNames = {"DNS:" + host};
    const LocalServer server(serve, LocalServer::Tls{makeIdentity(wish, &authority)});
    const LocalServer proxy(connectProxy(server.port(), [](const QByteArray &) {}));
    QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, u"127.0.0.1"_s, proxy.port()});
    Platform platform;
    platform.makeHttpTransport = [](const HttpSessionConfiguration &configuration) {
        return std::make_unique<CurlHttpTransport>(configuration);
    };
    Platform::install(std::move(platform));
    QTextStream out(stdout);

    VLApiRequestManager manager;
    kitSeconds(manager, 15); // connections that are kept
    mostUnderWay = 0;
    delayMs = 200;
    const double seconds = kitSeconds(manager, burst);
    out << burst << " calls of " << delayMs << " ms: " << seconds << " s, at most " << mostUnderWay << " at a time\n";

    BareCurl bare(proxy.port(), authority.certificatePem);
    for (const int delay : {0, 5, 20}) {
        delayMs = delay;
        std::vector<double> kitMs;
        std::vector<double> bareMs;
        for (int round = 0; round < rounds; ++round) { // in turns, so that both see the same machine
            for (int call = 0; call < callsPerRound / (1 + delay / 5); ++call)
                kitMs.push_back(kitSeconds(manager, 1) * 1e3);
            for (int call = 0; call < callsPerRound / (1 + delay / 5); ++call)
                bareMs.push_back(bare.callSeconds() * 1e3);
        }
        out << "a call that the server takes " << delay << " ms for: kit " << median(kitMs) << " ms, curl alone "
            << median(bareMs) << " ms, ratio " << median(kitMs) / median(bareMs) << '\n';
    }
    return EXIT_SUCCESS;
}
