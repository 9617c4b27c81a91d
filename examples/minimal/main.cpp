#include <VynlexTranslationSDK/VLTranslationView.h>

#include <QGuiApplication>
#include <QQuickWindow>

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QQuickWindow window;
    window.resize(390, 844);
    window.show();
    vynlex::VLTranslationView view(window.contentItem());
    view.setUpTranslationScreen(qEnvironmentVariable("CONFERA_WEB_TOKEN"),
                                {qEnvironmentVariable("VYNLEX_SPEECH_KEY"),
                                 qEnvironmentVariable("VYNLEX_SPEECH_REGION", "centralindia"),
                                 qEnvironmentVariable("VYNLEX_TRANSLATOR_KEY")});
    return QGuiApplication::exec();
}
