#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <span>
#include <string_view>

#include "Device.h"
#include "Options.h"
#include "Room.h"
#include "SandboxProcess.h"
#include "Stage.h"
#include "Tour.h"
#include "TurnsRun.h"
#include "WindowedRun.h"
#include "platform/ui/KitFont.h"
#include "two/DeviceRun.h"
#include "two/TwoRun.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// Chosen before the application object exists, because the platform plugin cannot be changed afterwards.
bool isHeadless(std::span<char *> arguments)
{
    const bool asked =
        std::ranges::any_of(arguments, [](const char *argument) { return std::string_view(argument) == "--headless"; });
    const bool noDisplay = !qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
    return asked || noDisplay;
}

void prepareHeadless()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_SCALE_FACTOR", "2"); // pictures have two pixels a point
}

host::SignedInUser signedInUser(const host::Options &options)
{
    if (options.usesRealServices()) {
        const QString name = options.webToken.isEmpty() ? QString() : u"Confera user"_s; // the token tells no name
        return {name, options.webToken, {options.speechKey, options.speechRegion, options.translatorKey}};
    }
    const host::Person &person = options.device ? *options.device : host::people().front();
    return {person.user.name, person.webToken(), examples::SandboxProcess::configuration()};
}

int complain(const QString &line)
{
    QTextStream(stderr) << "confera-host: " << line << Qt::endl;
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char **argv)
{
    const bool headless = isHeadless({argv, static_cast<std::size_t>(argc)});
    if (headless)
        prepareHeadless();
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"confera-host"_s);
    QGuiApplication::setOrganizationName(u"Confera"_s);
    QGuiApplication::setApplicationVersion(u"1.0.0"_s);

    auto options = host::parseOptions(QGuiApplication::arguments());
    if (!options)
        return complain(options.error());
    options->headless = headless;
    if (options->two) {
        const auto played = host::runTwo(*options);
        return played ? EXIT_SUCCESS : complain(played.error());
    }

    const QTemporaryDir settings;
    std::unique_ptr<examples::SandboxProcess> sandbox;
    if (options->device) {
        if (const auto used = examples::useSandbox(options->sandboxAddress); !used)
            return complain(used.error());
    } else if (!options->usesRealServices()) {
        // A demonstration begins with the seed; what a person does in the window is there the next time.
        auto started = examples::SandboxProcess::start(options->sandboxProgram, headless ? settings.path() : QString());
        if (!started)
            return complain(started.error());
        sandbox = std::move(*started);
    }
    if (!options->usesRealServices() && !qEnvironmentVariableIsSet("VYNLEX_CONTACTS_FILE"))
        qputenv("VYNLEX_CONTACTS_FILE", HOST_CONTACTS_FILE); // people whom the sandbox knows, and others
    // A demonstration leaves the user's own choices alone, and two people have two.
    const QString settingsFile = headless || options->device ? settings.filePath(u"settings.ini"_s) : QString();
    host::Room room(headless && !options->realTime ? host::Room::Speed::AsFastAsAccepted : host::Room::Speed::RealTime);
    const host::Device device(room, settingsFile, headless);
    KitFont::shared().setScale(options->fontScale);

    host::Stage stage(options->size, signedInUser(*options), options->fontScale);
    if (headless)
        stage.window().show(); // somewhere out of sight
    if (options->device)
        return host::runDevice(*options, stage, room, device);
    if (!headless)
        return host::runWindowed(stage, room, {u"Confera"_s, {}}, !device.hasMicrophone());
    const bool isTour = sandbox && options->turns.empty() && !options->allPairs;
    if (const auto played = isTour ? host::runTour(*options, stage, room, device, *sandbox)
                                   : host::runTurns(*options, stage, room, device);
        !played)
        return complain(played.error());
    return EXIT_SUCCESS;
}
