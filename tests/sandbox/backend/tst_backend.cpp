#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <thread>

#include "sandbox/backend/BackendHosts.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/sandbox/backend/RunningBackend.h"

using namespace sandbox;
using namespace vynlex;

namespace {

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
        const auto key = QString::fromStdString((folder() / "session-key").string());
        QCOMPARE(QFileInfo(key).permissions() & ~QFile::Permissions(QFile::ReadUser | QFile::WriteUser),
                 QFile::Permissions(QFile::ReadOwner | QFile::WriteOwner));
    }

    void anExchangeIsRefused_data()
    {
        const std::string source = "myvyn-vynevents";
        const QByteArray body = R"({"jwt":"web-token-65b20a005eed000000000001"})";
        addRows<Caller::Changes, QByteArray, QString>({
            {"unknown source", {{"x-source", "somebody"}}, body, "FORBIDDEN"},
            {"unknown person", {{"x-source", source}}, R"({"jwt":"web-token-0"})", "UNAUTHORIZED"},
            {"no token", {{"x-source", source}}, R"({"jwt":""})", "VALIDATION_ERROR"},
            {"no type", {{"Content-Type", {}}}, body, "UNSUPPORTED_MEDIA_TYPE"},
            {"no device", {{"deviceId", {}}}, body, "BAD_REQUEST"},
        });
    }
    void anExchangeIsRefused()
    {
        const auto [changes, body, code] = currentRow<Caller::Changes, QByteArray, QString>();
        QCOMPARE(m_caller->ask("POST", exchange, body, changes).code(), code);
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

    /// `place` is in "errorsArray", or a word of "errors".
    void whatIsNotOfTheInterfaceIsRefused_data()
    {
        const QByteArray calls = "/api/calls?callCategory=group_call&offset=0&limit=201";
        const QByteArray append = "/api/contacts/append";
        const QByteArray thread = "/api/chat/thread";
        const QByteArray messages = thread + "/" + QByteArray::fromStdString(longThread) + "/messages";
        const QByteArray halfAFile =
            R"({"messageComponent":{"text":"a","attachments":[{"fileID":"1","fileName":"a","fileSize":1,"fileURL":""}]}})";
        addRows<QByteArray, QByteArray, QByteArray, int, QString>({
            {"limit of 201", "GET", calls, "", 400, "limit"},
            {"an offset beyond all numbers", "GET", "/api/contacts/all?offset=99999999999", "", 400, "offset"},
            {"unknown category", "GET", "/api/calls?callCategory=group_call,&offset=0&limit=1", "", 400,
             "callCategory"},
            {"unknown parameter", "GET", "/api/contacts/all?page=1", "", 400, "page"},
            {"a body where none belongs", "GET", "/api/contacts/all", "{}", 400, "body"},
            {"other method", "DELETE", append, "", 405, "method"},
            {"not JSON", "PUT", append, "contacts", 400, "JSON"},
            {"a number of letters", "PUT", append, uploadBody({{"B", "+91 98250"}}), 400, "contacts[0].phoneNo"},
            {"a key too many", "PUT", append, R"({"contacts":[{"name":"A","phoneNo":"1","id":"2"}]})", 400,
             "contacts[0].id"},
            {"too many", "PUT", append, uploadBody(QList<std::pair<QString, QString>>(10'001)), 413, "contacts"},
            {"a thread with oneself", "POST", thread, threadBody(asha, asha), 400, "members[1]"},
            {"a thread with nobody", "POST", thread, threadBody(asha, "65b20a005eed0000000000ff"), 400, "members[1]"},
            {"a thread of others", "POST", thread, threadBody(rohan, meera), 403, "two"},
            {"a stranger as admin", "POST", thread,
             threadBody(asha, rohan).replace(R"("admins": [)", R"("admins": ["x",)"), 400, "admins[0]"},
            {"half an attachment", "POST", messages, halfAFile, 400, "messageComponent.attachments[0].fileSize"},
            {"a long text", "POST", messages, messageBody(QString(10'001, QChar(u'क'))), 400, "messageComponent.text"},
            {"unknown thread", "POST", "/api/chat/thread/66a9f2005eed0000000000ff/messages", messageBody("a"), 404,
             "conversation"},
        });
    }
    void whatIsNotOfTheInterfaceIsRefused()
    {
        const auto [method, target, body, status, place] =
            currentRow<QByteArray, QByteArray, QByteArray, int, QString>();
        const auto reply = m_caller->ask(method.toStdString(), target.toStdString(), body);
        QCOMPARE(reply.status, static_cast<unsigned>(status));
        if (reply.json.contains("errorsArray"))
            QCOMPARE(listed(reply.json, "errorsArray", "path"), QStringList(place));
        else
            QVERIFY2(reply.json["errors"].toString().contains(place), qPrintable(reply.json["errors"].toString()));
        if (status == 405) // a method that the document does not know either
            QCOMPARE(std::exchange(m_caller->violations, {}).size(), 1);
    }

    void contactsAreUsersWhoseNumberTheCallerHasUploaded()
    {
        const auto contacts = [this](const std::string &query = "") {
            return m_caller->ask("GET", "/api/contacts/all" + query).json;
        };
        const auto names = [&](const std::string &query) { return listed(contacts(query), "contacts", "name"); };
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
            QCOMPARE(names(""), QStringList({"Anna", "Meera", "Rohan", "মৌসুমী"}));
        }
        QCOMPARE(contacts()["contacts"][2][u"phoneNo"].toString(), "+919000001002");
        QCOMPARE(names("?search=AN"), QStringList({"Anna", "Rohan"}));
        QCOMPARE(names("?search=fern"), QStringList({"Anna"})); // the last name
        QCOMPARE(names("?search=%E0%A6%AE%E0%A7%8C"), QStringList({"মৌসুমী"}));
        QCOMPARE(names("?search=%25"), QStringList()); // no wildcard

        QCOMPARE(names("?limit=2&offset=1"), QStringList({"Meera", "Rohan"}));
        QCOMPARE(contacts("?limit=2&offset=1")["moreAvailable"].toBool(), true);
        QCOMPARE(contacts("?limit=2&offset=2")["moreAvailable"].toBool(), false);

        Caller other(listening()); // who has uploaded nothing
        QCOMPARE(other.as(rohan).ask("GET", "/api/contacts/all").json["total"].toInt(), 0);
    }

    void callsAreThoseOfTheCallerNewestFirst()
    {
        const auto all = m_caller->calls("one_to_one_call,group_call").json;
        const auto history = all["callHistory"].toArray();
        QCOMPARE(all["totalCount"].toInt(), history.size());
        const auto starts = listed(all, "callHistory", "startMeeting");
        QVERIFY(starts.size() > 20 && std::is_sorted(starts.rbegin(), starts.rend()));
        for (const auto call : history)
            QVERIFY(listed(call.toObject(), "members", "userId").contains(QString::fromStdString(asha)));
        const auto totalOf = [this](const char *kind) { return m_caller->calls(kind).json["totalCount"].toInt(); };
        QCOMPARE(totalOf("group_call") + totalOf("one_to_one_call"), history.size());
        QCOMPARE(totalOf("missed_call"),
                 std::count_if(history.begin(), history.end(), [](auto c) { return c[u"isMissedCall"].toBool(); }));

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
        std::array<QString, 8> ids;
        std::vector<std::thread> askers;
        for (std::size_t i = 0; i < ids.size(); ++i) {
            askers.emplace_back([&, i] {
                const auto body = i % 2 == 0 ? threadBody(asha, meera) : threadBody(meera, asha);
                ids[i] = Caller(listening()).as(asha).ask("POST", "/api/chat/thread", body).json["_id"].toString();
            });
        }
        for (auto &asker : askers)
            asker.join();
        QCOMPARE(ids[0].size(), 24);
        for (const auto &id : ids)
            QCOMPARE(id, ids[0]);
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
        const auto times = listed(newest, "messages", "cOn") + listed(rest, "messages", "cOn");
        QVERIFY(std::is_sorted(times.rbegin(), times.rend()));
        QCOMPARE(m_caller->messages(1, 199).json["moreAvailable"].toBool(), false);
        QCOMPARE(m_caller->messages(1, 198).json["moreAvailable"].toBool(), true);

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
        QCOMPARE(sent["recipients"][0][u"userId"].toString().toStdString(), anna);
        Caller other(listening());
        QCOMPARE(other.as(anna).messages(10, 0, id).json["messages"].toArray(), QJsonArray{sent});
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
        const QTemporaryDir folder;
        QFile seed(folder.filePath("seed.json"));
        QVERIFY(seed.open(QIODevice::WriteOnly));
        seed.write(R"({"users":[{"id":"1","name":"A","lname":"","phoneNo":"1","roleIds":[]}],
            "calls":[{"id":"2","category":"group_call","owner":"3"}],"threads":[]})");
        seed.close();
        const auto open = [&](const std::filesystem::path &from) {
            return BackendApi({folder.path().toStdString(), from, std::chrono::hours(1)});
        };
        try {
            open(seed.fileName().toStdString());
            QFAIL("the seed was taken");
        } catch (const std::runtime_error &error) {
            QVERIFY2(QByteArray(error.what()).endsWith("seed.json: calls[0]: there is no user 3"), error.what());
        }
        open(defaultSeedFile()); // into a database that is as good as new
    }
};

template struct vynlex::InSuite<BackendTest>;

SUITE_MAIN(QCoreApplication)

#include "tst_backend.moc"
