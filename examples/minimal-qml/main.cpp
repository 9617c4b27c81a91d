#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <QGuiApplication>
#include <QQmlApplicationEngine>

using namespace Qt::StringLiterals;

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    // Keys do not belong into QML files, so they come from here.
    const vynlex::VLTranslationConfig config(qEnvironmentVariable("VYNLEX_SPEECH_KEY"),
                                             qEnvironmentVariable("VYNLEX_SPEECH_REGION", "centralindia"),
                                             qEnvironmentVariable("VYNLEX_TRANSLATOR_KEY"));
    QQmlApplicationEngine engine;
    engine.setInitialProperties(
        {{u"webToken"_s, qEnvironmentVariable("CONFERA_WEB_TOKEN")}, {u"config"_s, QVariant::fromValue(config)}});
    engine.load(u"qrc:/qt-project.org/imports/ConferaMinimal/Main.qml"_s);
    return engine.rootObjects().isEmpty() ? EXIT_FAILURE : QGuiApplication::exec();
}
