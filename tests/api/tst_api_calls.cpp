#include <QTest>

#include <VynlexTranslationSDK/NetworkReachabilityHandler.h>

#include <QRegularExpression>
#include <QUrlQuery>

#include "api/HostInformation.h"
#include "api/VLApiManager.h"
#include "api/VLNetworkClient.h"
#include "tests/fakes/OpenApiContract.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

using namespace Qt::StringLiterals;
using namespace vynlex;
using Case = VLApiRequestError::Case;

namespace {

const QByteArray thread = R"({"_id":"T1","name":"","status":"active","context":"u2","conferaId":"c","createdBy":"u1",
    "isRestrictedChat":false,"update":false,"numberOfAttachments":0,"createdAt":"2026-01-31T09:15:00.000+0000",
    "modifiedAt":791543700,"members":[{"_id":"u1","name":"A","lname":"B"},{"_id":"u2","name":"C","lname":"D"}]})";
const QByteArray message = R"({"_id":"m","threadId":"T1","conferaId":"c","type":"message","createdBy":"u1",
    "creatorsName":"A","creatorsLName":"B","cOn":"2026-01-31T09:15:00.000+0000","recipients":[],
    "messageComponent":{"text":"hi-IN## नमस्ते","attachments":[]}})";

/// What a call has ended in: "answered", or the error's text.
template<typename Answer> VLApiCompletion<Answer> intoText(QStringList &outcomes)
{
    return [&outcomes](const VLApiResult<Answer> &result) {
        outcomes << (result ? u"answered"_s : result.error().errorMessage());
    };
}

struct Operation {
    const char *name;
    std::function<void(VLApiManager &, QStringList &)> call;
    const char *url;
    QByteArray body;
    QByteArray answer;
};

const std::vector<Operation> operations{
    {"token",
     [](VLApiManager &manager, QStringList &outcomes) {
         manager.getJWToken(u"web token"_s, intoText<VLTokenResponse>(outcomes));
     },
     "https://demo.confera.example/api/externalservertp/get-token", R"({"jwt":"web token"})",
     R"({"jwt":"a.b.c","refToken":"r","jwt_expires_on":"2026-01-31T09:15:00.000+0000",
         "reftoken_expires_on":"2026-01-31T09:15:00.000+0000"})"},
    {"upload",
     [](VLApiManager &manager, QStringList &outcomes) {
         manager.uploadContacts({{{}, u"आशा "_s, {}, u"+91 98765-43210"_s}, {{}, {}, {}, u"९"_s}},
                                intoText<VLSuccessResponse>(outcomes));
     },
     "https://demo.confera.example/api/contacts/append",
     R"({"contacts":[{"name":"आशा ","phoneNo":"919876543210"},{"name":"","phoneNo":""}]})", R"({"success":true})"},
    {"contacts",
     [](VLApiManager &manager, QStringList &outcomes) {
         manager.getContacts({{u"search"_s, u"R&D + é,=#%"_s}, {u"limit"_s, 50}},
                             intoText<VLContactsResponse>(outcomes));
     },
     "https://demo.confera.example/api/contacts/all?limit=50&search=R%26D%20%2B%20%C3%A9,%3D%23%25",
     {},
     R"({"moreAvailable":false,"total":0,"contacts":[]})"},
    {"calls",
     [](VLApiManager &manager, QStringList &outcomes) {
         manager.getRecentContacts(u"one_to_one_call,group_call"_s, 0, 200,
                                   intoText<VLRecentContactsResponse>(outcomes));
     },
     "https://demo.confera.example/api/calls?callCategory=one_to_one_call,group_call&limit=200&offset=0",
     {},
     R"({"totalCount":0,"moreAvailable":false,"callHistory":[]})"},
    {"thread",
     [](VLApiManager &manager, QStringList &outcomes) {
         manager.getPrivateChatThread(u"u1"_s, u"u2"_s, intoText<VLChatThread>(outcomes));
     },
     "https://demo.confera.example/api/chat/thread", R"({"admins":["u2"],"context":"u2","members":["u1","u2"]})",
     thread},
    {"messages",
     [](VLApiManager &manager, QStringList &outcomes) {
         manager.getChatMessages(u"T1"_s, intoText<VLThreadChatMessages>(outcomes));
     },
     "https://demo.confera.example/api/chat/thread/T1/messages?limit=150&offset=0",
     {},
     R"({"messages":[)" + message + R"(],"moreAvailable":false,"totalCount":1,"unreadCount":0})"},
    {"send",
     [](VLApiManager &manager, QStringList &outcomes) {
         manager.sendChatMessage(u"T1"_s, u"hi-IN## \"नमस्ते\""_s, {}, intoText<VLChatMessage>(outcomes));
     },
     "https://demo.confera.example/api/chat/thread/T1/messages",
     R"({"messageComponent":{"attachments":[],"text":"hi-IN## \"नमस्ते\""}})", message},
    {"send a file",
     [](VLApiManager &manager, QStringList &outcomes) {
         manager.sendChatMessage(u"T1"_s, {}, {{u"1"_s, u"a.pdf"_s, u"7"_s, u"https://files.example/1"_s}},
                                 intoText<VLChatMessage>(outcomes));
     },
     "https://demo.confera.example/api/chat/thread/T1/messages",
     R"({"messageComponent":{"attachments":[{"fileID":"1","fileName":"a.pdf","fileSize":"7",)"
     R"("fileURL":"https://files.example/1"}],"text":""}})",
     message},
};

