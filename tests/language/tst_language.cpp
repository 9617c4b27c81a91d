#include <QTest>

#include "language/LanguageTranslation.h"
#include "tests/fakes/MemoryUserDefaults.h"
#include "tests/fakes/Rows.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

class TestLanguage : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_store = std::make_shared<MemoryUserDefaults>();
        m_languages = std::make_unique<LanguageTranslation>(m_store);
    }

    void aSideSpeaksItsStoredLanguageOrItsDefault_data()
    {
        addRows<QString, QString, QString>({
            {"fresh installation", {}, "en", "hi"},
            {"Latin letters match nothing", u"Hindi"_s, "en", "hi"},
            {"Telugu", u"తెలుగు"_s, "te", "te"},
            {"English, also for the listener", u"English"_s, "en", "en"},
        });
    }
    void aSideSpeaksItsStoredLanguageOrItsDefault()
    {
        const auto [stored, speakerCode, listenerCode] = currentRow<QString, QString, QString>();
        if (!stored.isNull()) {
            m_store->setString(u"SpeakerLanguage"_s, stored);
            m_store->setString(u"ListenerLanguage"_s, stored);
        }
        QCOMPARE(m_languages->translatorCode(Side::Speaker), speakerCode);
        QCOMPARE(m_languages->translatorCode(Side::Listener), listenerCode);
    }

    void everyColumnComesFromTheStoredRow()
    {
        m_languages->store(Side::Listener, LanguageOption::bengali);
        QCOMPARE(m_store->all(), (QMap<QString, QString>{{u"ListenerLanguage"_s, u"বাংলা"_s}}));
        QCOMPARE(m_languages->language(Side::Listener), LanguageOption::bengali);
        QCOMPARE(m_languages->displayName(Side::Listener), u"বাংলা"_s);
        QCOMPARE(m_languages->recognitionLocale(Side::Listener), u"bn-IN"_s);
        QCOMPARE(m_languages->voice(Side::Listener), u"bn-IN-TanishaaNeural"_s);
        QCOMPARE(m_languages->promptText(Side::Listener), u"কথোপকথন শুরু করতে মাইক টিপুন"_s);
        QCOMPARE(m_languages->language(Side::Speaker), LanguageOption::english); // untouched
    }

    void aLocaleHasItsVoiceAndAnyOtherTextTheEnglishOne()
    {
        for (const LanguageOption option : allLanguageOptions) {
            const LanguageEntry &entry = languageEntry(option);
            QCOMPARE(LanguageTranslation::voiceForLocale(entry.recognitionLocale), entry.synthesisVoice);
            QCOMPARE(languageFromRawValue(entry.displayName), std::optional(option));
        }
        for (const QString &unknown : {u"ta-IN"_s, u"hi-in"_s, u"hi"_s, QString()})
            QCOMPARE(LanguageTranslation::voiceForLocale(unknown), u"en-US-AriaNeural"_s);
    }

private:
    std::shared_ptr<MemoryUserDefaults> m_store;
    std::unique_ptr<LanguageTranslation> m_languages;
};

QTEST_GUILESS_MAIN(TestLanguage)
#include "tst_language.moc"
