#include "sandbox/translation/TranslationRoutes.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <QTest>

#include "tests/fakes/Rows.h"
#include "tests/sandbox/server/RunningServer.h"
#include "tests/sandbox/server/TestClient.h"

using namespace sandbox;
using namespace vynlex;
namespace json = boost::json;

namespace {

const std::string host = "api.cognitive.microsofttranslator.com";
const std::string toHindi = "/translate?api-version=3.0&to=hi";
const Headers good{{"Ocp-Apim-Subscription-Key", "a-key"},
                   {"Ocp-Apim-Subscription-Region", "westindia"},
                   {"Content-Type", "application/json"}};

Headers goodExcept(const std::string &name, const std::string &value)
{
    Headers headers = good;
    headers[name] = value;
    return headers;
}

std::string bodyOf(const std::string &text)
{
    return json::serialize(json::array{json::object{{"Text", text}}});
}

} // namespace

class TranslationTest : public QObject {
    Q_OBJECT

    Phrasebook m_book = Phrasebook::load(Phrasebook::defaultFile());
    RunningServer m_server{[this](ServerContext &context) {
        addTranslationRoutes(context.router, m_book, {{"a-key", "another-key"}, {"westindia"}});
    }};

    json::value translated(TestClient &client, const std::string &target, const std::string &body)
    {
        const Answer answer = client.request("POST", target, good, body);
        if (answer.status != 200)
            qWarning("%u %s", answer.status, answer.body.c_str());
        return json::parse(answer.body);
    }

private slots:
    void everySentenceComesOutInEveryOtherLanguage()
    {
        TestClient client(m_server.listening(), host);
        const auto &phrase = m_book.phrases().at(10);
        int pairs = 0;
        for (const auto &[from, text] : phrase.text) {
            for (const auto &[to, expected] : phrase.text) {
                if (from == to)
                    continue;
                const auto answer =
                    translated(client, "/translate?api-version=3.0&from=" + from + "&to=" + to, bodyOf(text));
                const json::value wanted = json::array{
                    json::object{{"translations", json::array{json::object{{"text", expected}, {"to", to}}}}}};
                QCOMPARE(json::serialize(answer), json::serialize(wanted));
                ++pairs;
            }
        }
        QCOMPARE(pairs, 30);
    }

    void otherTextComesBackMarked()
    {
        TestClient client(m_server.listening(), host);
        const auto answer = translated(client, toHindi + "&to=te", bodyOf("This is \"not\" in the book\n"));
        const auto &first = answer.at(0).as_object();
        QCOMPARE(first.at("detectedLanguage").at("language").as_string(), "en");
        QVERIFY(first.at("detectedLanguage").at("score").to_number<double>() < 1.0);
        QCOMPARE(first.at("translations").at(0).at("text").as_string(), "[hi] This is \"not\" in the book\n");
        QCOMPARE(first.at("translations").at(1).at("text").as_string(), "[te] This is \"not\" in the book\n");
    }

    void textsKeepTheirOrderAndEmptyStaysEmpty()
    {
        TestClient client(m_server.listening(), host);
        const auto answer =
            translated(client, toHindi, R"([{"Text":""},{"text":"hello"},{"Text":"నమస్కారం"},{"Text":"abc"}])");
        QCOMPARE(answer.as_array().size(), 4U);
        QCOMPARE(answer.at(0).at("translations").at(0).at("text").as_string(), "");
        const auto hello = m_book.find("hello")->phrase->text.at("hi");
        QCOMPARE(std::string(answer.at(1).at("translations").at(0).at("text").as_string()), hello);
        QCOMPARE(answer.at(2).at("detectedLanguage").at("language").as_string(), "te");
        QCOMPARE(std::string(answer.at(2).at("translations").at(0).at("text").as_string()), hello);
        QCOMPARE(answer.at(3).at("translations").at(0).at("text").as_string(), "[hi] abc");
    }

