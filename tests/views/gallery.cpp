// Draws every moment of every screen on every shape of device, at twice the size, into FOLDER/SHAPE/MOMENT.png.
#include "tests/views/ChatStage.h"
#include "tests/views/ConversationStage.h"
#include "tests/views/HomeStage.h"

#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QTest>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// Long enough for a pulse, a wave or a fade to be in the middle of its movement.
constexpr int movementMs = 450;

/// Whether what was chosen on the command line has this name, or nothing was chosen.
bool chosen(const QCommandLineParser &options, const QString &option, const QString &name)
{
    return !options.isSet(option) || options.value(option) == name;
}

template<typename Stage> bool draw(const DeviceShape &shape, const Scene<Stage> &scene, const QDir &folder)
{
    Stage stage(shape);
    const bool played = scene.play(stage);
    QTest::qWait(movementMs);
    const QString file = folder.filePath(shape.name + u'/' + scene.name + u".png"_s);
    const bool saved = folder.mkpath(shape.name) && stage.window.grabWindow().save(file);
    std::fprintf(played && saved ? stdout : stderr, "%s%s\n", qPrintable(file),
                 !played ? ": did not come about"
                 : saved ? ""
                         : ": cannot be written");
    for (const QString &fault : stage.probe.faults())
        std::fprintf(stderr, "  %s\n", qPrintable(fault));
    return played && saved;
}

/// The number of pictures; less than nothing when one of them is missing.
template<typename Stage> int drawAll(const QCommandLineParser &options, const QDir &folder)
{
    int drawn = 0;
    bool whole = true;
    for (const DeviceShape &shape : deviceShapes()) {
        for (const Scene<Stage> &scene : Stage::scenes()) {
            if (!chosen(options, u"shape"_s, shape.name) || !chosen(options, u"moment"_s, scene.name))
                continue;
            whole = draw(shape, scene, folder) && whole;
            ++drawn;
        }
    }
    return whole ? drawn : -1;
}

} // namespace

int main(int argc, char **argv)
{
    for (const auto &[name, value] :
         {std::pair{"QT_QPA_PLATFORM", "offscreen"}, {"QT_QUICK_BACKEND", "software"}, {"QT_SCALE_FACTOR", "2"}}) {
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, value);
    }
    QGuiApplication application(argc, argv);
    QCommandLineParser options;
    options.setApplicationDescription(u"Draws the kit's screens into pictures."_s);
    options.addHelpOption();
    options.addPositionalArgument(u"folder"_s, u"Where the pictures go."_s);
    options.addOption({u"shape"_s, u"Only this shape of device."_s, u"name"_s});
    options.addOption({u"moment"_s, u"Only this moment."_s, u"name"_s});
    options.process(application);
    if (options.positionalArguments().size() != 1)
        options.showHelp(2);

    const QDir folder(options.positionalArguments().first());
    const int conversation = drawAll<ConversationStage>(options, folder);
    const int chat = drawAll<ChatStage>(options, folder);
    const int home = drawAll<HomeStage>(options, folder);
    if (std::max({conversation, chat, home}) == 0)
        std::fprintf(stderr, "No such shape or moment.\n");
    const bool whole = std::min({conversation, chat, home}) >= 0;
    return whole && conversation + chat + home > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
