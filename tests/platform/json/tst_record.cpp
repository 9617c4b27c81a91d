#include <QTest>

#include "platform/json/JsonText.h"
#include "platform/json/JsonView.h"
#include "platform/json/Record.h"
#include "tests/platform/json/SameJson.h"

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

QByteArray nested(int depth, const QByteArray &innermost)
{
    return QByteArray(depth, '[') + innermost + QByteArray(depth, ']');
}

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

    void anErrorNamesThePathOfTheField()
    {
        const auto complaint = [](const char *json) { return decodeJson<Tree>(json).error().message(); };
        QCOMPARE(complaint(R"({"leaves":[{"name":"a"},{"name":7}]})"), u"$.leaves[1].name: expected text"_s);
        QCOMPARE(complaint(R"({"leaves":[{}]})"), u"$.leaves[0].name: missing"_s);
        QCOMPARE(complaint(R"({"leaves":[{"name":null}]})"), u"$.leaves[0].name: expected text"_s);
        QCOMPARE(complaint(R"({"leaves":[{"name":"a","weight":"1"}]})"), u"$.leaves[0].weight: expected a number"_s);
        QCOMPARE(complaint(R"({"leaves":[],"best":[]})"), u"$.best: expected an object"_s);
        QCOMPARE(complaint(R"({"leaves":{}})"), u"$.leaves: expected an array"_s);
        QCOMPARE(complaint("[]"), u"$: expected an object"_s);
    }

    void whatIsReadLenientlyNeverFailsTheRecord()
    {
        for (const char *const json :
             {"{}", R"({"text":null,"flag":null,"count":null,"date":null,"colour":null,"leaves":null})",
              R"({"text":1,"flag":"true","count":"1","date":"2001-01-01T00:00:00Z","colour":1,"leaves":{}})",
              R"({"text":["a"],"flag":1,"count":1.5,"date":1e300,"colour":"Green","leaves":[{"name":"a"},{"name":2}]})",
              R"({"Text":"a","FLAG":false,"Count":1})"}) {
            const auto read = decodeJson<Lenient>(json);
            QVERIFY2(read && *read == Lenient(), json);
        }
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

    void anIntegerIsWholeAndFits()
    {
        const auto read = [](const char *number) {
            return decodeJson<Strict>(R"({"flag":true,"colour":"green","count":)" + QByteArray(number) + '}');
        };
        QCOMPARE(read("0")->count, 0);
        QCOMPARE(read("3.0")->count, 3);
        QCOMPARE(read("3e2")->count, 300);
        QCOMPARE(read("9007199254740993")->count, 9'007'199'254'740'993LL); // beyond a double's precision
        QCOMPARE(read("9223372036854775807")->count, std::numeric_limits<qint64>::max());
        QCOMPARE(read("-9223372036854775808")->count, std::numeric_limits<qint64>::min());
        for (const char *const number : {"9223372036854775808", "0.5", R"("1")", "true"})
            QCOMPARE(read(number).error().message(), u"$.count: expected an integer"_s);
    }

    /// Also where Qt is laxer than the standard: what the backend once sent stays readable. Many more such texts are in
    /// the fuzz corpus.
    void aTextIsTakenAsQtTakesIt()
    {
        const QList<QByteArray> texts = {
            "",
            "{",
            "[1,]",
            "[1] ]",
            " 7 ",
            "{\"a\":1}{}",
            "{\"a\":1,\"b\":2,\"a\":3}",
            "{\"\\u0061\":1,\"a\":2}",
            "[0,-0,-0.0,1e0,1E+2,1e-2,12.50,4.9e-324,1e-320,0e-999]",
            "[1e400]",
            "[.5]",
            "[9007199254740993,9007199254740993.0,9223372036854775807,-9223372036854775808]",
            "[9223372036854775808,-9223372036854775809,18446744073709551615,18446744073709551616]",
            "[9.223372036854775807e18,-9.223372036854775808e18,9.3e18,1e18]",
            "[0.1,0.30000000000000004,2.2250738585072011e-308,1.7976931348623157e308,123456789012345678.25]",
            "[\"\\\"\\\\\\/\\b\\f\\n\\r\\t\\u00e9\\u0000\\ud83d\\ude00\"]",
            "[\"\\ud800\"]",
            "[\"a\\udc00b\"]",
            "[\"a\nb\tc\"]",
            "\xef\xbb\xbf{}",
            "[\"\xef\xbb\xbf…\"]",
            "[\"\xff\"]",
            "[\"\xed\xa0\x80\"]",
            "[\"\xf0\x9f\x98\x80\"]",
            nested(1023, "1"),
            nested(1024, "1"),
            nested(1025, "1"),
            nested(1024, "{}"),
            nested(2000, "")};
        for (const QByteArray &text : texts) {
            const auto qt = parseJson(text);
            const auto tree = JsonTree::parse(text);
            QVERIFY2(qt ? tree && same(*qt, tree->root()) : !tree && tree.error() == qt.error(), text.left(99));
        }
    }

    /// All that differs; a version of either library that changes it is to be noticed.
    void whereTheTreeIsNotAsQt()
    {
        // Too small for a double: zero, the nearest one. Qt refuses the text.
        QVERIFY(!parseJson("[1e-400]"));
        QCOMPARE(*decodeJson<std::vector<double>>("[1e-400]"), std::vector<double>{0});
        // A byte order mark that starts a text: Qt keeps it when the text has an escape.
        QCOMPARE(parseJson("[\"\\ufeffa\"]")->toArray().first().toString(), u"\ufeffa"_s);
        QCOMPARE(*decodeJson<std::vector<QString>>("[\"\\ufeffa\"]"), std::vector<QString>{u"a"_s});
    }

    void whatOnlyQtTakesIsReadAsARecord()
    {
        const auto read =
            decodeJson<Lenient>("\xef\xbb\xbf{\"text\":\"\\ud83d\",\"flag\":false,\"count\":3.0,\"date\":0,"
                                "\"colour\":\"green\",\"leaves\":[{\"name\":\"a\nb\"}]}");
        QVERIFY(read);
        const QDateTime date(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
        QVERIFY((*read == Lenient{QString(QChar(0xd83d)), false, 3, date, Colour::green, {{{u"a\nb"_s, {}}}}}));
        QCOMPARE(decodeJson<Tree>("{\"leaves\":[{\"name\":\"\n\"},{}]}").error().message(),
                 u"$.leaves[1].name: missing"_s);
    }
};

QTEST_GUILESS_MAIN(TestRecord)
#include "tst_record.moc"
