#include "sandbox/phrasebook/Phrasebook.h"

#include <QTemporaryDir>
#include <QTest>

#include <fstream>
#include <stdexcept>

#include "tests/fakes/Rows.h"

using sandbox::Phrasebook;
using namespace vynlex;

namespace {

constexpr char heading[] = "id\ten\thi\tgu\tmr\tbn\tte\n";

/// Throws what reading throws.
Phrasebook bookOf(const QByteArray &content)
{
    const QTemporaryDir folder;
    const std::string path = folder.filePath("book.tsv").toStdString();
    std::ofstream(path, std::ios::binary) << content.toStdString();
    return Phrasebook::load(path);
}

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
        addRows<QByteArray, QByteArray>({
            {"letter case, no full stop", "TURN left", "en"},
            {"white space and other marks", "  turn\u00A0 left \u2026\n", "en"},
            {"danda for full stop", "बाएँ मुड़िए.", "hi"},
            {"nukta in one code point", "बाएँ मु\u095Cिए", "hi"},
            {"split vowel sign", "ঘ\u09C7\u09BEরুন", "bn"},
            {"joiners", "ఎడమ\u200C వైపు\u200B", "te"},
        });
    }
    void readingIsForgivingAboutForm()
    {
        const auto [text, language] = currentRow<QByteArray, QByteArray>();
        const auto book =
            bookOf(heading + QByteArray("left\tTurn left.\tबाएँ मुड़िए।\tડાબી.\tडावी.\tঘোরুন।\tఎడమ వైపు.\r\n"));
        const auto match = book.find(text.toStdString());
        QVERIFY(match && match->phrase->id == "left");
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
        const auto book = bookOf(heading + QByteArray("a\tA\tएक\tGa\tदोन\tBa\tTa\nb\tB\tदोन\tGb\tएक\tBb\tTb\n"));
        QCOMPARE(book.find("एक", "hi")->id, "a");
        QCOMPARE(book.find("एक", "mr")->id, "b");
        QCOMPARE(book.find("एक")->language, "hi");
    }

    void aBadFileIsNamedWithItsLine_data()
    {
        const QByteArray good = "a\tA\tB\tC\tD\tE\tF\n";
        addRows<QByteArray, QByteArray>({
            {"columns", heading + good + "b\tB\n", ":3: expected 7 columns, found 2"},
            {"id twice", heading + good + "a\tX\tX\tX\tX\tX\tX\n", ":3: the id 'a'"},
            {"no text", heading + QByteArray("a\tA\tB\t.\tD\tE\tF\n"), ":2: no text for 'gu'"},
            {"same text", heading + good + "b\tX\tX\tc!\tX\tX\tX\n", ":3: 'b' reads like 'a' in 'gu'"},
        });
    }
    void aBadFileIsNamedWithItsLine()
    {
        const auto [content, error] = currentRow<QByteArray, QByteArray>();
        try {
            (void)bookOf(content);
            QFAIL("accepted");
        } catch (const std::runtime_error &e) {
            QVERIFY2(QByteArray(e.what()).contains("book.tsv" + error), e.what());
        }
    }
};

QTEST_APPLESS_MAIN(PhrasebookTest)
#include "tst_phrasebook.moc"
