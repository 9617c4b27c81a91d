#include "sandbox/server/FaultBoard.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <QTest>

#include <stdexcept>

using namespace sandbox;
namespace json = boost::json;

namespace {

json::array faults(const char *text)
{
    return json::parse(text).as_array();
}

} // namespace

class FaultBoardTest : public QObject {
    Q_OBJECT

private slots:
    void aFaultGoesOffAsOftenAsItSays()
    {
        FaultBoard board;
        board.add(faults(R"([{"kind":"status","status":503,"times":2},{"kind":"status","status":500}])"));
        QCOMPARE(board.takeForRoute("h", "/p").status->code, 503U);
        QCOMPARE(board.takeForRoute("h", "/p").status->code, 503U);
        QCOMPARE(board.takeForRoute("h", "/p").status->code, 500U); // the next of its kind, for ever
        QCOMPARE(board.takeForRoute("h", "/p").status->code, 500U);
        board.clear();
        QVERIFY(!board.takeForRoute("h", "/p").status);
    }

    void aFaultGoesOffOnItsRouteOnly()
    {
        FaultBoard board;
        board.add(
            {json::object{{"host", "*.stt.example.com"}, {"path", "/speech/*"}, {"kind", "silence"}, {"times", 1}}});
        QVERIFY(!board.takeForRoute("a.tts.example.com", "/speech/x").silence);
        QVERIFY(!board.takeForRoute("a.stt.example.com", "/other").silence);
        QCOMPARE(board.list().size(), 1U);
        QVERIFY(board.takeForRoute("a.stt.example.com", "/speech/x").silence);
        QCOMPARE(board.list().size(), 0U);
    }

    void faultsOfSeveralKindsAddUp()
    {
        FaultBoard board;
        board.add(faults(R"([{"kind":"latency","ms":100,"jitterMs":40},{"kind":"truncate"},
                             {"kind":"close","code":4429,"reason":"too many","afterMessages":3}])"));
        for (int i = 0; i < 50; ++i) {
            const auto taken = board.takeForRoute("h", "/");
            QVERIFY(taken.latency >= std::chrono::milliseconds(60) && taken.latency <= std::chrono::milliseconds(140));
            QVERIFY(taken.truncate && !taken.truncate->bytes);
            QCOMPARE(taken.close->code, 4429);
            QCOMPARE(taken.kinds, (std::vector<std::string>{"latency", "truncate", "close"}));
        }
    }

    void aServiceAsksAboutItsPoints()
    {
        FaultBoard board;
        board.declarePoint("recognition.turn", {"drop", "late"});
        QVERIFY(!board.take("recognition.turn"));
        board.add(faults(R"([{"point":"recognition.turn","kind":"late","ms":5,"times":1}])"));
        QVERIFY(board.takeForRoute("h", "/").kinds.empty());
        const auto taken = board.take("recognition.turn");
        QVERIFY(taken);
        QCOMPARE(taken->kind, std::string("late"));
        QCOMPARE(taken->parameters.at("ms").to_number<int>(), 5);
        QVERIFY(!board.take("recognition.turn"));
        QVERIFY_EXCEPTION_THROWN(static_cast<void>(board.take("misspelled")), std::logic_error);
    }

    void aWrongFaultIsRefusedAndNoneIsAdded_data()
    {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("no object") << QByteArray("5") << QByteArray("object");
        QTest::newRow("no kind") << QByteArray("{}") << QByteArray("needs a \"kind\"");
        QTest::newRow("unknown kind") << QByteArray(R"({"kind":"slowish"})") << QByteArray("slowish");
        QTest::newRow("kind is a number") << QByteArray(R"({"kind":1})") << QByteArray("kind");
        QTest::newRow("missing parameter") << QByteArray(R"({"kind":"slow"})") << QByteArray("bytesPerSecond");
        QTest::newRow("misspelled parameter") << QByteArray(R"({"kind":"reset","after":1})") << QByteArray("after");
        QTest::newRow("out of range") << QByteArray(R"({"kind":"status","status":600})") << QByteArray("100 to 599");
        QTest::newRow("fraction") << QByteArray(R"({"kind":"status","status":200.5})") << QByteArray("whole");
        QTest::newRow("negative") << QByteArray(R"({"kind":"latency","ms":-1})") << QByteArray("ms");
        QTest::newRow("text for a number") << QByteArray(R"({"kind":"latency","ms":"1"})") << QByteArray("ms");
        QTest::newRow("number for a text")
            << QByteArray(R"({"kind":"status","status":500,"body":1})") << QByteArray("body");
        QTest::newRow("never") << QByteArray(R"({"kind":"silence","times":0})") << QByteArray("times");
        QTest::newRow("body without a place")
            << QByteArray(R"({"kind":"status","status":204,"body":"x"})") << QByteArray("204");
        QTest::newRow("unknown point") << QByteArray(R"({"point":"p","kind":"drop"})") << QByteArray("point");
    }
    void aWrongFaultIsRefusedAndNoneIsAdded()
    {
        QFETCH(QByteArray, fault);
        QFETCH(QByteArray, reason);
        FaultBoard board;
        const QByteArray both = R"([{"kind":"silence"},)" + fault + "]";
        try {
            board.add(faults(both.constData()));
            QFAIL("accepted");
        } catch (const std::invalid_argument &wrong) {
            QVERIFY2(QByteArray(wrong.what()).contains(reason), wrong.what());
        }
        QCOMPARE(board.list().size(), 0U);
    }
};

QTEST_GUILESS_MAIN(FaultBoardTest)
#include "tst_faultboard.moc"
