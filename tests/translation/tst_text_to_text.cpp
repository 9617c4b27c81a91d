#include <QtTest>

#include "api/VLApiManager.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/Patience.h"
#include "tests/fakes/TestPlatform.h"
#include "translation/TextToTextViewModel.h"
#include "translation/TranslationResponse.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

using Outcome = tl::expected<QString, TranslationError>;

HttpResponse answerOf(const QByteArray &body, int status = 200)
{
    return HttpResponse{status, {}, body};
}

} // namespace

class TestTextToText : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_apiManager = std::make_unique<VLApiManager>();
        m_apiManager->translatedConfig = VLTranslationConfig(u"speech"_s, u"centralindia"_s, u"text-key"_s);
        m_model = std::make_unique<TextToTextViewModel>(*m_apiManager);
        m_outcomes.clear();
    }

    void theRequestIsWhatTheTranslatorExpects()
    {
        translate(u"नमस्ते"_s, u"te"_s);
        const HttpRequest request = m_platform->network->request(0);
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.url.toString(QUrl::FullyEncoded),
                 u"https://api.cognitive.microsofttranslator.com/translate?api-version=3.0&to=te"_s);
        QCOMPARE(request.headers, (HttpHeaders{{"Ocp-Apim-Subscription-Key", "text-key"},
                                               {"Content-Type", "application/json"},
                                               {"Ocp-Apim-Subscription-Region", "centralindia"}}));
        QCOMPARE(request.body, QByteArray(R"([{"Text":"नमस्ते"}])"));
        QVERIFY(!request.timeout);
    }

    void withoutAConfigurationEmptyKeysAreSent()
    {
        m_apiManager->translatedConfig.reset();
        translate({}, u"hi"_s);
        const HttpRequest request = m_platform->network->request(0);
        QCOMPARE(request.headers.at(0).second, QByteArray(""));
        QCOMPARE(request.headers.at(2).second, QByteArray(""));
        QCOMPARE(request.body, QByteArray(R"([{"Text":""}])"));
    }

    void theTextIsNotEscaped()
    {
        translate(u"a \"b\" \\ c"_s, u"hi"_s);
        QCOMPARE(m_platform->network->request(0).body, QByteArray("[{\"Text\":\"a \"b\" \\ c\"}]"));
    }

    void theFirstTranslationIsDelivered_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("text");
        QTest::newRow("plain") << QByteArray(R"([{"translations":[{"text":"नमस्ते","to":"hi"}]}])") << u"नमस्ते"_s;
        QTest::newRow("everything else is ignored")
            << QByteArray(
                   R"([{"detectedLanguage":{"language":"en","score":1},"x":0,"translations":[{"text":"a","to":"hi"},)"
                   R"({"text":"b","to":"te"}]},{"translations":[]}])")
            << u"a"_s;
        QTest::newRow("empty") << QByteArray(R"([{"translations":[{"text":"","to":"hi"}]}])") << QString();
    }
    void theFirstTranslationIsDelivered()
    {
        QFETCH(const QByteArray, body);
        translate(u"x"_s, u"hi"_s);
        const CapturedConsole console;
        m_platform->network->answer(0, answerOf(body));
        TRY_COMPARE(m_outcomes.size(), 1U);
        QVERIFY(m_outcomes.front().has_value());
        QTEST(m_outcomes.front().value(), "text");
        QCOMPARE(console.lines(), QStringList{u"String data: "_s + QString::fromUtf8(body)});
    }

    void anAnswerWithoutATranslationIsSilence_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("no element") << QByteArray("[]");
        QTest::newRow("no translations") << QByteArray(R"([{"detectedLanguage":{"language":"en","score":1}}])");
        QTest::newRow("null translations") << QByteArray(R"([{"translations":null}])");
        QTest::newRow("empty translations") << QByteArray(R"([{"translations":[]}])");
    }
    void anAnswerWithoutATranslationIsSilence()
    {
        QFETCH(const QByteArray, body);
        translate(u"x"_s, u"hi"_s);
        translate(u"y"_s, u"hi"_s);
        const CapturedConsole console;
        m_platform->network->answer(0, answerOf(body));
        m_platform->network->answer(1, answerOf(R"([{"translations":[{"text":"later","to":"hi"}]}])"));
        TRY_COMPARE(m_outcomes.size(), 1U);
        QCOMPARE(m_outcomes.front().value(), u"later"_s); // the other answer alone arrived
    }

    void everythingElseIsAnError_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("message");
        QTest::newRow("error body") << 401 << QByteArray(R"({"error":{"code":401000,"message":"no"}})")
                                    << u"$: expected an array"_s;
        QTest::newRow("mistyped text") << 200 << QByteArray(R"([{"translations":[{"text":7,"to":"hi"}]}])")
                                       << u"$[0].translations[0].text: expected text"_s;
        QTest::newRow("missing target") << 200 << QByteArray(R"([{"translations":[{"text":"a"}]}])")
                                        << u"$[0].translations[0].to: missing"_s;
        QTest::newRow("score is required")
            << 200 << QByteArray(R"([{"detectedLanguage":{"language":"en"},"translations":[{"text":"a","to":"hi"}]}])")
            << u"$[0].detectedLanguage.score: missing"_s;
        QTest::newRow("nothing at all") << 500 << QByteArray("") << QString();
    }
    void everythingElseIsAnError()
    {
        QFETCH(const int, status);
        QFETCH(const QByteArray, body);
        QFETCH(const QString, message);
        translate(u"x"_s, u"hi"_s);
        const CapturedConsole console;
        m_platform->network->answer(0, answerOf(body, status));
        TRY_COMPARE(m_outcomes.size(), 1U);
        QVERIFY(!m_outcomes.front());
        QCOMPARE(m_outcomes.front().error().domain, u"DecodingErrorDomain"_s);
        if (!message.isNull())
            QCOMPARE(m_outcomes.front().error().message, message);
    }

    void transportFailuresAndAbsentDataAreToldApart()
    {
        translate(u"x"_s, u"hi"_s);
        translate(u"y"_s, u"hi"_s);
        m_platform->network->fail(0, {TransportError::Kind::HostNotFound, u"No such host."_s});
        m_platform->network->answer(1, HttpResponse{200, {}, std::nullopt});
        TRY_COMPARE(m_outcomes.size(), 2U);
        QCOMPARE(m_outcomes.at(0).error().message, u"No such host."_s);
        QCOMPARE(m_outcomes.at(1).error(), (TranslationError{u"TranslationErrorDomain"_s, 0, {}}));
    }

    void bodyOfBadEncodingIsNotPrinted()
    {
        translate(u"x"_s, u"hi"_s);
        const CapturedConsole console;
        m_platform->network->answer(0, answerOf("\xff\xfe"));
        TRY_COMPARE(m_outcomes.size(), 1U);
        QVERIFY(console.lines().isEmpty());
    }

    void anAddressThatCannotBeFormedEndsTheProcess()
    {
        QVERIFY(!fatalErrorOf([this] { translate(u"x"_s, u"%zz"_s); }).isNull());
    }

    void recordsAreWrittenAsTheyWereRead()
    {
        const QByteArray json =
            R"([{"detectedLanguage":{"language":"en","score":0.5},"translations":[{"text":"a","to":"hi"}]},{}])";
        const auto records = decodeJson<std::vector<TranslationResponse>>(json);
        QVERIFY(records);
        QCOMPARE(encodeJson(*records), json);
    }

private:
    void translate(const QString &text, const QString &to)
    {
        m_model->translateText(text, to, [this](const Outcome &outcome) { m_outcomes.push_back(outcome); });
    }

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<VLApiManager> m_apiManager;
    std::unique_ptr<TextToTextViewModel> m_model;
    std::vector<Outcome> m_outcomes;
};

QTEST_GUILESS_MAIN(TestTextToText)
#include "tst_text_to_text.moc"
