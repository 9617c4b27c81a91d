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

    TestClient m_client{m_server.listening(), host};

    json::value translated(const std::string &target, const std::string &body)
    {
        const Answer answer = m_client.request("POST", target, good, body);
        if (answer.status != 200)
            qWarning("%u %s", answer.status, answer.body.c_str());
        return json::parse(answer.body);
    }

private slots:
    void everySentenceComesOutInEveryOtherLanguage()
    {
        const auto &phrase = m_book.phrases().at(10);
        int pairs = 0;
        for (const auto &[from, text] : phrase.text) {
            for (const auto &[to, expected] : phrase.text) {
                if (from == to)
                    continue;
                const auto answer = translated("/translate?api-version=3.0&from=" + from + "&to=" + to, bodyOf(text));
                const json::value wanted = json::array{
                    json::object{{"translations", json::array{json::object{{"text", expected}, {"to", to}}}}}};
                QCOMPARE(json::serialize(answer), json::serialize(wanted));
                ++pairs;
            }
        }
        QCOMPARE(pairs, 30);
    }

    void textsKeepTheirOrderAndWhatIsNotInTheBookIsMarked()
    {
        const auto answer =
            translated(toHindi + "&to=te", "[{\"Text\":\"\"},{\"text\":\"hello\"},{\"Text\":\"a \\\"b\\\"\\n\"}]");
        QStringList translations;
        for (const auto &element : answer.as_array()) {
            for (const auto &translation : element.at("translations").as_array())
                translations << QString::fromStdString(std::string(translation.at("text").as_string()));
        }
        const auto &hello = m_book.find("hello")->phrase->text;
        QCOMPARE(translations, QStringList({"", "", hello.at("hi").c_str(), hello.at("te").c_str(), "[hi] a \"b\"\n",
                                            "[te] a \"b\"\n"}));
        QVERIFY(answer.at(2).at("detectedLanguage").at("score").to_number<double>() < 1.0);
        const auto telugu = translated(toHindi, R"([{"Text":"నమస్కారం"}])").at(0);
        QCOMPARE(telugu.at("detectedLanguage").at("language").as_string(), "te");
    }

    void theAnswerCarriesTheServicesHeaders()
    {
        Answer answer = m_client.request("POST", toHindi + "&to=gu", good, bodyOf("abcde"));
        QCOMPARE(answer.headers["content-type"], "application/json; charset=utf-8");
        QCOMPARE(answer.headers["x-metered-usage"], "10");
        QCOMPARE(answer.headers["x-requestid"].size(), 36U);
    }

    void aWrongRequestIsRefusedAsTheServiceDoes_data()
    {
        const QByteArray target = QByteArray::fromStdString(toHindi);
        const QByteArray body = R"([{"Text":"Hello"}])";
        const auto texts = [](int count, int length) {
            QByteArray all;
            for (int i = 0; i < count; ++i)
                all += (i ? ",{\"Text\":\"" : "{\"Text\":\"") + QByteArray(length, 'a') + "\"}";
            return QByteArray("[" + all + "]");
        };
        addRows<QByteArray, Headers, QByteArray, int>({
            {"wrong key", target, goodExcept("Ocp-Apim-Subscription-Key", "b-key"), body, 401000},
            {"wrong region", target, goodExcept("Ocp-Apim-Subscription-Region", "mars"), body, 401000},
            {"content type", target, goodExcept("Content-Type", "text/plain"), body, 415000},
            {"no version", "/translate?to=hi", good, body, 400021},
            {"no target", "/translate?api-version=3.0", good, body, 400036},
            {"one unknown target", target + "&to=xx", good, body, 400036},
            {"quote not escaped", target, good, "[{\"Text\":\"a\"b\"}]", 400074},
            {"not UTF-8", target, good, "[{\"Text\":\"\xC3(\"}]", 400074},
            {"deep", target, good, QByteArray(10000, '['), 400074},
            {"element without text", target, good, R"([{"Txt":"a"}])", 400020},
            {"1001 elements", target, good, texts(1001, 1), 400072},
            {"one text too long", target, good, texts(1, 50001), 400050},
            {"all texts too long", target, good, texts(2, 25001), 400077},
            {"too long for two targets", target + "&to=gu", good, texts(1, 25001), 400077},
        });
    }
    void aWrongRequestIsRefusedAsTheServiceDoes()
    {
        const auto [target, headers, body, code] = currentRow<QByteArray, Headers, QByteArray, int>();
        const Answer answer = m_client.request("POST", target.toStdString(), headers, body.toStdString());
        QCOMPARE(answer.status, static_cast<unsigned>(code / 1000));
        const auto error = json::parse(answer.body).at("error");
        QCOMPARE(error.at("code").to_number<int>(), code);
        QVERIFY(!error.at("message").as_string().empty());

        QCOMPARE(m_client.request("POST", toHindi, good, bodyOf("Hello")).status, 200U); // on the same connection
    }

    void theKeyMayComeInTheQueryAndIsNeverLogged()
    {
        const std::string inQuery = toHindi + "&Subscription-Key=another-key&Subscription-Region=westindia";
        const Headers type{{"Content-Type", "application/json; charset=UTF-8"}};
        QCOMPARE(m_client.request("POST", inQuery, type, bodyOf("Hello")).status, 200U);
        const std::string log = json::serialize(m_server.log().recent()) + json::serialize(m_server.log().totals());
        QVERIFY(log.find("Subscription-Key") != std::string::npos);
        QVERIFY(log.find("another-key") == std::string::npos);
        QVERIFY(log.find("a-key") == std::string::npos);
    }
};

QTEST_GUILESS_MAIN(TranslationTest)
#include "tst_translation.moc"
