#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>
#include <tl/expected.hpp>
#include <vector>

#include "Person.h"
#include "SandboxProcess.h"
#include "language/LanguageOption.h"
#include "language/Side.h"

namespace host {

/// A recording that one side says.
struct RecordedTurn {
    vynlex::Side side;
    QString wavFile;
};

/// The command line of the demo host.
struct Options {
    bool headless = false;
    bool two = false;                        ///< two people with a device each
    bool allLanguages = false;               ///< of these two
    std::optional<Person> device;            ///< this process is one of the two devices
    examples::SandboxAddress sandboxAddress; ///< for a device
    QString outputFolder;
    std::vector<RecordedTurn> turns;
    bool allPairs = false;
    bool realTime = false; ///< headless: speak and listen at the speed of sound, not as fast as the services take it
    std::optional<vynlex::LanguageOption> speaker;
    std::optional<vynlex::LanguageOption> listener;
    QSize size{390, 844};
    double fontScale = 1.0;

    QString speechKey;
    QString speechRegion;
    QString translatorKey;
    QString webToken; ///< with real services
    QString sandboxProgram;

    /// All keys given: the real services are used, and no sandbox is started.
    [[nodiscard]] bool usesRealServices() const { return !speechKey.isEmpty(); }
};

/// Reads the command line, then the VYNLEX_... environment variables for the keys. An error is one clear line. `--help`
/// and `--version` print and end the process with success.
tl::expected<Options, QString> parseOptions(const QStringList &arguments);

} // namespace host
