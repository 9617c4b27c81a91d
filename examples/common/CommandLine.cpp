#include "CommandLine.h"

using namespace Qt::StringLiterals;

namespace examples {

tl::expected<void, QString> parse(QCommandLineParser &parser, const QStringList &arguments)
{
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    if (!parser.parse(arguments))
        return tl::unexpected(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();
    if (!parser.positionalArguments().isEmpty())
        return tl::unexpected(u"Nothing is known of \"%1\". Try --help."_s.arg(parser.positionalArguments().first()));
    return {};
}

} // namespace examples
