#include <QTest>

#include "platform/json/Record.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

enum class Colour { green, brown };

struct Leaf {
    QString name;
    std::optional<double> weight;

    bool operator==(const Leaf &) const = default;
};

struct Tree {
    std::vector<Leaf> leaves;
    std::optional<Leaf> best;

    bool operator==(const Tree &) const = default;
};

/// One of every kind of value, each read leniently.
struct Lenient {
    QString text = u"unnamed"_s;
    bool flag = true;
    std::optional<qint64> count;
    std::optional<QDateTime> date;
    Colour colour = Colour::brown;
    std::optional<std::vector<Leaf>> leaves;

    bool operator==(const Lenient &) const = default;
};

struct Strict {
    qint64 count = 0;
    bool flag = false;
    Colour colour = Colour::green;
    std::optional<QDateTime> date;
};

} // namespace

template<>
inline constexpr auto vynlex::fields<Leaf> = std::tuple{
    required("name", &Leaf::name),
    optional("weight", &Leaf::weight),
};
template<>
inline constexpr auto vynlex::fields<Tree> = std::tuple{
    required("leaves", &Tree::leaves),
    optional("best", &Tree::best),
};
template<>
inline constexpr auto vynlex::words<Colour> = std::array{
    std::pair{Colour::green, "green"_L1},
    std::pair{Colour::brown, "brown"_L1},
};
template<>
inline constexpr auto vynlex::fields<Lenient> = std::tuple{
    lenient("text", &Lenient::text), lenient("flag", &Lenient::flag),     lenient("count", &Lenient::count),
    lenient("date", &Lenient::date), lenient("colour", &Lenient::colour), lenient("leaves", &Lenient::leaves),
};
template<>
inline constexpr auto vynlex::fields<Strict> = std::tuple{
    required("count", &Strict::count),
    required("flag", &Strict::flag),
    required("colour", &Strict::colour),
    optional("date", &Strict::date),
};

class TestRecord : public QObject {
    Q_OBJECT

private slots:
    void aRecordIsReadAndWrittenBack()
    {
        const Tree tree{{{QStringLiteral("पत्ता"), 1.5}, {QStringLiteral("b"), {}}}, Leaf{QStringLiteral("c"), {}}};
        const auto read = decodeJson<Tree>(
            R"({"best":{"name":"c","weight":null,"other":[1]},"leaves":[{"name":"पत्ता","weight":1.5},{"name":"b"}]})");
        QVERIFY(read);
        QVERIFY(*read == tree);
        QCOMPARE(encodeJson(tree),
                 QByteArray(R"({"best":{"name":"c"},"leaves":[{"name":"पत्ता","weight":1.5},{"name":"b"}]})"));
    }

