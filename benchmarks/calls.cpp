// Calls to the backend over real connections: the deployment's host name, TLS, and a server and a proxy on loopback.
//   a burst: 60 calls, answered after 200 ms each, of which 15 go at a time
//   one after another over a kept connection
// beside the same calls by curl alone, and one after another also on a thread of its own, since a main thread may not
// wait.

#include <QCoreApplication>
#include <QNetworkProxy>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <deque>
#include <vector>

#include "api/ApiRequests.h"
#include "api/VLApiRequestManager.h"
#include "benchmarks/Figures.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/net/CurlHttpTransport.h"
#include "tests/platform/net/LocalServer.h"
#include <curl/curl.h>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

constexpr int burst = 60;
constexpr int connections = 15;
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

/// Milliseconds that `count` calls take which are all made at once.
double kitMilliseconds(VLApiRequestManager &manager, int count)
{
    const VLCaller caller{VLApiServer::demo, u"a.b.c"_s, {}, {}};
    int left = count;
    return milliseconds([&] {
        for (int i = 0; i < count; ++i) {
            manager.send(GetContactsRequest(), caller, [&](const VLApiResult<VLContactsResponse> &result) {
                if (!result)
                    qFatal("%s", qPrintable(result.error().errorMessage()));
                --left;
            });
        }
        while (left > 0)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    });
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
        curl_easy_setopt(m_handle, CURLOPT_WRITEDATA, &m_body);
    }
    ~BareCurl()
    {
        curl_easy_cleanup(m_handle);
        curl_slist_free_all(m_headers);
    }
    BareCurl(const BareCurl &) = delete;
    BareCurl &operator=(const BareCurl &) = delete;

    void call()
    {
        m_body.clear();
        if (const CURLcode result = curl_easy_perform(m_handle); result != CURLE_OK || m_body.isEmpty())
            qFatal("curl: %s", curl_easy_strerror(result));
    }
    [[nodiscard]] CURL *handle() const { return m_handle; }

private:
    CURL *m_handle;
    curl_slist *m_headers = nullptr;
    QByteArray m_body;
};

/// Milliseconds that `count` calls take by curl's multi interface, `lanes` of them under way at a time. (Its own limit
/// of connections per host starts one waiting call per turn, and takes more than twice as long.)
double bareMilliseconds(CURLM *multi, std::deque<BareCurl> &lanes, int count)
{
    int left = count - static_cast<int>(lanes.size());
    return milliseconds([&] {
        for (BareCurl &lane : lanes)
            curl_multi_add_handle(multi, lane.handle());
        for (int running = 1; running > 0;) {
            curl_multi_perform(multi, &running);
            int others = 0;
            while (const CURLMsg *const message = curl_multi_info_read(multi, &others)) {
                if (message->data.result != CURLE_OK)
                    qFatal("curl: %s", curl_easy_strerror(message->data.result));
                CURL *const lane = message->easy_handle;
                curl_multi_remove_handle(multi, lane);
                if (left-- > 0) {
                    curl_multi_add_handle(multi, lane);
                    running = 1;
                }
            }
            if (running > 0)
                curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
        }
    });
}

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
    const Figures figures(argc, argv);

    VLApiRequestManager manager;
    CURLM *const multi = curl_multi_init();
    std::deque<BareCurl> lanes;
    while (lanes.size() < connections)
        lanes.emplace_back(proxy.port(), authority.certificatePem);
    kitMilliseconds(manager, connections); // connections that are kept
    bareMilliseconds(multi, lanes, connections);
    std::vector<double> kitMs;
    std::vector<double> bareMs;
    delayMs = 200;
    mostUnderWay = 0;
    for (int round = 0; round < 5; ++round) { // in turns, so that both see the same machine
        kitMs.push_back(kitMilliseconds(manager, burst));
        bareMs.push_back(bareMilliseconds(multi, lanes, burst));
    }
    if (mostUnderWay > connections)
        qFatal("%d calls at a time", mostUnderWay.load());
    figures.print("60 calls of 200 ms at once", kitMs);
    figures.print("60 calls of 200 ms at once, curl alone", bareMs);
    curl_multi_cleanup(multi);

    BareCurl &bare = lanes.front();
    QThread thread;
    QObject there; // as an application calls that must not keep its main thread waiting
    there.moveToThread(&thread);
    thread.start();
    const auto callFromThere = [&] {
        bool isDone = false;
        QMetaObject::invokeMethod(&there, [&] {
            bare.call();
            MainQueue::async([&] { isDone = true; });
        });
        while (!isDone)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    };
    for (const int delay : {0, 5, 20}) {
        delayMs = delay;
        kitMs.clear();
        bareMs.clear();
        std::vector<double> threadMs;
        for (int round = 0; round < rounds; ++round) {
            for (int call = 0; call < callsPerRound / (1 + delay / 5); ++call)
                kitMs.push_back(kitMilliseconds(manager, 1));
            for (int call = 0; call < callsPerRound / (1 + delay / 5); ++call)
                bareMs.push_back(milliseconds([&] { bare.call(); }));
            for (int call = 0; call < callsPerRound / (1 + delay / 5); ++call)
                threadMs.push_back(milliseconds(callFromThere));
        }
        const QByteArray what = "a call that the server takes " + QByteArray::number(delay) + " ms for";
        figures.print(what, kitMs);
        figures.print(what + ", curl alone", bareMs);
        figures.print(what + ", curl on a thread of its own", threadMs);
    }
    thread.quit();
    thread.wait();
    return EXIT_SUCCESS;
}
