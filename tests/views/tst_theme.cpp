#include "platform/ui/KitFont.h"

#include <QColor>
#include <QFontInfo>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>

#include <cmath>
#include <memory>

#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

using namespace Qt::StringLiterals;
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
        QTest::newRow("inkOnPrimary on primaryLight") << QByteArray("inkOnPrimary") << QByteArray("primaryLight");
        QTest::newRow("ink on field") << QByteArray("ink") << QByteArray("field");
        QTest::newRow("fieldHint on field") << QByteArray("fieldHint") << QByteArray("field");
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
        QCOMPARE(fontOf(u"Hello"_s).pixelSize(), 20);
        KitFont::shared().setScale(1.5);
        QCOMPARE(fontOf(u"Hello"_s).pixelSize(), 30);
        QCOMPARE(m_theme->property("fontScale").toReal(), 1.5);
    }

    void everyScriptIsSetInItsOwnFace_data()
    {
        addRows<QString, QString>({
            {"English", u"English"_s, u"Noto Sans"_s},
            {"Hindi", u"हिंदी"_s, u"Noto Sans Devanagari"_s},
            {"Gujarati", u"ગુજરાતી"_s, u"Noto Sans Gujarati"_s},
            {"Bengali", u"বাংলা"_s, u"Noto Sans Bengali"_s},
            {"Telugu", u"తెలుగు"_s, u"Noto Sans Telugu"_s},
            {"digits and marks lead nowhere", u"12: तेरह"_s, u"Noto Sans Devanagari"_s},
            {"nothing", {}, u"Noto Sans"_s},
        });
    }
    void everyScriptIsSetInItsOwnFace()
    {
        const auto [text, face] = currentRow<QString, QString>();
        QCOMPARE(QFontInfo(fontOf(text)).family(), face);
    }

private:
    QFont fontOf(const QString &text) const
    {
        QFont font;
        QMetaObject::invokeMethod(m_theme, "font", Q_RETURN_ARG(QFont, font), Q_ARG(QString, text), Q_ARG(qreal, 20),
                                  Q_ARG(int, 400));
        return font;
    }

    QQmlEngine m_engine;
    std::unique_ptr<QObject> m_root;
    QObject *m_theme = nullptr;
};

template struct vynlex::InSuite<ThemeTest>;
#include "tst_theme.moc"
