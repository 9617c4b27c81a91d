#include "platform/ui/KitFont.h"

#include <QColor>
#include <QFile>
#include <QFontInfo>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>

#include <cmath>
#include <memory>

using namespace vynlex;

namespace {

qreal luminance(const QColor &color)
{
    const auto linear = [](qreal channel) {
        return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

qreal contrast(const QColor &a, const QColor &b)
{
    const qreal light = std::max(luminance(a), luminance(b));
    const qreal dark = std::min(luminance(a), luminance(b));
    return (light + 0.05) / (dark + 0.05);
}

} // namespace

class ThemeTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        QQmlComponent component(&m_engine);
        component.setData("import QtQuick\nimport VynlexTranslationSDK.Ui\nItem { property var theme: Theme }", {});
        m_root.reset(component.create());
        QVERIFY2(m_root, qPrintable(component.errorString()));
        m_theme = m_root->property("theme").value<QObject *>();
        QVERIFY(m_theme);
    }

    void cleanup() { KitFont::shared().setScale(1); }

    void textKeepsItsContrast_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("ground");
        for (const char *ground : {"surface", "background", "primaryTint"}) {
            for (const char *text : {"ink", "inkSoft", "primary"})
                QTest::addRow("%s on %s", text, ground) << QByteArray(text) << QByteArray(ground);
        }
        QTest::newRow("inkOnPrimary on primary") << QByteArray("inkOnPrimary") << QByteArray("primary");
        QTest::newRow("ink on primarySoft") << QByteArray("ink") << QByteArray("primarySoft");
    }
    void textKeepsItsContrast()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, ground);
        const qreal ratio =
            contrast(m_theme->property(text.data()).value<QColor>(), m_theme->property(ground.data()).value<QColor>());
        QVERIFY2(ratio >= 4.5, qPrintable(QString::number(ratio)));
    }

    void theReadersScaleReachesEveryFont()
    {
        QFont font;
        QVERIFY(
            QMetaObject::invokeMethod(m_theme, "font", Q_RETURN_ARG(QFont, font), Q_ARG(qreal, 20), Q_ARG(int, 400)));
        QCOMPARE(font.pixelSize(), 20);
        KitFont::shared().setScale(1.5);
        QVERIFY(
            QMetaObject::invokeMethod(m_theme, "font", Q_RETURN_ARG(QFont, font), Q_ARG(qreal, 20), Q_ARG(int, 400)));
        QCOMPARE(font.pixelSize(), 30);
        QCOMPARE(m_theme->property("fontScale").toReal(), 1.5);
    }

    void anAbsurdScaleIsKeptWithinWhatTheLayoutsHold()
    {
        KitFont::shared().setScale(9);
        QCOMPARE(KitFont::shared().scale(), 2.0);
        KitFont::shared().setScale(0);
        QCOMPARE(KitFont::shared().scale(), 0.8);
    }

    void everyPictureIsInTheLibrary_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"micButton",
                                 "micStopButton",
                                 "playButton",
                                 "pauseButton",
                                 "cross",
                                 "radioButton_Unselected",
                                 "radioButton_Selected",
                                 "conversionButton",
                                 "infoButton",
                                 "backButton",
                                 "chevronDown",
                                 "notify_icon",
                                 "translate_icon",
                                 "home_bottom_transition",
                                 "call_home",
                                 "voice_home",
                                 "back",
                                 "micWhite",
                                 "pauseIcon",
                                 "sendMessage",
                                 "mic_recording",
                                 "deleteButton",
                                 "normalAudioWave",
                                 "completedAudioWave",
                                 "audioWave",
                                 "audioPlayIcon",
                                 "chatAudioPlayButton",
                                 "chatSelfPlayButton",
                                 "playButtonForParticipant"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void everyPictureIsInTheLibrary()
    {
        QFETCH(QString, name);
        const QImage picture(QStringLiteral(":/VynlexTranslationSDK/images/%1.svg").arg(name));
        QVERIFY(!picture.isNull());
    }

private:
    QQmlEngine m_engine;
    std::unique_ptr<QObject> m_root;
    QObject *m_theme = nullptr;
};

QTEST_MAIN(ThemeTest)
#include "tst_theme.moc"
