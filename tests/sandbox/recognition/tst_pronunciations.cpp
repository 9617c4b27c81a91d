#include "sandbox/recognition/PhoneMap.h"
#include "sandbox/recognition/RecogniserModels.h"

#include <QTemporaryDir>
#include <QTest>

#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include "tests/fakes/Suite.h"

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

} // namespace

class PronunciationsTest : public QObject {
    Q_OBJECT

private slots:
    void phonemesBecomePhones()
    {
        const auto map = mapOf("hi\ta\tAA\nhi\tt\tT\nhi\ttʰ\tTH\nhi\td\tD, DH, T\nhi\t~\t, N\n");
        using Phones = std::vector<std::string>;
        const auto phones = [&](const char *ipa) { return map.pronunciations(ipa, "hi", 3); };
        QCOMPARE(phones("tʰˈat"), Phones{"TH AA T"}); // the longest phoneme; stress does not count
        QCOMPARE(phones("tʱa"), Phones{"TH AA"});     // breathy is aspirated
        QCOMPARE(phones("dada"), (Phones{"D AA D AA", "D AA DH AA", "DH AA D AA"})); // the likeliest of many
        QCOMPARE(phones("a\u0303"), (Phones{"AA", "AA N"}));                         // a phone may be left out
        QCOMPARE(phones("taʘ"), Phones());
        QVERIFY(map.pronunciations("ta", "te").empty());
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

    void everySentenceOfTheBookCanBeSaidAndSoundsLikeNoOther()
    {
        const auto models = RecogniserModels::load();
        for (const auto language : sandbox::phrasebookLanguages) {
            const auto &grammar = models->grammar(std::string(language));
            QCOMPARE(grammar.sentences.size(), models->book().phrases().size());
            for (const auto &word : grammar.words) {
                QVERIFY2(!word.pronunciations.empty() && word.pronunciations.size() <= 8, word.spoken.c_str());
                QVERIFY2(word.spoken.find_first_of(".,?") == std::string::npos, word.spoken.c_str());
            }
            std::set<std::string> sounds;
            for (const auto &sentence : grammar.sentences) {
                std::string sound;
                for (const auto word : sentence.words)
                    sound += grammar.words[word].pronunciations.front() + " ";
                QVERIFY2(sounds.insert(sound).second, sentence.text.c_str());
            }
        }
    }
};

template struct vynlex::InSuite<PronunciationsTest>;

#include "tst_pronunciations.moc"
