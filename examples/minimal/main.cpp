#include <VynlexTranslationSDK/NetworkReachabilityHandler.h>
#include <VynlexTranslationSDK/NetworkReachabilityHandlerDelegate.h>
#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <QGuiApplication>
#include <QQuickWindow>

using namespace vynlex;

struct NetworkLine : NetworkReachabilityHandlerDelegate {
    void didNetworkStateChanged(bool isConnected) override { qInfo(isConnected ? "Connected" : "Not connected"); }
};

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    const VLTranslationConfig config(qEnvironmentVariable("VYNLEX_SPEECH_KEY"),
                                     qEnvironmentVariable("VYNLEX_SPEECH_REGION", "centralindia"),
                                     qEnvironmentVariable("VYNLEX_TRANSLATOR_KEY"));
    QQuickWindow window;
    window.setTitle(config.speechRegion());
    window.resize(390, 844);
    window.show();

    NetworkLine network;
    const auto watch = QUuid::createUuid();
    NetworkReachabilityHandler::instance().addDelegates(network, watch);
    const int result = QGuiApplication::exec();
    NetworkReachabilityHandler::instance().removeDelegate(watch);
    return result;
}
