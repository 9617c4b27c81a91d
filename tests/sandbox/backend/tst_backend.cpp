#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

#include "sandbox/backend/BackendHosts.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/sandbox/backend/RunningBackend.h"

using namespace sandbox;
using namespace vynlex;

namespace {

constexpr int limitMs = 60'000;

QByteArray uploadBody(const QList<std::pair<QString, QString>> &numbers)
{
    QJsonArray contacts;
    for (const auto &[name, digits] : numbers)
        contacts << QJsonObject{{"name", name}, {"phoneNo", digits}};
    return QJsonDocument(QJsonObject{{"contacts", contacts}}).toJson();
}

} // namespace

class BackendTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    std::optional<RunningBackend> m_backend;
    std::optional<Caller> m_caller; ///< Asha

    std::filesystem::path folder() const { return m_folder.path().toStdString(); }
    const Server::Listening &listening() { return m_backend->server.listening(); }

private slots:
    void initTestCase() { m_backend.emplace(folder()); }
    void init()
    {
        m_caller.emplace(listening());
        m_caller->as(asha);
    }
    void cleanup() { QCOMPARE(m_caller->violations, QStringList()); }

    void aWebTokenIsExchangedOnEveryHost()
    {
        for (const auto &host : backendHosts) {
            Caller caller(listening(), std::string(host.rest));
            caller.as(asha);
            QCOMPARE(caller.violations, QStringList());
            const auto claims = QJsonDocument::fromJson(QByteArray::fromBase64(
                QByteArray::fromStdString(caller.token).split('.').at(1), QByteArray::Base64UrlEncoding));
            QCOMPARE(claims["userId"].toString().toStdString(), asha);
            QCOMPARE(claims["exp"].toInteger() - claims["iat"].toInteger(), 3600);
        }
    }

    void onlyTheKnownSourceMayExchange()
    {
        const QByteArray body = R"({"jwt":"web-token-65b20a005eed000000000001"})";
        const auto code = [&](const Caller::Changes &changes, const QByteArray &given) {
            return m_caller->ask("POST", exchange, given, changes).code();
        };
        QCOMPARE(code({}, body), "FORBIDDEN");
        QCOMPARE(code({{"x-source", "somebody"}}, body), "FORBIDDEN");
        QCOMPARE(code({{"x-source", "myvyn-vynevents"}}, R"({"jwt":"web-token-0"})"), "UNAUTHORIZED");
        QCOMPARE(code({{"x-source", "myvyn-vynevents"}}, R"({"jwt":""})"), "VALIDATION_ERROR");
    }

    void aCallerIsWhomTheTokenNames_data()
    {
        const auto token = [this](const std::string &user, Instant at, const std::filesystem::path &keys) {
            return QByteArray::fromStdString(SessionTokens(keys, std::chrono::hours(1)).issue(user, at).token);
        };
        const auto parts = token(asha, now(), folder()).split('.');
        const auto base64 = [](const QByteArray &text) {
            return text.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
        };
        addRows<QByteArray, int, QString>({
            {"good", token(asha, now(), folder()), 200, ""},
            {"expired", token(asha, now() - std::chrono::hours(1), folder()), 401, "TOKEN_EXPIRED"},
            {"signed with another key", token(asha, now(), {}), 401, "UNAUTHORIZED"},
            {"nobody", token("65b20a005eed0000000000ff", now(), folder()), 401, "UNAUTHORIZED"},
            {"waiting", token(waiting, now(), folder()), 467, "WAITING_ROOM"},
            {"other payload", parts[0] + "." + token(rohan, now(), folder()).split('.')[1] + "." + parts[2], 401,
             "UNAUTHORIZED"},
            {"without algorithm", base64(R"({"alg":"none","typ":"JWT"})") + "." + parts[1] + ".", 401, "UNAUTHORIZED"},
            {"with a scheme word", "Bearer " + parts.join('.'), 401, "UNAUTHORIZED"},
            {"missing", {}, 401, "UNAUTHORIZED"},
        });
    }
    void aCallerIsWhomTheTokenNames()
    {
        const auto [token, status, code] = currentRow<QByteArray, int, QString>();
        m_caller->token = token.toStdString();
        const auto reply = m_caller->calls("group_call");
        QCOMPARE(reply.status, static_cast<unsigned>(status));
        QCOMPARE(reply.code(), code);
    }

    void whatIsNotOfTheInterfaceIsRefused_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("place"); // in "errorsArray", or a word of "errors"

        const QByteArray calls = "/api/calls?callCategory=group_call&offset=0&limit=";
        const auto get = [](const char *name, const QByteArray &target, const char *word) {
            QTest::newRow(name) << QByteArray("GET") << target << QByteArray() << 400 << word;
        };
        get("limit of 201", calls + "201", "limit");
        get("an offset beyond all numbers", "/api/contacts/all?offset=99999999999", "offset");
        get("unknown category", "/api/calls?callCategory=group_call,&offset=0&limit=1", "callCategory");
        get("unknown parameter", "/api/contacts/all?page=1", "page");

        const auto append = [](const char *name, const QByteArray &body, int status, const char *place) {
            QTest::newRow(name) << QByteArray("PUT") << QByteArray("/api/contacts/append") << body << status << place;
        };
        append("not JSON", "contacts", 400, "JSON");
        append("a number of letters", uploadBody({{"A", "1"}, {"B", "+91 98250"}}), 400, "contacts[1].phoneNo");
        append("a key too many", R"({"contacts":[{"name":"A","phoneNo":"1","id":"2"}]})", 400, "contacts[0].id");
        append("too many", uploadBody(QList<std::pair<QString, QString>>(10'001)), 413, "contacts");

        const auto thread = [](const char *name, const QByteArray &body, int status, const char *place) {
            QTest::newRow(name) << QByteArray("POST") << QByteArray("/api/chat/thread") << body << status << place;
        };
        thread("a thread with oneself", threadBody(asha, asha), 400, "members[1]");
        thread("a thread with nobody", threadBody(asha, "65b20a005eed0000000000ff"), 400, "members[1]");
        thread("a thread of others", threadBody(rohan, meera), 403, "two");
        thread("a stranger as admin", threadBody(asha, rohan).replace(R"("admins": [)", R"("admins": ["x",)"), 400,
               "admins[0]");

        const auto send = [](const char *name, const std::string &id, const QByteArray &body, int status,
                             const char *place) {
            QTest::newRow(name) << QByteArray("POST")
                                << QByteArray::fromStdString("/api/chat/thread/" + id + "/messages") << body << status
                                << place;
        };
        send("no attachments", longThread, R"({"messageComponent":{"text":"a"}})", 400, "messageComponent.attachments");
        send(
            "half an attachment", longThread,
            R"({"messageComponent":{"text":"a","attachments":[{"fileID":"1","fileName":"a","fileSize":1,"fileURL":""}]}})",
            400, "messageComponent.attachments[0].fileSize");
        send("a long text", longThread, messageBody(QString(10'001, QChar(u'क'))), 400, "messageComponent.text");
        send("unknown thread", "66a9f2005eed0000000000ff", messageBody("a"), 404, "conversation");
        QTest::newRow("other method") << QByteArray("DELETE") << QByteArray("/api/contacts/append") << QByteArray()
                                      << 405 << "method";
        QTest::newRow("a body where none belongs")
            << QByteArray("GET") << QByteArray("/api/contacts/all") << QByteArray("{}") << 400 << "body";
    }
    void whatIsNotOfTheInterfaceIsRefused()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, target);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, place);
        const auto reply = m_caller->ask(method.toStdString(), target.toStdString(), body);
        QCOMPARE(reply.status, static_cast<unsigned>(status));
        if (reply.json.contains("errorsArray"))
            QCOMPARE(listed(reply.json, "errorsArray", "path"), QStringList(place));
        else
            QVERIFY2(reply.json["errors"].toString().contains(place), qPrintable(reply.json["errors"].toString()));
        if (status == 405) // a method that the document does not know either
            QCOMPARE(std::exchange(m_caller->violations, {}).size(), 1);
    }

    void theSigningKeyIsItsOwnersOnly()
    {
        const auto file = QString::fromStdString((folder() / "session-key").string());
        QCOMPARE(QFileInfo(file).permissions() & ~QFile::Permissions(QFile::ReadUser | QFile::WriteUser),
                 QFile::Permissions(QFile::ReadOwner | QFile::WriteOwner));
    }

    void everyRequestSaysThatItSpeaksJson()
    {
        for (const auto &[method, target] : {std::pair("GET", "/api/contacts/all"), std::pair("POST", exchange.c_str()),
                                             std::pair("PUT", "/api/contacts/append")}) {
            QCOMPARE(m_caller->ask(method, target, {}, {{"Content-Type", {}}}).code(), "UNSUPPORTED_MEDIA_TYPE");
            QCOMPARE(m_caller->ask(method, target, {}, {{"Content-Type", "text/plain"}}).code(),
                     "UNSUPPORTED_MEDIA_TYPE");
            QCOMPARE(m_caller->ask(method, target, {}, {{"deviceId", {}}}).code(), "BAD_REQUEST");
        }
    }

    void contactsAreUsersWhoseNumberTheCallerHasUploaded()
    {
        const auto contacts = [this](const std::string &query = "") {
            return m_caller->ask("GET", "/api/contacts/all" + query).json;
        };
        QCOMPARE(contacts()["total"].toInt(), 0);
        const QByteArray body = uploadBody({{"Rohan ", "919000001002"}, // country code
                                            {"Rohan at work", "09000001002"},
                                            {"Meera", "9000001003"},
                                            {"Anna", "00919000001004"},
                                            {"me", "9000001001"},
                                            {"police", "112"},
                                            {"blank", ""},
                                            {"আমার বন্ধু", "9000001035"},
                                            {"short", "000001005"}}); // nine digits of somebody's ten
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(m_caller->ask("PUT", "/api/contacts/append", body).json, (QJsonObject{{"success", true}}));
            QCOMPARE(listed(contacts(), "contacts", "name"), QStringList({"Anna", "Meera", "Rohan", "মৌসুমী"}));
        }
        QCOMPARE(contacts()["contacts"][2][u"id"].toString().toStdString(), rohan);
        QCOMPARE(contacts()["contacts"][2][u"phoneNo"].toString(), "+919000001002");

        QCOMPARE(listed(contacts("?search=AN"), "contacts", "name"), QStringList({"Anna", "Rohan"}));
        QCOMPARE(listed(contacts("?search=fern"), "contacts", "name"), QStringList({"Anna"})); // the last name
        QCOMPARE(listed(contacts("?search=%E0%A6%AE%E0%A7%8C"), "contacts", "name"), QStringList({"মৌসুমী"}));
        QCOMPARE(contacts("?search=%25")["total"].toInt(), 0); // no wildcard

        const auto page = contacts("?limit=2&offset=1");
        QCOMPARE(listed(page, "contacts", "name"), QStringList({"Meera", "Rohan"}));
        QCOMPARE(page["total"].toInt(), 4);
        QCOMPARE(page["moreAvailable"].toBool(), true);
        QCOMPARE(contacts("?limit=2&offset=2")["moreAvailable"].toBool(), false);
        QCOMPARE(listed(contacts("?offset=4"), "contacts", "name"), QStringList());

        Caller other(listening()); // who has uploaded nothing
        QCOMPARE(other.as(rohan).ask("GET", "/api/contacts/all").json["total"].toInt(), 0);
    }

    void callsAreThoseOfTheCallerNewestFirst()
    {
        const auto all = m_caller->calls("one_to_one_call,group_call").json;
        const auto history = all["callHistory"].toArray();
        QCOMPARE(all["totalCount"].toInt(), history.size());
        QVERIFY(history.size() > 20);
        const auto starts = listed(all, "callHistory", "startMeeting");
        QVERIFY(std::is_sorted(starts.rbegin(), starts.rend()));
        std::set<bool> owned;
        std::set<bool> pictured;
        for (const auto call : history) {
            QVERIFY(listed(call.toObject(), "members", "userId").contains(QString::fromStdString(asha)));
            owned.insert(call[u"userId"].toString().toStdString() == asha);
            pictured.insert(call.toObject().contains("imageMeta"));
            QCOMPARE(call[u"isOneToOne"].toBool(), call[u"members"].toArray().size() == 2);
        }
        QCOMPARE(owned.size(), 2U);
        QCOMPARE(pictured.size(), 2U);

        const int group = m_caller->calls("group_call").json["totalCount"].toInt();
        const int oneToOne = m_caller->calls("one_to_one_call").json["totalCount"].toInt();
        QCOMPARE(group + oneToOne, history.size());
        const auto missed = m_caller->calls("missed_call").json["callHistory"].toArray();
        QCOMPARE(missed.size(),
                 std::count_if(history.begin(), history.end(), [](auto c) { return c[u"isMissedCall"].toBool(); }));
        QVERIFY(!missed.isEmpty());

        const auto page = m_caller->calls("one_to_one_call,group_call", 3, static_cast<int>(history.size()) - 3).json;
        QCOMPARE(page["moreAvailable"].toBool(), false);
        QCOMPARE(listed(page, "callHistory", "startMeeting"), starts.mid(starts.size() - 3));
        QCOMPARE(m_caller->calls("one_to_one_call,group_call", 1).json["moreAvailable"].toBool(), true);
    }

    void aPairHasOneThread()
    {
        QCOMPARE(
            m_caller->ask("POST", "/api/chat/thread", threadBody(rohan, asha)).json["_id"].toString().toStdString(),
            longThread);
        std::mutex mutex;
        std::set<QString> ids;
        QStringList violations;
        std::vector<std::thread> askers;
        for (int i = 0; i < 8; ++i) {
            askers.emplace_back([&, i] {
                Caller caller(listening());
                caller.as(i % 2 == 0 ? asha : meera);
                const auto body = i % 4 < 2 ? threadBody(asha, meera) : threadBody(meera, asha);
                const auto reply = caller.ask("POST", "/api/chat/thread", body);
                const std::scoped_lock lock(mutex);
                ids.insert(reply.json["_id"].toString());
                violations += caller.violations;
            });
        }
        for (auto &asker : askers)
            asker.join();
        QCOMPARE(violations, QStringList());
        QCOMPARE(ids.size(), 1U);
        QCOMPARE(ids.begin()->size(), 24);
    }

    void messagesComeInPagesNewestFirst()
    {
        const auto newest = m_caller->messages(150, 0).json;
        QCOMPARE(newest["messages"].toArray().size(), 150);
        QCOMPARE(newest["totalCount"].toInt(), 200);
        QCOMPARE(newest["unreadCount"].toInt(), 3);
        QCOMPARE(newest["moreAvailable"].toBool(), true);
        const auto rest = m_caller->messages(150, 150).json;
        QCOMPARE(rest["messages"].toArray().size(), 50);
        QCOMPARE(rest["moreAvailable"].toBool(), false);
        const auto times = listed(newest, "messages", "cOn") + listed(rest, "messages", "cOn");
        QVERIFY(std::is_sorted(times.rbegin(), times.rend()));
        QCOMPARE(m_caller->messages(1, 199).json["moreAvailable"].toBool(), false);
        QCOMPARE(m_caller->messages(1, 198).json["moreAvailable"].toBool(), true);
        QCOMPARE(m_caller->messages(150, 200).json["messages"].toArray(), QJsonArray());

        Caller other(listening());
        QCOMPARE(other.as(rohan).messages(1, 0).json["unreadCount"].toInt(), 0);
        QCOMPARE(m_caller->messages(1, 0, otherThread).code(), "FORBIDDEN");
        QCOMPARE(m_caller->messages(1, 0, "66a9f2005eed0000000000ff").code(), "NOT_FOUND");
        const auto withSystem = m_caller->messages(150, 0, "66a9f2005eed000000000004").json["messages"].toArray();
        QCOMPARE(withSystem.last()["systemComponent"][u"usersAdded"].toArray().size(), 1);
    }

    void aSentMessageIsTheNewestOfItsThread()
    {
        const auto thread = m_caller->ask("POST", "/api/chat/thread", threadBody(asha, anna)).json;
        const auto id = thread["_id"].toString().toStdString();
        const QString text = QString::fromUtf8("te-IN## మీరు ఎలా ఉన్నారు? 😀 \"##\" \\ \n");
        const auto sent = m_caller->ask("POST", "/api/chat/thread/" + id + "/messages", messageBody(text)).json;
        QCOMPARE(sent["messageComponent"][u"text"].toString(), text);
        QCOMPARE(sent["createdBy"].toString().toStdString(), asha);
        QCOMPARE(sent["creatorsName"].toString(), "Asha");
        QCOMPARE(sent["recipients"][0][u"userId"].toString().toStdString(), anna);

        Caller other(listening());
        other.as(anna);
        QCOMPARE(m_caller->messages(10, 0, id).json["messages"].toArray(), QJsonArray{sent});
        QCOMPARE(other.messages(10, 0, id).json["unreadCount"].toInt(), 1);
        const auto again = other.messages(10, 0, id).json; // reading marks as read
        QCOMPARE(again["unreadCount"].toInt(), 0);
        QCOMPARE(again["messages"][0][u"recipients"][0][u"isUnread"].toBool(true), false);

        const QByteArray withFile = R"({"messageComponent":{"text":"","attachments":[
            {"fileID":"f","fileName":"a.pdf","fileSize":"12","fileURL":"https://files.confera.example/f"}]}})";
        const auto file = m_caller->ask("POST", "/api/chat/thread/" + id + "/messages", withFile).json;
        QCOMPARE(file["messageComponent"][u"attachments"][0][u"downloadURL"].toString(),
                 "https://files.confera.example/f");
        QCOMPARE(m_caller->ask("POST", "/api/chat/thread", threadBody(anna, asha)).json["numberOfAttachments"].toInt(),
                 1);
    }

    void aRestartKeepsEverything()
    {
        const auto token = m_caller->token;
        m_caller->ask("PUT", "/api/contacts/append", uploadBody({{"Brian", "9000001005"}}));
        m_caller->ask("POST", "/api/chat/thread/" + longThread + "/messages", messageBody("the last before the end"));
        const auto contacts = m_caller->ask("GET", "/api/contacts/all").json;
        m_caller->messages(150, 0); // marks as read
        const auto messages = m_caller->messages(150, 0).json;
        m_caller.reset();
        m_backend.reset();

        m_backend.emplace(folder());
        m_caller.emplace(listening());
        m_caller->token = token; // the signing key is the same
        QCOMPARE(m_caller->ask("GET", "/api/contacts/all").json, contacts);
        QCOMPARE(m_caller->messages(150, 0).json, messages);
        QCOMPARE(messages["totalCount"].toInt(), 201); // the seed came in once
    }

    void aBrokenSeedIsExplainedAndLeavesNothing()
    {
        QTemporaryDir folder;
        const auto file = std::filesystem::path(folder.path().toStdString()) / "seed.json";
        QFile seed(QString::fromStdString(file.string()));
        QVERIFY(seed.open(QIODevice::WriteOnly));
        seed.write(R"({"users":[{"id":"1","name":"A","lname":"","phoneNo":"1","roleIds":[]}],
            "calls":[{"id":"2","category":"group_call","owner":"3"}],"threads":[]})");
        seed.close();
        const auto open = [&](const std::filesystem::path &from) {
            return BackendApi({folder.path().toStdString(), from, std::chrono::hours(1)});
        };
        try {
            open(file);
            QFAIL("the seed was taken");
        } catch (const std::runtime_error &error) {
            QVERIFY2(QByteArray(error.what()).endsWith("seed.json: calls[0]: there is no user 3"), error.what());
        }
        open(defaultSeedFile()); // into a database that is as good as new
    }

    void whatWasAcknowledgedSurvivesAKill()
    {
        QTemporaryDir data;
        const auto start = [&](QProcess &process) {
            process.start(SANDBOX_PROGRAM, {"--data", data.path() + "/new/folder", "--stop-with-parent"});
            while (!process.canReadLine() && process.waitForReadyRead(limitMs))
                continue;
            const auto ready = QJsonDocument::fromJson(process.readLine()).object();
            return Server::Listening{static_cast<std::uint16_t>(ready["tls"].toInt()), 0, 0,
                                     ready["ca"].toString().toStdString()};
        };

        QProcess killed;
        const auto first = start(killed);
        QVERIFY(first.tlsPort != 0);
        std::mutex mutex;
        std::set<QString> acknowledged;
        std::atomic<int> count = 0;
        std::vector<std::thread> senders;
        for (const auto &sender : {asha, rohan}) {
            senders.emplace_back([&, sender] {
                try {
                    Caller caller(first);
                    caller.as(sender);
                    for (;;) {
                        const auto reply = caller.ask("POST", "/api/chat/thread/" + longThread + "/messages",
                                                      messageBody(QString::number(count)));
                        if (reply.status != 200)
                            return;
                        const std::scoped_lock lock(mutex);
                        acknowledged.insert(reply.json["_id"].toString());
                        ++count;
                    }
                } catch (const std::exception &) {
                    return; // the server is gone
                }
            });
        }
        const bool streaming = QTest::qWaitFor([&] { return count >= 40; }, limitMs);
        kill(static_cast<pid_t>(killed.processId()), SIGKILL);
        for (auto &sender : senders)
            sender.join();
        QVERIFY(streaming);
        QVERIFY(killed.waitForFinished(limitMs));
        QCOMPARE(killed.exitStatus(), QProcess::CrashExit);

        QProcess again;
        Caller caller(start(again));
        caller.as(asha);
        QStringList stored;
        for (bool more = true; more;) {
            const auto page = caller.messages(150, static_cast<int>(stored.size())).json;
            stored += listed(page, "messages", "_id");
            more = page["moreAvailable"].toBool();
        }
        QCOMPARE(caller.violations, QStringList());
        QCOMPARE(std::set<QString>(stored.begin(), stored.end()).size(), static_cast<std::size_t>(stored.size()));
        for (const auto &id : acknowledged)
            QVERIFY2(stored.contains(id), qPrintable(id));
        const auto unacknowledged = stored.size() - 200 - static_cast<qsizetype>(acknowledged.size());
        QVERIFY2(unacknowledged >= 0 && unacknowledged <= 2, qPrintable(QString::number(unacknowledged)));
        again.closeWriteChannel();
        QVERIFY(again.waitForFinished(limitMs));
    }
};

template struct vynlex::InSuite<BackendTest>;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    return runSuite(argc, argv);
}

#include "tst_backend.moc"