    void anErrorNamesThePathOfTheField_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("message");
        QTest::newRow("mistyped in an array")
            << QByteArray(R"({"leaves":[{"name":"a"},{"name":7}]})") << "$.leaves[1].name: expected text";
        QTest::newRow("missing") << QByteArray(R"({"leaves":[{}]})") << "$.leaves[0].name: missing";
        QTest::newRow("null is not text")
            << QByteArray(R"({"leaves":[{"name":null}]})") << "$.leaves[0].name: expected text";
        QTest::newRow("optional but mistyped")
            << QByteArray(R"({"leaves":[{"name":"a","weight":"1"}]})") << "$.leaves[0].weight: expected a number";
        QTest::newRow("optional record of another kind")
            << QByteArray(R"({"leaves":[],"best":[]})") << "$.best: expected an object";
        QTest::newRow("not an array") << QByteArray(R"({"leaves":{}})") << "$.leaves: expected an array";
        QTest::newRow("an array instead of a record") << QByteArray("[]") << "$: expected an object";
    }
    void anErrorNamesThePathOfTheField()
    {
        QFETCH(const QByteArray, json);
        QFETCH(const QString, message);
        const auto read = decodeJson<Tree>(json);
        QVERIFY(!read);
        QCOMPARE(read.error().message(), message);
    }

    void whatIsReadLenientlyNeverFailsTheRecord_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("nothing") << QByteArray("{}");
        QTest::newRow("null") << QByteArray(
            R"({"text":null,"flag":null,"count":null,"date":null,"colour":null,"leaves":null})");
        QTest::newRow("other types") << QByteArray(
            R"({"text":1,"flag":"true","count":"1","date":"2001-01-01T00:00:00Z","colour":1,"leaves":{}})");
        QTest::newRow("close by") << QByteArray(
            R"({"text":["a"],"flag":1,"count":1.5,"date":1e300,"colour":"Green","leaves":[{"name":"a"},{"name":2}]})");
        QTest::newRow("other letter case of keys") << QByteArray(R"({"Text":"a","FLAG":false,"Count":1})");
    }
    void whatIsReadLenientlyNeverFailsTheRecord()
    {
        QFETCH(const QByteArray, json);
        const auto read = decodeJson<Lenient>(json);
        QVERIFY(read);
        QVERIFY(*read == Lenient());
    }

    void whatFitsIsTakenLeniently()
    {
        const auto read = decodeJson<Lenient>(
            R"({"text":"a","flag":false,"count":-7,"date":0.25,"colour":"green","leaves":[{"name":"b"}]})");
        QVERIFY(read);
        const QDateTime date(QDate(2001, 1, 1), QTime(0, 0, 0, 250), Qt::UTC);
        QVERIFY((*read == Lenient{u"a"_s, false, -7, date, Colour::green, {{{u"b"_s, {}}}}}));
        QVERIFY(*decodeJson<Lenient>(encodeJson(*read)) == *read);
    }

    void anIntegerIsWholeAndFits_data()
    {
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<bool>("fits");
        QTest::addColumn<qint64>("value");
        QTest::newRow("zero") << QByteArray("0") << true << 0LL;
        QTest::newRow("one") << QByteArray("1") << true << 1LL;
        QTest::newRow("with a point") << QByteArray("3.0") << true << 3LL;
        QTest::newRow("with an exponent") << QByteArray("3e2") << true << 300LL;
        QTest::newRow("beyond a double's precision")
            << QByteArray("9007199254740993") << true << 9'007'199'254'740'993LL;
        QTest::newRow("largest") << QByteArray("9223372036854775807") << true << std::numeric_limits<qint64>::max();
        QTest::newRow("smallest") << QByteArray("-9223372036854775808") << true << std::numeric_limits<qint64>::min();
        QTest::newRow("too large") << QByteArray("9223372036854775808") << false << 0LL;
        QTest::newRow("fraction") << QByteArray("0.5") << false << 0LL;
        QTest::newRow("text") << QByteArray(R"("1")") << false << 0LL;
        QTest::newRow("flag") << QByteArray("true") << false << 0LL;
    }
    void anIntegerIsWholeAndFits()
    {
        QFETCH(const QByteArray, number);
        QFETCH(const bool, fits);
        QFETCH(const qint64, value);
        const auto read = decodeJson<Strict>(R"({"flag":true,"colour":"green","count":)" + number + '}');
        QCOMPARE(read.has_value(), fits);
        if (fits)
            QCOMPARE(read->count, value);
        else
            QCOMPARE(read.error().message(), u"$.count: expected an integer"_s);
    }

    void whatIsNotJsonIsRefused_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("cut off") << QByteArray(R"({"leaves":[)");
        QTest::newRow("invalid UTF-8") << QByteArray("{\"leaves\":[{\"name\":\"\xff\"}]}");
        QTest::newRow("too deep") << QByteArray(2000, '[');
    }
    void whatIsNotJsonIsRefused()
    {
        QFETCH(const QByteArray, text);
        QVERIFY(!decodeJson<Tree>(text));
    }
};

QTEST_GUILESS_MAIN(TestRecord)
#include "tst_record.moc"
