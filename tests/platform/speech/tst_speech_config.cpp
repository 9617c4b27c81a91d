#include <QtTest>

#include "platform/speech/SpeechConfig.h"

using namespace vynlex;

class TestSpeechConfig : public QObject {
    Q_OBJECT

private slots:
    void anEmptyKeyOrARegionThatIsNoHostLabelIsRefused_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("region");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("good") << "secret"
                              << "westeurope" << true;
        QTest::newRow("hyphen and digits") << "secret"
                                           << "China-North2" << true;
        QTest::newRow("longest label") << "secret" << QString(63, 'a') << true;
        QTest::newRow("no key") << ""
                                << "westeurope" << false;
        QTest::newRow("no region") << "secret"
                                   << "" << false;
        QTest::newRow("too long") << "secret" << QString(64, 'a') << false;
        QTest::newRow("another host") << "secret"
                                      << "evil.example/" << false;
        QTest::newRow("user info") << "secret"
                                   << "user@west" << false;
        QTest::newRow("line feed") << "secret"
                                   << "westeurope\n"
                                   << false;
        QTest::newRow("blank") << "secret"
                               << "west europe" << false;
        QTest::newRow("hyphen first") << "secret"
                                      << "-west" << false;
        QTest::newRow("not ASCII") << "secret" << QString::fromUtf8("wésteurope") << false;
    }
    void anEmptyKeyOrARegionThatIsNoHostLabelIsRefused()
    {
        QFETCH(QString, key);
        QFETCH(QString, region);
        const auto config = SpeechConfig::fromSubscription(key, region);
        QTEST(config.has_value(), "accepted");
        if (!config) {
            QVERIFY(!config.error().isEmpty());
            QVERIFY(!config.error().contains("secret"));
        }
    }

    void copiesShareTheirSettings()
    {
        auto config = SpeechConfig::fromSubscription("key", "region").value();
        const SpeechConfig copy = config;
        QCOMPARE(copy.speechRecognitionLanguage(), "en-US");
        QVERIFY(!copy.isDictationEnabled());

        config.enableDictation();
        config.setSpeechRecognitionLanguage("hi-IN");
        config.setSpeechSynthesisVoiceName("hi-IN-SwaraNeural");

        QVERIFY(copy.isDictationEnabled());
        QCOMPARE(copy.speechRecognitionLanguage(), "hi-IN");
        QCOMPARE(copy.speechSynthesisVoiceName(), "hi-IN-SwaraNeural");
        QCOMPARE(copy.subscriptionKey(), "key");
        QCOMPARE(copy.region(), "region");
    }
};

QTEST_GUILESS_MAIN(TestSpeechConfig)
#include "tst_speech_config.moc"
