#include "sandbox/recognition/PhoneMap.h"
#include "sandbox/recognition/RecogniserModels.h"

#include <QTemporaryDir>
#include <QTest>

#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

using sandbox::PhoneMap;
using sandbox::RecogniserModels;

namespace {

PhoneMap mapOf(const QByteArray &lines)
{
    const QTemporaryDir folder;
    const auto file = folder.filePath("phones.tsv").toStdString();
    std::ofstream(file, std::ios::binary) << "locale\tipa\tarpabet\n" << lines.toStdString();
    return PhoneMap::load(file);
}

QByteArray joined(const std::vector<std::string> &pronunciations)
{
    QByteArrayList list;
    for (const auto &pronunciation : pronunciations)
        list << QByteArray::fromStdString(pronunciation);
    return list.join(", ");
}

} // namespace

class PronunciationsTest : public QObject {
    Q_OBJECT

private slots:
    void phonemesBecomePhones_data()
    {
        QTest::addColumn<QByteArray>("ipa");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("longest phoneme first") << QByteArray("tʰat") << QByteArray("TH AA T");
        QTest::newRow("stress does not count") << QByteArray("tˈaˌt") << QByteArray("T AA T");
        QTest::newRow("breathy is aspirated") << QByteArray("tʱa") << QByteArray("TH AA");
        QTest::newRow("alternatives, the nearest first") << QByteArray("da") << QByteArray("D AA, DH AA");
        QTest::newRow("a phone may be left out") << QByteArray("a\u0303") << QByteArray("AA, AA N");
        QTest::newRow("a long consonant is one") << QByteArray("tːta") << QByteArray("T AA");
        QTest::newRow("a phoneme may be two phones") << QByteArray("ca") << QByteArray("T S AA");
        QTest::newRow("unknown phoneme") << QByteArray("taʘ") << QByteArray();
        QTest::newRow("nothing said") << QByteArray("ˈ") << QByteArray();
    }
    void phonemesBecomePhones()
    {
        QFETCH(QByteArray, ipa);
        QFETCH(QByteArray, expected);
        const auto map = mapOf("hi\ta\tAA\nhi\tt\tT\nhi\ttʰ\tTH\nhi\td\tD, DH\nhi\t~\t, N\nhi\tc\tT S\n");
        QCOMPARE(joined(map.pronunciations(ipa.toStdString(), "hi")), expected);
        QVERIFY(map.pronunciations(ipa.toStdString(), "te").empty());
    }

    void theLikeliestOfManyAreKept()
    {
        const auto map = mapOf("hi\td\tD, DH, T\nhi\ta\tAA\n");
        QCOMPARE(joined(map.pronunciations("dada", "hi", 3)), "D AA D AA, D AA DH AA, DH AA D AA");
    }

    void aBadFileIsNamedWithItsLine()
    {
        try {
            (void)mapOf("hi\ta\tAA\nhi AA\n");
            QFAIL("accepted");
        } catch (const std::runtime_error &error) {
            QVERIFY2(QByteArray(error.what()).contains("phones.tsv:3: expected"), error.what());
        }
        QVERIFY_EXCEPTION_THROWN((void)PhoneMap::load("no/such/map.tsv"), std::runtime_error);
    }

    void everyWordOfTheBookCanBeSaid_data()
    {
        QTest::addColumn<QByteArray>("language");
        for (const auto language : sandbox::phrasebookLanguages)
            QTest::newRow(language.data()) << QByteArray(language.data());
    }
    void everyWordOfTheBookCanBeSaid()
    {
        QFETCH(QByteArray, language);
        const auto models = RecogniserModels::load();
        const auto &grammar = models->grammar(language.toStdString());
        QCOMPARE(grammar.sentences.size(), models->book().phrases().size());
        for (const auto &word : grammar.words) {
            QVERIFY2(!word.pronunciations.empty() && word.pronunciations.size() <= 8, word.spoken.c_str());
            for (const char mark : {'.', ',', '?'})
                QVERIFY2(word.spoken.find(mark) == std::string::npos, word.spoken.c_str());
        }
    }

    void noTwoSentencesOfALanguageSoundTheSame_data() { everyWordOfTheBookCanBeSaid_data(); }
    void noTwoSentencesOfALanguageSoundTheSame()
    {
        QFETCH(QByteArray, language);
        const auto models = RecogniserModels::load();
        const auto &grammar = models->grammar(language.toStdString());
        std::set<std::string> sounds;
        for (const auto &sentence : grammar.sentences) {
            std::string sound;
            for (const auto word : sentence.words)
                sound += grammar.words[word].pronunciations.front() + " ";
            QVERIFY2(sounds.insert(sound).second, sentence.text.c_str());
        }
    }

    void localesAreReadByTheirLanguage()
    {
        QCOMPARE(RecogniserModels::languageOf("en-IN"), "en");
        QCOMPARE(RecogniserModels::languageOf("te-IN"), "te");
        for (const char *locale : {"", "de-DE", "-IN", "english"})
            QVERIFY_EXCEPTION_THROWN((void)RecogniserModels::languageOf(locale), std::invalid_argument);
    }

    void missingModelsAreAnError()
    {
        RecogniserModels::Files files;
        files.acousticModel = "no/such/model";
        QVERIFY_EXCEPTION_THROWN((void)RecogniserModels::load(files), std::runtime_error);
        files = {};
        files.dictionary = "no/such/dictionary";
        QVERIFY_EXCEPTION_THROWN((void)RecogniserModels::load(files)->grammar("en"), std::runtime_error);
    }
};

QTEST_APPLESS_MAIN(PronunciationsTest)
#include "tst_pronunciations.moc"
