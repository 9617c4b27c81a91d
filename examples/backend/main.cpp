#include <QCoreApplication>
#include <QTextStream>

#include "BackendTour.h"
#include "SandboxProcess.h"
#include "api/VLNetworkClient.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

int complain(const QString &line)
{
    QTextStream(stderr) << "confera-backend: " << line << Qt::endl;
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"confera-backend"_s);
    QCoreApplication::setApplicationVersion(u"1.0.0"_s);

    const auto options = parseOptions(QCoreApplication::arguments());
    if (!options)
        return complain(options.error());

    std::unique_ptr<examples::SandboxProcess> sandbox;
    if (!options->environment) {
        auto started = examples::SandboxProcess::start(options->sandboxProgram);
        if (!started)
            return complain(started.error());
        sandbox = std::move(*started);
    }

    VLApiManager api;
    if (options->environment) {
        api.currentEnv = *options->environment;
        api.networkClient->serverEnvironment = *options->environment;
    }
    int result = EXIT_SUCCESS;
    BackendTour tour(api, sandbox.get(), *options, [&](const std::optional<QString> &problem) {
        if (problem)
            result = complain(*problem);
        QCoreApplication::quit();
    });
    tour.start();
    QCoreApplication::exec();
    return result;
}
