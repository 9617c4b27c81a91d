#include <QTest>

#include <VynlexTranslationSDK/VLApiServer.h>
#include <VynlexTranslationSDK/VLCurrentUserType.h>

#include "api/ChatRecords.h"
#include "api/DirectoryRecords.h"
#include "api/JwtUserId.h"
#include "api/PhoneNumber.h"
#include "api/VLAPIPath.h"
#include "api/VLHTTPMethod.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// What is left of `json` when it has been read and is written again: every key that the record knows.
template<typename Record> QByteArray again(const QByteArray &json)
{
    const auto record = decodeJson<Record>(json);
    return record ? encodeJson(*record) : record.error().message().toUtf8();
}

/// A text with its keys in the order in which they are written.
QByteArray sorted(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).toJson(QJsonDocument::Compact);
}

const QByteArray wholeCall = R"({
    "_id":"1","title":"2","roomId":"3","userId":"4","groupId":"5","isActive":true,"groupModified":false,
    "startMeeting":"6","manualIps":["7","8"],"conferaId":"9","isOneToOne":true,"isCurrentlyRecording":false,
    "isRecordedFlag":true,"endMeeting":"10","cOn":"11","mOn":"12","__v":13,"isPersonal":false,
    "forScheduledMeeting":true,"isPinEnabled":false,"roomPIN":"14","ownerName":"15","ownerPhoneNo":"16",
    "ownerEmailId":"17","ownerTenantId":"18","imageMeta":{},"isMissedCall":true,"typeOfCall":"19",
    "members":[{"userId":"a","type":"b","phoneNo":"c","name":"d","lname":"e","imageMeta":{},"callRole":"f",
                "status":"g","inAnActiveCall":true},{}]})";

VLChatMessage message(const QByteArray &json)
{
    const auto read = decodeJson<VLChatMessage>(json);
    if (!read)
        qFatal("%s", qPrintable(read.error().message()));
    return *read;
}

VLChatMessage bareMessage()
{
    VLChatMessage message;
    message.id = u"a"_s;
    message.threadId = u"t"_s;
    return message;
}

} // namespace

class TestApiRecords : public QObject {
    Q_OBJECT

private slots:
    void aServerIsKnownByTheExactNameOfItsHost()
    {
        const std::array servers{VLApiServer::staging,    VLApiServer::preStage,     VLApiServer::rc,
                                 VLApiServer::production, VLApiServer::tenantGroups, VLApiServer::demo};
        for (const VLApiServer server : servers) {
            const QString host = server.rawValue();
            QVERIFY(VLApiServer::fromRawValue(host) == server);
            QCOMPARE(server.socketHost(), u"socket."_s + host);
            QCOMPARE(server.getApiUrl(), u"https://"_s + host + u"/api"_s);
            for (const QString &other : {host.toUpper(), u"https://"_s + host, host + u'/', QString()})
                QVERIFY(!VLApiServer::fromRawValue(other));
        }
        QCOMPARE(VLApiServer(VLApiServer::production).rawValue(), u"app.confera.example"_s);
        QCOMPARE(VLApiServer(VLApiServer::tenantGroups).rawValue(), u"groups.confera.example"_s);
    }

