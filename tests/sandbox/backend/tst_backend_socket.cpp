#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <boost/system/system_error.hpp>

#include <memory>
#include <vector>

#include "sandbox/backend/BackendHosts.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/sandbox/backend/RunningBackend.h"

using namespace sandbox;
using namespace std::chrono_literals;
using namespace vynlex;

namespace {

QByteArray frame(const QString &event, const QJsonObject &data)
{
    return QJsonDocument(QJsonObject{{"event", event}, {"data", data}}).toJson(QJsonDocument::Compact);
}

/// An open socket. What goes either way is held against the document of the interface.
class Socket {
public:
    explicit Socket(const Server::Listening &server, std::string_view host = "socket.demo.confera.example")
        : m_client(server, std::string(host))
    {
        status = m_client.upgrade("/ws");
    }

    void say(const QString &event, const QJsonObject &data)
    {
        const auto text = frame(event, data);
        violations += contract().violationsOfClientFrame(text);
        m_client.sendBinary(text.toStdString());
    }
    void logIn(const std::string &token) { say("login", {{"token", QString::fromStdString(token)}}); }
    void acknowledge(const QString &event) { say("ack", {{"originalEvent", event}, {"timestamp", "1769850900"}}); }

    /// The next push.
    QJsonObject hear()
    {
        const auto event = m_client.receive();
        const auto text = QByteArray::fromStdString(event.text);
        violations += contract().violationsOfServerFrame(text);
        if (event.binary)
            violations << "a binary frame";
        return QJsonDocument::fromJson(text).object();
    }

    TestClient &client() { return m_client; }

    unsigned status = 0;
    QStringList violations;

private:
    static const OpenApiContract &contract()
    {
        static const auto document = OpenApiContract::ofConfera();
        return document;
    }

    TestClient m_client;
};

QJsonArray control(const Server::Listening &server, const char *path)
{
    const auto answer = plainRequest(server.controlPort, "GET", path);
    return QJsonDocument::fromJson(QByteArray::fromStdString(answer.body)).array();
}

std::string messagesOf(const std::string &thread)
{
    return "/api/chat/thread/" + thread + "/messages";
}

} // namespace

class BackendSocketTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    std::optional<RunningBackend> m_backend;

    const Server::Listening &listening() { return m_backend->server.listening(); }
    QJsonArray sessions() { return control(listening(), "/sessions"); }
    QJsonObject session(qsizetype place) { return sessions()[place].toObject(); }
    QJsonObject newestSession() { return sessions().last().toObject(); }
    QString lastProblem() { return control(listening(), "/problems").last()[u"what"].toString(); }

    void begin(SocketLimits limits = {})
    {
        m_backend.reset();
        m_backend.emplace(m_folder.path().toStdString(), limits);
    }
    std::string token(const std::string &user) { return Caller(listening()).as(user).token; }
    std::unique_ptr<Socket> socketOf(const std::string &user)
    {
        auto socket = std::make_unique<Socket>(listening());
        socket->logIn(token(user));
        if (!eventually([&] { return newestSession()["userId"].toString().toStdString() == user; }))
            qFatal("not logged in");
        return socket;
    }