/// A request as somebody with a JWT sends it.
template<VLAPIRequest Request> VLApiResult<HttpRequest> built(const Request &record)
{
    return VLApiRequestManager::buildURLRequest(record, VLApiServer::rc, u"a.b.c"_s, u"d"_s);
}

VLApiRequestError errorOf(const HttpResponse &response)
{
    const auto answer = VLApiRequestManager::validateAndDecode<VLSuccessResponse>(response);
    if (answer)
        qFatal("answered");
    return answer.error();
}

} // namespace

Q_DECLARE_METATYPE(vynlex::VLApiRequestError)

class TestApiCalls : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_manager = std::make_unique<VLApiManager>();
        m_outcomes.clear();
    }
    void cleanup() { m_manager.reset(); }

    void anOperationMeetsTheDocumentOfTheInterface_data()
    {
        QTest::addColumn<qsizetype>("index");
        for (std::size_t i = 0; i < operations.size(); ++i)
            QTest::newRow(operations.at(i).name) << static_cast<qsizetype>(i);
    }
    void anOperationMeetsTheDocumentOfTheInterface()
    {
        QFETCH(const qsizetype, index);
        const Operation &operation = operations.at(static_cast<std::size_t>(index));
        static const OpenApiContract contract = OpenApiContract::ofConfera();

        m_manager->setCredentials(u"u1"_s, u"a.b.c"_s);
        operation.call(*m_manager, m_outcomes);
        const HttpRequest request = network().lastRequest();
        QCOMPARE(request.url.toEncoded(), QByteArray(operation.url));
        QCOMPARE(request.body, operation.body);
        QCOMPARE(request.timeout, std::chrono::seconds(60));
        const auto query = QUrlQuery(request.url).queryItems(QUrl::FullyDecoded);
        QCOMPARE(contract.violationsOfRequest(request.method, request.url.path(), request.headers, query, request.body),
                 QStringList());

        QCOMPARE(contract.violationsOfAnswer(request.method, request.url.path(), 200, operation.answer), QStringList());
        QCOMPARE(m_outcomes, QStringList());
        QVERIFY(network().answer(0, 200, operation.answer));
        QCOMPARE(m_outcomes, QStringList(u"answered"_s));
    }

    void headersStandInTheirOrder()
    {
        const auto headersOf = [](const auto &record, const QString &jwt) {
            return VLApiRequestManager::buildURLRequest(record, VLApiServer::demo, jwt, u"Müller"_s)->headers;
        };
        const HttpHeaders common{{"Content-Type", "application/json"}, {"deviceId", "Müller"}};
        HttpHeaders expected = common;
        QCOMPARE(headersOf(GetContactsRequest(), {}), expected);
        expected.emplace_back("authorization", "a.b.c");
        QCOMPARE(headersOf(GetContactsRequest(), u"a.b.c"_s), expected);
        expected = common;
        expected.emplace_back("x-source", "myvyn-vynevents");
        QCOMPARE(headersOf(GetJWTokenRequest({}), {}), expected);
        expected.emplace_back("authorization", "a.b.c");
        QCOMPARE(headersOf(GetJWTokenRequest({}), u"a.b.c"_s), expected);
    }

    void whatAPathMayNotHoldIsEscaped()
    {
        const auto urlOf = [](const QString &threadId) {
            return built(GetChatMessagesRequest(threadId))->url.toEncoded();
        };
        const QByteArray start = "https://rc.confera.example/api/chat/thread/";
        QCOMPARE(urlOf(u"a b?c#d%2F"_s), start + "a%20b%3Fc%23d%252F/messages?limit=150&offset=0");
        QCOMPARE(urlOf(u"../é"_s), start + "../%C3%A9/messages?limit=150&offset=0");
        QCOMPARE(urlOf({}), start + "/messages?limit=150&offset=0");
    }

    void aTextThatIsNoUnicodeGivesNoUrl()
    {
        const QString broken(QChar(0xd83d));
        QVERIFY(built(GetContactsRequest(VLQueryParameters{{u"search"_s, broken}})).error() == Case::invalidUrlRequest);
        m_manager->getChatMessages(broken, intoText<VLThreadChatMessages>(m_outcomes));
        QCOMPARE(m_outcomes, QStringList()); // not before the call returns
        TRY_COMPARE(m_outcomes, QStringList(u"Invalid URL Request "_s));
        QCOMPARE(network().requestCount(), 0);
    }

    void oneSessionServesAllCalls()
    {
        QCoreApplication::setApplicationName(u"Host\nApp"_s);
        QCoreApplication::setApplicationVersion({});
        QCoreApplication::setOrganizationDomain(u"confera.example"_s);
        QCoreApplication::instance()->setProperty("VynlexBuildNumber", 42);
        VLNetworkClient client;
        client.send(GetContactsRequest(), intoText<VLContactsResponse>(m_outcomes));
        const HttpSessionConfiguration session = network().session(0);
        QCOMPARE(session.maximumConnectionsPerHost, 15);
        QCOMPARE(session.maximumBodyBytes, 16LL * 1024 * 1024);
        QCOMPARE(session.additionalHeaders.size(), 3U);
        QCOMPARE(session.additionalHeaders[0],
                 std::pair(QByteArray("Accept-Encoding"), QByteArray("gzip, deflate, br")));
        QCOMPARE(session.additionalHeaders[1], std::pair(QByteArray("Connection"), QByteArray("keep-alive")));
        QCOMPARE(session.additionalHeaders[2].first, QByteArray("User-Agent"));
        const QRegularExpression agent(u"^Host App/Unknown \\(example\\.confera\\.Host App; build:42; "
                                       u"[^;]+ \\d+\\.\\d+\\.\\d+\\) ConferaNetwork/1\\.0$"_s);
        const QString text = QString::fromUtf8(session.additionalHeaders[2].second);
        QVERIFY2(agent.match(text).hasMatch(), qPrintable(text));
        QVERIFY(VLNetworkClient().identifier != client.identifier);
    }

    void aStatusIsAnAnswerOrAnError()
    {
        const QByteArray body = R"({"success":true})";
        const auto of = [&](int status) { return errorOf({status, {}, body}); };
        QVERIFY(of(0) == Case::invalidResponse);
        for (const int status : {100, 199, 299, 304, 399, 499, 600})
            QVERIFY2(of(status) == Case::unKnown, qPrintable(QString::number(status)));
        for (const int status : {400, 401, 467, 498})
            QVERIFY(of(status) == VLApiRequestError::failedApi(body, status));
        for (const int status : {500, 599})
            QVERIFY(of(status) == Case::serverError);
    }

    void aBodyHasToBeWhatWasAskedFor()
    {
        for (const int status : {200, 204, 298}) {
            QVERIFY(VLApiRequestManager::validateAndDecode<VLSuccessResponse>({status, {}, QByteArray()})->success ==
                    true);
            QVERIFY(VLApiRequestManager::validateAndDecode<VLSuccessResponse>({status, {}, R"({"success":false})"})
                        ->success == false);
        }
        for (const char *const body : {R"({"success":1})", "[]", "true", "{", " "})
            QVERIFY(errorOf({200, {}, QByteArray(body)}) == Case::unKnown);
        QVERIFY(errorOf({200, {}, std::nullopt}) == Case::noData);
        // Also the records without a required key are not made out of nothing.
        QVERIFY(VLApiRequestManager::validateAndDecode<VLTokenResponse>({200, {}, QByteArray()}).error() ==
                Case::unKnown);
        QVERIFY(VLApiRequestManager::validateAndDecode<VLChatThread>({200, {}, QByteArray()}).error() == Case::unKnown);
    }

    void errorsAreToldInTheProductsWords_data()
    {
        addRows<VLApiRequestError, QString>({
            {"network", VLApiRequestError::networkFailure({}), "Please check your internet connection."},
            {"decode", VLApiRequestError::decodeFailure(u"x"_s), "Invalid API Response. +"},
            {"api", VLApiRequestError::failedApi({}, 400), "Unknown Error"},
            {"url", Case::invalidUrlRequest, "Invalid URL Request +"},
            {"data", Case::invalidData, "Invalid Response Data. +"},
            {"no data", Case::noData, "Server did not return any Data. +"},
            {"response", Case::invalidResponse, "Server did not repsonse. +"},
            {"server", Case::serverError, "Server Error. Please try again after sometime. +"},
            {"unknown", Case::unKnown, "Undefined Error. +"},
        });
    }
    void errorsAreToldInTheProductsWords()
    {
        auto [error, text] = currentRow<VLApiRequestError, QString>();
        QCOMPARE(error.errorMessage(u"+"_s), text);
        QCOMPARE(error.errorMessage(), text.remove(u'+'));
    }

    void anErrorBodyHasATextAndACode_data()
    {
        addRows<int, QByteArray, QString, QString>({
            {"errors", 403, R"({"message":"X","errors":"Y"})", "Y", "X"},
            {"waiting", 467, R"({"message":"X","errors":"Y"})", "Y", "WAITING_ROOM_REJECTED"},
            {"errors first", 400, R"({"errors":"Y","errorsArray":[{"message":"Bad"}]})", "Y", ""},
            {"first of array", 400, R"({"message":7,"errors":7,"errorsArray":[{"message":"Bad"},{"message":"Z"}]})",
             "Bad", ""},
            {"empty array", 400, R"({"message":"X","errorsArray":[]})", "Unknown Error", "X"},
            {"no object", 467, R"([{"errors":"Y"}])", "Unknown Error", "UNKNOWN_ERROR"},
            {"a lone text", 400, R"("Bad")", "Unknown Error", "UNKNOWN_ERROR"},
            {"not JSON", 400, "<html>", "illegal value", "UNKNOWN_ERROR"},
        });
    }
    void anErrorBodyHasATextAndACode()
    {
        const auto [status, body, text, code] = currentRow<int, QByteArray, QString, QString>();
        const auto read = VLApiRequestError::serverErrorText(body, status);
        QCOMPARE(read.text, text);
        QCOMPARE(read.code, code);
        QCOMPARE(VLApiRequestError::failedApi(body, status).errorMessage(u"+"_s), text);
        QCOMPARE(VLApiRequestError::failedApi({}, status).errorMessage(), u"Unknown Error"_s);
    }

    void aTransportErrorIsPassedOn()
    {
        std::optional<VLApiRequestError> error;
        m_manager->getContacts({}, [&](const VLApiResult<VLContactsResponse> &result) { error = result.error(); });
        const TransportError cut{TransportError::Kind::Truncated, u"demo.confera.example: cut off"_s};
        network().fail(0, cut);
        QVERIFY(error == VLApiRequestError::networkFailure(cut));
        QVERIFY(*error->transportError() == cut);
        QCOMPARE(error->status(), 0);
    }

    void afterTheClientsEndNobodyIsCalled()
    {
        m_manager->getContacts({}, intoText<VLContactsResponse>(m_outcomes));
        m_manager->getChatMessages(QString(QChar(0xd83d)), intoText<VLThreadChatMessages>(m_outcomes));
        m_manager->networkClient.reset();
        network().answer(0, 200, "{}");
        QCoreApplication::processEvents();
        m_manager->getContacts({}, intoText<VLContactsResponse>(m_outcomes)); // nobody to ask
        QCOMPARE(network().requestCount(), 1);
        QCOMPARE(m_outcomes, QStringList());
    }

    void aCompletionMayEndTheClient()
    {
        m_manager->getContacts({}, [this](const VLApiResult<VLContactsResponse> &result) {
            m_manager.reset();
            m_outcomes << (result ? u"answered"_s : u"failed"_s);
        });
        network().answer(0, 200, "{}");
        QCOMPARE(m_outcomes, QStringList(u"answered"_s));
    }

    void credentialsReachTheClient()
    {
        QVERIFY(m_manager->currentEnv == VLApiServer::demo);
        QVERIFY(m_manager->networkClient->serverEnvironment == VLApiServer::demo);
        QVERIFY(VLNetworkClient().serverEnvironment == VLApiServer::production);
        QVERIFY(VLNetworkClient().currentUserType == VLCurrentUserType::guest);

        m_manager->currentEnv = VLApiServer::staging; // reaches nobody
        m_manager->getContacts({}, intoText<VLContactsResponse>(m_outcomes));
        m_manager->setCredentials(u"u1"_s, u"a.b.c"_s);
        m_manager->networkClient->serverEnvironment = VLApiServer::staging;
        m_manager->getContacts({}, intoText<VLContactsResponse>(m_outcomes));
        QCOMPARE(network().request(0).url.host(), u"demo.confera.example"_s);
        QCOMPARE(network().request(0).headers.back(), std::pair(QByteArray("deviceId"), QByteArray()));
        QCOMPARE(network().request(1).url.host(), u"staging.confera.example"_s);
        QCOMPARE(network().request(1).headers.back(), std::pair(QByteArray("authorization"), QByteArray("a.b.c")));

        m_manager->networkClient.reset();
        m_manager->setCredentials(u"u2"_s, u"d.e.f"_s);
        QCOMPARE(m_manager->currentUserGuestID, u"u2"_s);
        QCOMPARE(m_manager->currentJWT, u"d.e.f"_s);
    }

    void aClientHearsOfTheNetworkUntilItsEnd()
    {
        NetworkReachabilityHandler handler;
        auto client = std::make_unique<VLNetworkClient>(handler);
        QList<bool> heard;
        client->onNetworkStateChanged = [&](bool isConnected) { heard << isConnected; };
        TRY_COMPARE(m_platform->networkPath->startedCount(), 1);
        TRY_COMPARE(heard, QList<bool>{false});
        m_platform->networkPath->set(reachabilityFlag::reachable);
        TRY_COMPARE(heard, QList<bool>({false, true}));

        client->onNetworkStateChanged = [&](bool) { client.reset(); };
        m_platform->networkPath->set(0);
        TRY_VERIFY(!client);
        VLNetworkClient(handler).didNetworkStateChanged(true); // with nobody to tell
    }

private:
    [[nodiscard]] FakeHttpNetwork &network() const { return *m_platform->network; }

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_manager;
    QStringList m_outcomes;
};

template struct vynlex::InSuite<TestApiCalls>;

SUITE_MAIN(QCoreApplication)

#include "tst_api_calls.moc"
