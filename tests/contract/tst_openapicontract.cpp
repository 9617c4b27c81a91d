#include "tests/fakes/OpenApiContract.h"

#include <QTest>

using namespace vynlex;

namespace {

const QByteArray goodUpload = R"({"contacts":[{"name":"Asha ","phoneNo":"919825012345"},{"name":"","phoneNo":""}]})";
const QByteArray goodMessage = R"({
    "_id":"1","threadId":"t","conferaId":"","type":"message","createdBy":"u","creatorsName":"A","creatorsLName":"",
    "cOn":"2026-01-31T09:15:00.000+0000","recipients":[],"messageComponent":{"text":"hi-IN## नमस्ते","attachments":[]}})";

QByteArray replaced(QByteArray text, const QByteArray &before, const QByteArray &after)
{
    Q_ASSERT(text.contains(before));
    return text.replace(before, after);
}

} // namespace

/// The checker itself: what it lets pass and that it does find faults.
class OpenApiContractTest : public QObject {
    Q_OBJECT

    const OpenApiContract m_contract = OpenApiContract::ofConfera();
    const OpenApiContract::Headers m_headers{
        {"content-type", "application/json"}, {"deviceId", ""}, {"Authorization", "a.b.c"}};

    OpenApiContract::Headers without(const QByteArray &name) const
    {
        auto headers = m_headers;
        std::erase_if(headers, [&](const auto &header) { return header.first == name; });
        return headers;
    }

    static void compare(const QStringList &violations, const QString &beginning)
    {
        if (beginning.isEmpty()) {
            QCOMPARE(violations, QStringList());
        } else {
            QCOMPARE(violations.size(), 1);
            QVERIFY2(violations.first().startsWith(beginning), qPrintable(violations.first()));
        }
    }

private slots:
    void theSevenOperationsAreDescribed()
    {
        QCOMPARE(m_contract.operations(),
                 QStringList({"get /calls", "post /chat/thread", "get /chat/thread/{threadId}/messages",
                              "post /chat/thread/{threadId}/messages", "get /contacts/all", "put /contacts/append",
                              "post /externalservertp/get-token"}));
    }

    void aRequestIsHeldAgainstTheDocument_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QString>("target"); // with the query
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("violation");

        const auto put = [](const char *name, const QByteArray &body, const char *violation) {
            QTest::newRow(name) << QByteArray("PUT") << "/api/contacts/append" << body << violation;
        };
        put("upload", goodUpload, "");
        put("a number not of digits", replaced(goodUpload, "919825012345", "+91 98250"), "body.contacts[0].phoneNo: ");
        put("a number that is a number", replaced(goodUpload, R"("919825012345")", "98250"),
            "body.contacts[0].phoneNo: expected string");
        put("a key too many", replaced(goodUpload, R"("name":"",)", R"("name":"","lname":"",)"),
            "body.contacts[1].lname: is not in the document");
        put("a key missing", replaced(goodUpload, R"("name":"",)", ""), "body.contacts[1].name: is missing");
        put("no body", "", "body: is missing");
        put("not JSON", "contacts=1", "body: not a JSON");

        const auto get = [](const char *name, const char *target, const char *violation) {
            QTest::newRow(name) << QByteArray("GET") << target << QByteArray() << violation;
        };
        get("calls", "/api/calls?limit=200&offset=0&callCategory=one_to_one_call,group_call", "");
        get("limit too high", "/api/calls?limit=201&offset=0&callCategory=group_call", "query limit: 201 is above");
        get("limit of no number", "/api/calls?limit=many&offset=0&callCategory=group_call", "query limit: expected");
        get("unknown category", "/api/calls?limit=1&offset=0&callCategory=group_call,video", "query callCategory[1]: ");
        get("no category", "/api/calls?limit=1&offset=0", "query callCategory: is missing");
        get("a parameter twice", "/api/calls?limit=1&limit=1&offset=0&callCategory=group_call", "query limit: stands");
        get("unknown parameter", "/api/contacts/all?page=2", "query page: is not in the document");
        get("messages", "/api/chat/thread/64ab/messages?limit=150&offset=0", "");
        get("messages of no thread", "/api/chat/thread//messages?limit=150&offset=0", "path threadId: ");
        get("unknown path", "/api/chat/threads", "path: ");
        get("base path missing", "/contacts/all", "path: ");
        QTest::newRow("lower-case method") << QByteArray("get") << "/api/contacts/all" << QByteArray() << "method: ";
        QTest::newRow("other method") << QByteArray("DELETE") << "/api/contacts/all" << QByteArray() << "method: ";
        QTest::newRow("body of a GET") << QByteArray("GET") << "/api/contacts/all" << QByteArray("{}") << "body: none";
    }
    void aRequestIsHeldAgainstTheDocument()
    {
        QFETCH(QByteArray, method);
        QFETCH(QString, target);
        QFETCH(QByteArray, body);
        QFETCH(QString, violation);
        OpenApiContract::Query query;
        for (const QString &pair : target.section('?', 1).split('&', Qt::SkipEmptyParts))
            query << std::pair(pair.section('=', 0, 0), pair.section('=', 1));
        compare(m_contract.violationsOfRequest(method, target.section('?', 0, 0), m_headers, query, body), violation);
    }

    void headersAreHeldAgainstTheDocument()
    {
        const auto of = [this](const OpenApiContract::Headers &headers, const QString &path = "/api/contacts/all") {
            return m_contract.violationsOfRequest(path.endsWith("all") ? "GET" : "POST", path, headers, {},
                                                  path.endsWith("all") ? "" : R"({"jwt":"web"})");
        };
        compare(of(m_headers), "");
        compare(of(without("content-type")), "header Content-Type: is missing");
        compare(of(without("deviceId")), "header deviceId: is missing");
        compare(of(without("Authorization")), "header authorization: is missing");
        auto headers = without("Authorization");
        headers.emplace_back("authorization", "Bearer a.b.c");
        compare(of(headers), "header authorization: is not of the form");

        headers = without("Authorization"); // the token exchange is what comes before any
        compare(of(headers, "/api/externalservertp/get-token"), "header x-source: is missing");
        headers.emplace_back("x-source", "myvyn-vynevents");
        compare(of(headers, "/api/externalservertp/get-token"), "");
    }

    void anAnswerIsHeldAgainstTheDocument_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("violation");
        QTest::newRow("a message") << 200 << goodMessage << "";
        QTest::newRow("other form of time") << 200 << replaced(goodMessage, ".000+0000", "Z") << "body: fits 0";
        QTest::newRow("a form of neither kind")
            << 200 << replaced(goodMessage, R"("message",)", R"("system",)") << "body: fits 0";
        QTest::newRow("an error") << 403 << QByteArray(R"({"message":"FORBIDDEN","errors":"No."})") << "";
        QTest::newRow("a code of another status")
            << 403 << QByteArray(R"({"message":"NOT_FOUND","errors":"No."})") << "body.message: ";
        QTest::newRow("both forms of errors")
            << 400 << QByteArray(R"({"message":"VALIDATION_ERROR","errors":"x","errorsArray":[]})") << "body: fits 0";
        QTest::newRow("unknown status") << 299 << goodMessage << "status: 299";
        QTest::newRow("empty") << 200 << QByteArray() << "body: ";
    }
    void anAnswerIsHeldAgainstTheDocument()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, violation);
        compare(m_contract.violationsOfAnswer("POST", "/api/chat/thread/t/messages", status, body), violation);
    }
};

QTEST_GUILESS_MAIN(OpenApiContractTest)
#include "tst_openapicontract.moc"
