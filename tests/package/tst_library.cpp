#include <QFile>
#include <QLibrary>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

/// The shared library as a host's process sees it; nothing of the kit is linked into this test.
class LibraryTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(!QFile::exists(u":/VynlexTranslationSDK/images/back.svg"_s));
        QVERIFY2(m_library.load(), qPrintable(m_library.errorString()));
    }

    void itsVersionIsFoundByName()
    {
        const auto *const number = reinterpret_cast<double *>(m_library.resolve("VynlexTranslationSDKVersionNumber"));
        QVERIFY(number);
        QCOMPARE(*number, 1.0);
        const auto *const text = reinterpret_cast<char *>(m_library.resolve("VynlexTranslationSDKVersionString"));
        QVERIFY(text);
        QCOMPARE(text, "@(#)PROGRAM:VynlexTranslationSDK  PROJECT:VynTranslate-1\n");
    }

    void loadingItIsEnoughToImportIt()
    {
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQuick\n"
                          "import VynlexTranslationSDK\n"
                          "import VynlexTranslationSDK.Ui\n"
                          "Text { color: Theme.ink }\n",
                          {});
        const std::unique_ptr<QObject> made(component.create());
        QVERIFY2(made, qPrintable(component.errorString()));
    }

    void itBringsItsPictures() { QVERIFY(QFile::exists(u":/VynlexTranslationSDK/images/back.svg"_s)); }

private:
    QLibrary m_library{QStringLiteral(VYNLEX_LIBRARY)};
};

QTEST_MAIN(LibraryTest)
#include "tst_library.moc"
