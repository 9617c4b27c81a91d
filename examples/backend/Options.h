#pragma once

#include <VynlexTranslationSDK/VLApiServer.h>

#include <QString>
#include <QStringList>

#include <optional>
#include <tl/expected.hpp>

/// The command line.
struct Options {
    /// None: the sandbox.
    std::optional<vynlex::VLApiServer> environment;
    QString webToken;
    QString contactsFile; ///< empty: none are uploaded
    QString partner;      ///< user id; empty: the first contact
    QString text;         ///< to send; empty: nothing is sent
    QString sandboxProgram;
};

/// An error is one clear line. `--help` and `--version` print and end the process with success.
tl::expected<Options, QString> parseOptions(const QStringList &arguments);
