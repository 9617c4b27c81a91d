#include <QtTest>

#include "platform/json/Record.h"

using namespace vynlex;

namespace {

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