    void theAnswerCarriesTheServicesHeaders()
    {
        TestClient client(m_server.listening(), host, Way::ThroughProxy);
        const Answer answer = client.request("POST", toHindi + "&to=gu", good, bodyOf("abcde"));
        QCOMPARE(answer.headers.at("content-type"), "application/json; charset=utf-8");
        QCOMPARE(answer.headers.at("x-metered-usage"), "10");
        QCOMPARE(answer.headers.at("x-requestid").size(), 36U);
    }

    void aWrongRequestIsRefusedAsTheServiceDoes_data()
    {
        const QByteArray post = "POST";
        const QByteArray target = QByteArray::fromStdString(toHindi);
        const QByteArray body = R"([{"Text":"Hello"}])";
        const auto texts = [](int count, int length) {
            QByteArray all;
            for (int i = 0; i < count; ++i)
                all += (i ? ",{\"Text\":\"" : "{\"Text\":\"") + QByteArray(length, 'a') + "\"}";
            return QByteArray("[" + all + "]");
        };
        addRows<QByteArray, QByteArray, Headers, QByteArray, int>({
            {"wrong key", post, target, goodExcept("Ocp-Apim-Subscription-Key", "b-key"), body, 401000},
            {"wrong region", post, target, goodExcept("Ocp-Apim-Subscription-Region", "mars"), body, 401000},
            {"content type", post, target, goodExcept("Content-Type", "text/plain"), body, 415000},
            {"no version", post, "/translate?to=hi", good, body, 400021},
            {"no target", post, "/translate?api-version=3.0", good, body, 400036},
            {"one unknown target", post, target + "&to=xx", good, body, 400036},
            {"quote not escaped", post, target, good, "[{\"Text\":\"a\"b\"}]", 400074},
            {"not UTF-8", post, target, good, "[{\"Text\":\"\xC3(\"}]", 400074},
            {"deep", post, target, good, QByteArray(10000, '['), 400074},
            {"element without text", post, target, good, R"([{"Txt":"a"}])", 400020},
            {"1001 elements", post, target, good, texts(1001, 1), 400072},
            {"one text too long", post, target, good, texts(1, 50001), 400050},
            {"all texts too long", post, target, good, texts(2, 25001), 400077},
            {"too long for two targets", post, target + "&to=gu", good, texts(1, 25001), 400077},
        });
    }
    void aWrongRequestIsRefusedAsTheServiceDoes()
    {
        const auto [method, target, headers, body, code] =
            currentRow<QByteArray, QByteArray, Headers, QByteArray, int>();
        TestClient client(m_server.listening(), host);
        const Answer answer = client.request(method.toStdString(), target.toStdString(), headers, body.toStdString());
        QCOMPARE(answer.status, static_cast<unsigned>(code / 1000));
        const auto error = json::parse(answer.body).at("error");
        QCOMPARE(error.at("code").to_number<int>(), code);
        QVERIFY(!error.at("message").as_string().empty());

        const Answer next = client.request("POST", toHindi, good, bodyOf("Hello"));
        QCOMPARE(next.status, 200U); // on the same connection
    }

    void theKeyMayComeInTheQueryAndIsNeverLogged()
    {
        TestClient client(m_server.listening(), host);
        const std::string inQuery = toHindi + "&Subscription-Key=another-key&Subscription-Region=westindia";
        QCOMPARE(client.request("POST", inQuery, {{"Content-Type", "application/json; charset=UTF-8"}}, bodyOf("Hello"))
                     .status,
                 200U);
        const std::string log = json::serialize(m_server.log().recent()) + json::serialize(m_server.log().totals());
        QVERIFY(log.find("Subscription-Key") != std::string::npos);
        QVERIFY(log.find("another-key") == std::string::npos);
        QVERIFY(log.find("a-key") == std::string::npos);
    }
};

QTEST_GUILESS_MAIN(TranslationTest)
#include "tst_translation.moc"