private slots:
    void init() { begin(); }
    void cleanup() { m_backend.reset(); }

    void whatHappensInAThreadIsToldToEverySessionOfItsMembers()
    {
        std::vector<std::unique_ptr<Socket>> members;
        for (const auto &user : {asha, asha, meera})
            members.push_back(socketOf(user));
        const auto stranger = socketOf(rohan);
        const auto expectEverywhere = [&](const QString &event, const QJsonObject &data) {
            for (const auto &socket : members)
                QCOMPARE(socket->hear(), (QJsonObject{{"event", event}, {"data", data}}));
        };

        Caller caller(listening());
        caller.as(asha);
        const auto thread = caller.ask("POST", "/api/chat/thread", threadBody(asha, meera)).json;
        expectEverywhere("chatThreadAddOrEdit", thread);
        caller.ask("POST", "/api/chat/thread", threadBody(meera, asha)); // there is one: nothing new

        const auto id = thread["_id"].toString().toStdString();
        const auto sent = caller.ask("POST", messagesOf(id), messageBody(QString::fromUtf8("hi-IN## नमस्ते"))).json;
        expectEverywhere("chatMessage", sent);

        Caller reader(listening());
        reader.as(meera);
        QCOMPARE(reader.messages(10, 0, id).json["messages"].toArray(), QJsonArray{sent});
        const auto read = reader.messages(10, 0, id).json["messages"][0].toObject();
        QVERIFY(read != sent);
        expectEverywhere("chatMessageUpdate", read);

        members[1]->acknowledge("chatMessage");
        TRY_COMPARE(session(1)["acknowledged"].toObject(), (QJsonObject{{"chatMessage", 1}}));
        QCOMPARE(session(1)["pushed"].toObject(),
                 (QJsonObject{{"chatThreadAddOrEdit", 1}, {"chatMessage", 1}, {"chatMessageUpdate", 1}}));
        QCOMPARE(session(3)["userId"].toString().toStdString(), rohan);
        QCOMPARE(session(3)["pushed"].toObject(), QJsonObject());
        for (const auto &socket : members)
            QCOMPARE(socket->violations, QStringList());
    }

    void onlyAGoodTokenLogsIn()
    {
        Socket socket(listening(), backendHosts.front().socket);
        QCOMPARE(socket.status, 101U);
        const auto refused = [&](const std::string &bad, int number, const char *code) {
            socket.logIn(bad);
            TRY_COMPARE(newestSession()["refusedLogins"].toInt(), number);
            QCOMPARE(lastProblem(), code);
        };
        refused(token(asha) + "x", 1, "login: UNAUTHORIZED");
        refused(token(waiting), 2, "login: WAITING_ROOM");
        QVERIFY(newestSession()["userId"].isNull());
        QCOMPARE(newestSession()["logins"].toInt(), 0);

        Caller caller(listening());
        caller.as(asha).ask("POST", messagesOf(longThread), messageBody("before the login"));
        socket.logIn(token(rohan)); // still open
        TRY_COMPARE(newestSession()["logins"].toInt(), 1);
        const auto sent = caller.ask("POST", messagesOf(longThread), messageBody("after it")).json;
        QCOMPARE(socket.hear()["data"].toObject(), sent);
        QCOMPARE(socket.violations, QStringList());
        QCOMPARE(TestClient(listening(), "socket.demo.confera.example").upgrade("/ws?token=x"), 400U);
    }

    void aClientsMistakesAreCountedAndChangeNothing_data()
    {
        addRows<QByteArray, QString>({
            {"not JSON", "{", "not JSON: incomplete JSON"},
            {"no data", R"({"event":"login"})", "data: is missing"},
            {"unknown event", frame("logout", {}), "event: is none of login, amAlive, ack"},
            {"a key too many", frame("login", {{"token", "t"}, {"user", "u"}}), "data.user: is unknown"},
            {"a number as token", frame("login", {{"token", 1}}), "data.token: must be a text"},
            {"a time with a fraction", frame("ack", {{"originalEvent", "chatMessage"}, {"timestamp", "1769850900.5"}}),
             "data.timestamp: must be whole seconds in decimal digits, as a text"},
        });
    }
    void aClientsMistakesAreCountedAndChangeNothing()
    {
        const auto [text, what] = currentRow<QByteArray, QString>();
        QVERIFY(!OpenApiContract::ofConfera().violationsOfClientFrame(text).isEmpty());
        Socket socket(listening());
        const auto expectProblem = [&](int number, const QString &problem) {
            TRY_COMPARE(newestSession()["problems"].toInt(), number);
            QCOMPARE(lastProblem(), problem);
        };
        socket.client().sendBinary(text.toStdString());
        expectProblem(1, what);
        socket.acknowledge("chatMessage");
        expectProblem(2, "ack: data.originalEvent: nothing of that name is left to acknowledge");
        socket.client().sendText(frame("amAlive", {{"token", "(null)"}}).toStdString());
        expectProblem(3, "a text frame; a client's frames are binary");

        socket.say("amAlive", {{"token", "(null)"}});
        socket.say("amAlive", {{"token", "a.b.c"}});
        TRY_COMPARE(newestSession()["keepAlives"].toInt(), 2);
        QCOMPARE(newestSession()["problems"].toInt(), 3);
    }

    void whoSaysNothingIsDropped()
    {
        begin({.silence = 2s});
        Socket lively(listening());
        Socket silent(listening());
        QElapsedTimer since;
        since.start();
        const bool dropped = eventually([&] {
            lively.say("amAlive", {{"token", "(null)"}});
            return sessions().size() == 1;
        });
        QVERIFY(dropped && since.elapsed() > 1000);
        QVERIFY_EXCEPTION_THROWN(silent.hear(), boost::system::system_error);
        QVERIFY(newestSession()["keepAlives"].toInt() > 1);
    }

    void whoDoesNotReadIsDropped()
    {
        begin({.waitingFrames = 8});
        const auto reading = socketOf(rohan);
        m_backend->server.faults().add(
            boost::json::array{{{"path", "/ws"}, {"kind", "slow"}, {"bytesPerSecond", 300}, {"times", 1}}});
        const auto slow = socketOf(rohan);
        Caller caller(listening());
        caller.as(asha);
        int sent = 0;
        while (sessions().size() == 2 && sent < 1000) {
            caller.ask("POST", messagesOf(longThread), messageBody(QString::number(++sent)));
            QCOMPARE(reading->hear()["data"][u"messageComponent"][u"text"].toString(), QString::number(sent));
            if (sent > 8)
                QTest::qWait(1); // the session ends on another thread
        }
        QCOMPARE(sessions().size(), 1);
        QVERIFY(sent >= 9 && sent < 1000);
        QCOMPARE(lastProblem(), "does not read: dropped with 9 frames waiting");
        QVERIFY_EXCEPTION_THROWN(while (true) slow->hear(), boost::system::system_error);
    }
};

template struct vynlex::InSuite<BackendSocketTest>;

#include "tst_backend_socket.moc"
