#include "tests/fakes/OpenApiContract.h"
#include "tests/fakes/Rows.h"

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
    void aRequestIsHeldAgainstTheDocument_data()
    {
        addRows<QByteArray, QString, QByteArray, QString>({
            {"upload", "PUT", "/api/contacts/append", goodUpload, ""},
            {"a number not of digits", "PUT", "/api/contacts/append", replaced(goodUpload, "919825012345", "+91 98250"),
             "body.contacts[0].phoneNo: "},
            {"a key too many", "PUT", "/api/contacts/append",
             replaced(goodUpload, R"("name":"",)", R"("name":"","lname":"",)"),
             "body.contacts[1].lname: is not in the document"},
            {"a key missing", "PUT", "/api/contacts/append", replaced(goodUpload, R"("name":"",)", ""),
             "body.contacts[1].name: is missing"},
            {"calls", "GET", "/api/calls?limit=200&offset=0&callCategory=one_to_one_call,group_call", {}, ""},
            {"limit too high",
             "GET",
             "/api/calls?limit=201&offset=0&callCategory=group_call",
             {},
             "query limit: 201 is above"},
            {"unknown category",
             "GET",
             "/api/calls?limit=1&offset=0&callCategory=group_call,video",
             {},
             "query callCategory[1]: "},
            {"unknown parameter", "GET", "/api/contacts/all?page=2", {}, "query page: is not in the document"},
            {"unknown path", "GET", "/api/chat/threads", {}, "path: "},
            {"other method", "DELETE", "/api/contacts/all", {}, "method: "},
            {"body of a GET", "GET", "/api/contacts/all", "{}", "body: none"},
        });
    }
    void aRequestIsHeldAgainstTheDocument()
    {
        const auto [method, target, body, violation] = currentRow<QByteArray, QString, QByteArray, QString>();
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
        addRows<int, QByteArray, QString>({
            {"a message", 200, goodMessage, ""},
            {"other form of time", 200, replaced(goodMessage, ".000+0000", "Z"), "body: fits 0"},
            {"a code of another status", 403, R"({"message":"NOT_FOUND","errors":"No."})", "body.message: "},
            {"unknown status", 299, goodMessage, "status: 299"},
        });
    }
    void anAnswerIsHeldAgainstTheDocument()
    {
        const auto [status, body, violation] = currentRow<int, QByteArray, QString>();
        compare(m_contract.violationsOfAnswer("POST", "/api/chat/thread/t/messages", status, body), violation);
    }
};

QTEST_GUILESS_MAIN(OpenApiContractTest)
#include "tst_openapicontract.moc"
