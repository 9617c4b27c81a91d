#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <tl/expected.hpp>

namespace examples {

/// Parses options without positional arguments. An error is one clear line. `--help` and `--version`, which are added,
/// print and end the process with success.
tl::expected<void, QString> parse(QCommandLineParser &parser, const QStringList &arguments);

} // namespace examples
