#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <span>
#include <string_view>

#include "HeadlessRun.h"
#include "Options.h"
#include "Room.h"
#include "SandboxProcess.h"
#include "Stage.h"
#include "WindowedRun.h"
#include "api/VLApiManager.h"
#include "platform/device/Platform.h"
#include "platform/storage/QSettingsUserDefaults.h"
#include "platform/ui/KitFont.h"

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

int complain(const QString &line)
{
    QTextStream(stderr) << "confera-host: " << line << Qt::endl;
    return EXIT_FAILURE;
}

/// The device: its own microphone and loudspeaker where there are any, files otherwise.
struct Device {
    Platform platform = Platform::shipped();
    bool hasMicrophone = true;

    Device(host::Room &room, const QString &settingsFile, bool headless)
        : hasMicrophone(!headless && platform.makeAudioEngine()->inputFormat().sampleRateHz > 0)
    {
        if (!hasMicrophone)
            platform.makeAudioEngine = [&room] { return room.makeAudioEngine(); };
        // Recordings of what is to be said go into files also where there is a loudspeaker.
        platform.makeAudioPlayer = [&room, headless, makeLoudspeaker = platform.makeAudioPlayer] {
            return headless || room.isRecording() ? room.makeAudioPlayer() : makeLoudspeaker();
        };
        if (headless) {
            // A demonstration leaves the user's own choices alone.
            platform.userDefaults = std::make_shared<QSettingsUserDefaults>(settingsFile);
        }
    }
};

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

    const auto options = host::parseOptions(QGuiApplication::arguments());
    if (!options)
        return complain(options.error());

    std::unique_ptr<examples::SandboxProcess> sandbox;
    if (!options->usesRealServices()) {
        auto started = examples::SandboxProcess::start(options->sandboxProgram);
        if (!started)
            return complain(started.error());
        sandbox = std::move(*started);
    }
    const QTemporaryDir settings;
    host::Room room(headless && !options->realTime ? host::Room::Speed::AsFastAsAccepted : host::Room::Speed::RealTime);
    Device device(room, settings.filePath(u"settings.ini"_s), headless);
    Platform::install(std::move(device.platform));
    VLApiManager::shared().translatedConfig =
        sandbox ? examples::SandboxProcess::configuration()
                : VLTranslationConfig(options->speechKey, options->speechRegion, options->translatorKey);
    KitFont::shared().setScale(options->fontScale);

    host::Stage stage(options->size);
    if (!headless)
        return host::runWindowed(stage, room, !device.hasMicrophone);
    std::function<void()> holdTranslation;
    if (sandbox)
        holdTranslation = [&] { sandbox->delayNextTranslation(std::chrono::seconds(1)); };
    if (const auto played = host::runHeadless(*options, stage, room, holdTranslation); !played)
        return complain(played.error());
    return EXIT_SUCCESS;
}