    void everyKeyOfADirectoryRecordIsRead_data()
    {
        const QByteArray token = R"({"jwt":"1","refToken":"2","jwt_expires_on":"3","reftoken_expires_on":"4"})";
        const QByteArray contacts = R"({"moreAvailable":true,"total":2,"contacts":[
            {"id":"1","name":"2","lname":"3","phoneNo":"4","roleIds":["5"]},{}]})";
        const QByteArray calls = R"({"totalCount":7,"moreAvailable":false,"callHistory":[)" + wholeCall + "]}";
        addRows<QByteArray, QByteArray>({
            {"token", again<VLTokenResponse>(token), token},
            {"contacts", again<VLContactsResponse>(contacts), contacts},
            {"calls", again<VLRecentContactsResponse>(calls), calls},
            {"absent and null are one",
             again<CallHistory>(R"({"_id":null,"imageMeta":null,"members":null,"__v":null,"other":1})"), "{}"},
            {"empty is not absent", again<VLContactsResponse>(R"({"contacts":[]})"), R"({"contacts":[]})"},
            {"a picture's details do not count", again<Members>(R"({"imageMeta":{"url":7}})"), R"({"imageMeta":{}})"},
        });
    }
    void everyKeyOfADirectoryRecordIsRead()
    {
        const auto [written, json] = currentRow<QByteArray, QByteArray>();
        QCOMPARE(written, sorted(json));
    }

    void aMistypedKeyFailsTheWholeDirectoryAnswer()
    {
        QCOMPARE(again<VLContactsResponse>(R"({"contacts":[{},{},{},{"roleIds":[7]}]})"),
                 "$.contacts[3].roleIds[0]: expected text");
        QCOMPARE(again<VLContactsResponse>(R"({"total":1.5})"), "$.total: expected an integer");
        QCOMPARE(again<VLRecentContactsResponse>(R"({"moreAvailable":true,"callHistory":[]})"),
                 "$.totalCount: missing");
        QCOMPARE(again<CallHistory>(R"({"imageMeta":"x"})"), "$.imageMeta: expected an object");
    }

    void aMessageIsReadAsItsTypeAsks()
    {
        VLChatMessage normal = bareMessage();
        QVERIFY(message(R"({"_id":"a","threadId":"t"})") == normal);

        normal.createdAtString = u"c"_s;
        normal.conferaId = u"o"_s;
        normal.creatorId = u"u"_s;
        normal.creatorsName = u"n"_s;
        normal.creatorsLName = u"l"_s;
        normal.messageText = u"hi-IN## नमस्ते"_s;
        normal.attachments.emplace();
        normal.attachments->push_back({u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s});
        normal.attachments->emplace_back();
        normal.reciepients = {{u"r"_s, true, true}, {}};
        const QByteArray common = R"({"_id":"a","threadId":"t","conferaId":"o","createdBy":"u","creatorsName":"n",
            "creatorsLName":"l","cOn":"c","recipients":[{"userId":"r","isDeleted":true,"isUnread":true},{"userId":1}],
            "messageComponent":{"text":"hi-IN## नमस्ते","attachments":[{"fileID":"1","fileName":"2","fileSize":"3",
                "downloadURL":"4","imageTrancodedURL":"5","streamingURL":"6","documentURL":"7"},{"fileSize":1024}]},
            "systemComponent":{"message":"joined","usersAdded":[{"name":"A"}],
                "usersRemoved":[{"name":"1","lname":"2","userId":"3"}],"action":"usermod"},"other":{},"type":)";
        QVERIFY(message(common + R"("message"})") == normal);
        QVERIFY(message(common + R"("usermod"})") == normal);
        QVERIFY(message(common + "7}") == normal);

        VLChatMessage system = normal;
        system.messageType = VLChatMessageType::system;
        system.isSystemMessage = true;
        system.messageText = u"joined"_s;
        system.attachments.reset();
        system.addedUsers = {{u"A"_s, {}, {}}};
        system.removedUsers = {{u"1"_s, u"2"_s, u"3"_s}};
        QVERIFY(message(common + R"("system"})") == system);
    }

    void aPageWithAMessageWithoutIdentifierHasNoMessages()
    {
        const auto pageWith = [](const QByteArray &second) {
            return *decodeJson<VLThreadChatMessages>(R"({"messages":[{"_id":"a","threadId":"t"},)" + second +
                                                     R"(],"totalCount":2,"unreadCount":"1"})");
        };
        const auto whole = pageWith(R"({"_id":"b","threadId":"t"})");
        QCOMPARE(whole.messages.value().size(), 2U);
        QVERIFY(whole.totalCount == 2 && !whole.unreadCount && !whole.moreAvailable);
        for (const char *const second : {R"({"threadId":"t"})", R"({"_id":"b","threadId":null})", "[]"})
            QVERIFY(!pageWith(second).messages);
    }

    void aThreadNeedsItsIdAndNothingElse()
    {
        VLChatThread thread;
        thread.id = u"a"_s;
        const auto bare = decodeJson<VLChatThread>(
            R"({"_id":"a","modifiedAt":"2026-01-31T09:15:00Z","numberOfAttachments":1.5,"members":[{"name":"A"}]})");
        QVERIFY(bare && *bare == thread);

        thread.createdAtString = u"then"_s;
        thread.conferaId = u"o"_s;
        thread.name = u"n"_s;
        thread.status = u"s"_s;
        thread.isRestrictedChat = true;
        thread.numberOfAttachments = 3;
        thread.context = u"c"_s;
        thread.createdBy = u"u"_s;
        thread.modifiedAt = QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
        thread.update = false;
        thread.members = {{u"1"_s, u"N"_s, u"L"_s}, {u"2"_s, {}, {}}};
        const auto whole = decodeJson<VLChatThread>(R"({"_id":"a","createdAt":"then","conferaId":"o","name":"n",
            "status":"s","isRestrictedChat":true,"numberOfAttachments":3,"context":"c","createdBy":"u","modifiedAt":0,
            "update":false,"members":[{"_id":"1","name":"N","lname":"L"},{"_id":"2","name":7}]})");
        QVERIFY(whole && *whole == thread);

        QVERIFY(!decodeJson<VLChatThread>(R"({"_id":7})"));
        QVERIFY(!decodeJson<VLChatThread>("{}"));
    }

    void aTokenOfALengthThatNoBase64HasIsALine()
    {
        const CapturedConsole console;
        QCOMPARE(userIdOfJwt(u"head.eyJ=c2Vy.signature"_s), QString()); // padding inside
        QVERIFY(console.lines().isEmpty());
        QCOMPARE(userIdOfJwt(u"head.eyJ1c.signature"_s), QString());
        QCOMPARE(console.lines(), QStringList(QString()));
    }

    void numbersAreTheSame_data()
    {
        addRows<QString, std::optional<QString>, bool>({
            {"as the device writes it", u"+91 98765-43210"_s, u"9876543210"_s, true},
            {"as the backend writes it", u"98765 43210"_s, u"+919876543210"_s, true},
            {"elsewhere in the text too", u"(9876)+91543210"_s, u"9876543210"_s, true},
            {"without the plus", u"919876543210"_s, u"9876543210"_s, false},
            {"in other digits", u"९876543210"_s, u"9876543210"_s, false},
            {"missing", u"9876543210"_s, std::nullopt, false},
            {"no number at all", u"+91 "_s, u"-"_s, false},
        });
    }
    void numbersAreTheSame()
    {
        const auto [device, backend, same] = currentRow<QString, std::optional<QString>, bool>();
        std::vector<Contact> contacts(3);
        contacts[0].phoneNo = u"1"_s;
        contacts[1].phoneNo = contacts[2].phoneNo = backend;
        QCOMPARE(contactWithNumber(contacts, device), same ? &contacts[1] : nullptr);
    }
};

template struct vynlex::InSuite<TestApiRecords>;

#include "tst_api_records.moc"
