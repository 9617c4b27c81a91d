#include "tests/faults/Load.h"

#include <QElapsedTimer>
#include <QHash>
#include <QSet>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <array>
#include <random>

#include "EventLoop.h"
#include "api/JwtUserId.h"
#include "sandbox/backend/Database.h"
#include "tests/faults/Laboratory.h"
#include "tests/faults/Phone.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace vynlex;

namespace faults {
namespace {

constexpr int pairs = 21; ///< Of people who write to each other: 1 and 2, 3 and 4, ...
constexpr int sockets = 200;
constexpr auto betweenMessages = 20ms;
constexpr int longestLifeMs = 15'000; ///< Of the sandbox, which is killed by then; in a short run by its middle.
constexpr auto limit = 60s;

/// One of two who write to each other.
struct Writer {
    VLApiManager api;
    QString threadId;
};

class Load {
public:
    explicit Load(unsigned seed)
        : m_random(seed)
    {
    }

    bool signIn()
    {
        for (int i = 0; i < 2 * pairs; ++i) {
            VLApiManager &api = m_writers.emplace_back(std::make_unique<Writer>())->api;
            api.getJWToken(
                "web-token-"_L1 + userId(i + 1), [this, i, &api](const VLApiResult<VLTokenResponse> &answer) {
                    if (!answer || !answer->jwt)
                        return;
                    api.setCredentials(userIdOfJwt(*answer->jwt), *answer->jwt);
                    api.getPrivateChatThread(userId(i + 1), userId((i ^ 1) + 1),
                                             [this, i](const VLApiResult<VLChatThread> &thread) {
                                                 if (thread)
                                                     m_writers[static_cast<std::size_t>(i)]->threadId = thread->id;
                                             });
                });
        }
        const auto ready = [](const auto &writer) { return !writer->threadId.isEmpty(); };
        return examples::waitUntil([&] { return std::ranges::all_of(m_writers, ready); }, limit);
    }

    void run(std::chrono::seconds length)
    {
        const auto longestLife =
            static_cast<int>(std::min<qint64>(longestLifeMs, std::chrono::milliseconds(length).count() / 2));
        QTimer writing;
        QObject::connect(&writing, &QTimer::timeout, [this] { write(); });
        QElapsedTimer clock;
        clock.start();
        while (std::chrono::milliseconds(clock.elapsed()) < length) {
            openSockets();
            writing.start(betweenMessages);
            const std::chrono::milliseconds life(
                std::uniform_int_distribution<int>(longestLife / 5, longestLife)(m_random));
            examples::letPass(life);
            m_laboratory.sandbox().kill();
            ++m_kills;
            m_laboratory.restartSandbox();
        }
        writing.stop();
        examples::waitUntil([this] { return m_underWay == 0; }, limit);
        closeSockets();
        m_laboratory.sandbox().kill();
    }

    int report()
    {
        QHash<QString, int> stored;
        sandbox::Database database(m_laboratory.databaseFile().toStdString());
        auto query = database.prepare("SELECT json_extract(component, '$.text'), count(*) FROM messages GROUP BY 1");
        while (query.step())
            stored[QString::fromStdString(query.text(0))] = static_cast<int>(query.integer(1));
        const auto isLost = [&](const QString &text) { return !stored.contains(text); };
        const auto lost = std::ranges::count_if(m_acknowledged, isLost);
        qsizetype twice = 0;
        qsizetype unacknowledged = 0;
        for (const auto &[text, count] : stored.asKeyValueRange()) {
            if (!text.startsWith(m_mark))
                continue;
            twice += count > 1 ? 1 : 0;
            unacknowledged += m_acknowledged.contains(text) ? 0 : 1;
        }
        QTextStream(stderr) << m_sent << " messages sent, " << m_acknowledged.size() << " acknowledged, "
                            << unacknowledged << " stored without that; killed " << m_kills << " times; " << m_pushed
                            << " pushes to " << sockets << " sockets.\nAcknowledged and lost: " << lost
                            << ". Stored twice: " << twice << ". Pushed twice over one socket: " << m_pushedTwice
                            << ".\n";
        return lost == 0 && twice == 0 && m_pushedTwice == 0 && !m_acknowledged.isEmpty() && m_pushed > 0
                   ? EXIT_SUCCESS
                   : EXIT_FAILURE;
    }

private:
    struct Socket {
        std::unique_ptr<VLWebSocketManager> session;
        QSet<QString> heard;
    };

    void closeSockets()
    {
        for (Socket &socket : m_sockets)
            socket = {};
    }
    void openSockets()
    {
        for (std::size_t i = 0; i < m_sockets.size(); ++i) {
            Socket &socket = m_sockets.at(i);
            const VLApiManager &api = m_writers[i % m_writers.size()]->api;
            socket.heard.clear();
            socket.session = std::make_unique<VLWebSocketManager>(api.currentEnv, api.currentJWT);
            socket.session->isConnectedToNetwork = true;
            socket.session->connect();
            socket.session->onNewChatMessage = [this, &socket](const VLChatMessage &message) {
                ++m_pushed;
                if (socket.heard.contains(message.id))
                    ++m_pushedTwice;
                socket.heard.insert(message.id);
            };
        }
    }

    void write()
    {
        Writer &writer = *m_writers[static_cast<std::size_t>(m_sent) % m_writers.size()];
        const QString text = m_mark + QString::number(m_sent++);
        ++m_underWay;
        writer.api.sendChatMessage(writer.threadId, text, {}, [this, text](const VLApiResult<VLChatMessage> &answer) {
            --m_underWay;
            if (answer)
                m_acknowledged.insert(text);
        });
    }

    Laboratory m_laboratory;
    std::mt19937 m_random;
    std::vector<std::unique_ptr<Writer>> m_writers;
    std::array<Socket, sockets> m_sockets;
    const QString m_mark = u"en-US## load "_s;
    QSet<QString> m_acknowledged;
    int m_sent = 0;
    int m_underWay = 0;
    int m_kills = 0;
    qint64 m_pushed = 0;
    qint64 m_pushedTwice = 0;
};

} // namespace

int playLoad(std::chrono::seconds length, unsigned seed)
{
    QTextStream(stderr) << "seed " << seed << '\n';
    Load load(seed);
    if (!load.signIn()) {
        QTextStream(stderr) << "The writers cannot sign in.\n";
        return EXIT_FAILURE;
    }
    load.run(length);
    return load.report();
}

} // namespace faults
