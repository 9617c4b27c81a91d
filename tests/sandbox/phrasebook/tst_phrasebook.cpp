#include "sandbox/phrasebook/Phrasebook.h"

#include <QTemporaryDir>
#include <QTest>

#include <fstream>
#include <stdexcept>

using sandbox::Phrasebook;

namespace {

constexpr char heading[] = "id\ten\thi\tgu\tmr\tbn\tte\n";

class BookFile {
public:
    explicit BookFile(const QByteArray &content)
        : m_path(m_folder.filePath("book.tsv").toStdString())
    {
        std::ofstream(m_path, std::ios::binary) << content.toStdString();
    }
    [[nodiscard]] const std::string &path() const { return m_path; }

private:
    QTemporaryDir m_folder;
    std::string m_path;
};

} // namespace

class PhrasebookTest : public QObject {
    Q_OBJECT

private slots:
    void theBookInUseIsLargeAndUnambiguous()
    {
        const auto book = Phrasebook::load(Phrasebook::defaultFile());
        QVERIFY(book.phrases().size() >= 90);
        for (const auto &phrase : book.phrases()) {
            for (const auto &[language, text] : phrase.text) {
                const auto match = book.find(text);
                QVERIFY2(match && match->phrase->id == phrase.id, text.c_str());
                QCOMPARE(book.find(text, language), &phrase);
            }
        }
    }

    void readingIsForgivingAboutForm_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("language");
        QTest::newRow("as it stands") << QByteArray("Turn left.") << QByteArray("en");
        QTest::newRow("letter case, no full stop") << QByteArray("TURN left") << QByteArray("en");
        QTest::newRow("white space and other marks") << QByteArray("  turn\u00A0 left \u2026\n") << QByteArray("en");
        QTest::newRow("danda for full stop") << QByteArray("बाएँ मुड़िए.") << QByteArray("hi");
        QTest::newRow("nukta in one code point") << QByteArray("बाएँ मु\u095Cिए") << QByteArray("hi");
        QTest::newRow("nukta apart") << QByteArray("बाएँ मु\u0921\u093Cिए") << QByteArray("hi");
        QTest::newRow("split vowel sign") << QByteArray("ঘ\u09C7\u09BEরুন") << QByteArray("bn");
        QTest::newRow("joiners") << QByteArray("ఎడమ\u200C వైపు\u200B") << QByteArray("te");
    }
    void readingIsForgivingAboutForm()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, language);
        const BookFile file(heading + QByteArray("left\tTurn left.\tबाएँ मुड़िए।\tડાબી.\tडावी.\tঘোরুন।\tఎడమ వైపు.\r\n"));
        const auto book = Phrasebook::load(file.path());
        const auto match = book.find(text.toStdString());
        QVERIFY(match);
        QCOMPARE(match->phrase->id, "left");
        QCOMPARE(match->language, language.toStdString());
    }

    void textOutsideTheBookIsNotFound()
    {
        const auto book = Phrasebook::load(Phrasebook::defaultFile());
        for (const char *text : {"", " .", "Turn", "Turn left now.", "\xFF\xFE\x80"})
            QVERIFY2(!book.find(text), text);
        QVERIFY(!book.find("Hello.", "hi"));
        QVERIFY(!book.find("Hello.", "fr"));
    }

    void languagesThatShareATextAreToldApartOnRequest()
    {
        const BookFile file(heading + QByteArray("a\tA\tएक\tGa\tदोन\tBa\tTa\n"
                                                 "b\tB\tदोन\tGb\tएक\tBb\tTb\n"));
        const auto book = Phrasebook::load(file.path());
        QCOMPARE(book.find("एक", "hi")->id, "a");
        QCOMPARE(book.find("एक", "mr")->id, "b");
        QCOMPARE(book.find("एक")->language, "hi");
    }

    void aBadFileIsNamedWithItsLine_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("error");
        const QByteArray good = "a\tA\tB\tC\tD\tE\tF\n";
        QTest::newRow("empty") << QByteArray() << QByteArray(":0: the phrasebook is empty");
        QTest::newRow("heading") << QByteArray("id\ten\n") << QByteArray(":1: the heading");
        QTest::newRow("columns") << heading + good + "b\tB\n" << QByteArray(":3: expected 7 columns, found 2");
        QTest::newRow("id twice") << heading + good + "a\tX\tX\tX\tX\tX\tX\n" << QByteArray(":3: the id 'a'");
        QTest::newRow("no text") << heading + QByteArray("a\tA\tB\t.\tD\tE\tF\n") << QByteArray(":2: no text for 'gu'");
        QTest::newRow("same text") << heading + good + "b\tX\tX\tc!\tX\tX\tX\n"
                                   << QByteArray(":3: 'b' reads like 'a' in 'gu'");
    }
    void aBadFileIsNamedWithItsLine()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, error);
        const BookFile file(content);
        try {
            (void)Phrasebook::load(file.path());
            QFAIL("accepted");
        } catch (const std::runtime_error &e) {
            QVERIFY2(QByteArray(e.what()).startsWith(QByteArray::fromStdString(file.path()) + error), e.what());
        }
    }

    void aMissingFileIsAnError()
    {
        QVERIFY_EXCEPTION_THROWN((void)Phrasebook::load("no/such/book.tsv"), std::runtime_error);
    }
};

QTEST_APPLESS_MAIN(PhrasebookTest)
#include "tst_phrasebook.moc"
