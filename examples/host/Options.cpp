#include "Options.h"

#include <QCommandLineParser>
#include <QRegularExpression>

#include <algorithm>
#include <array>

#include "CommandLine.h"
#include "SandboxProcess.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace host {
namespace {

std::optional<LanguageOption> languageNamed(const QString &name)
{
    const auto found = std::ranges::find_if(allLanguageOptions, [&](LanguageOption option) {
        const LanguageEntry &entry = languageEntry(option);
        const auto names = {entry.displayName, entry.translatorCode, entry.recognitionLocale};
        return std::ranges::any_of(names,
                                   [&](const QString &known) { return known.compare(name, Qt::CaseInsensitive) == 0; });
    });
    return found == allLanguageOptions.end() ? std::nullopt : std::optional(*found);
}

tl::expected<RecordedTurn, QString> turnFrom(const QString &text)
{
    const qsizetype equals = text.indexOf(u'=');
    const QString side = text.left(equals).toLower();
    const QString file = equals < 0 ? QString() : text.mid(equals + 1);
    if ((side != "speaker"_L1 && side != "listener"_L1) || file.isEmpty())
        return tl::unexpected(u"--turn wants speaker=FILE.wav or listener=FILE.wav, not \"%1\"."_s.arg(text));
    return RecordedTurn{side == "speaker"_L1 ? Side::Speaker : Side::Listener, file};
}

/// Value of the option, or of the environment variable that stands for it.
QString setting(const QCommandLineParser &parser, const QString &option, const char *variable)
{
    return parser.isSet(option) ? parser.value(option) : qEnvironmentVariable(variable);
}

} // namespace

tl::expected<Options, QString> parseOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"A host application with the translation kit in it. Without keys it brings its own "
        "stand-in for the cloud services."_s);
    parser.addOptions({
        {u"headless"_s, u"Play a conversation without a window (chosen by itself without a display)."_s},
        {u"out"_s, u"Headless: where transcript, pictures and sound go (default: out/demo)."_s, u"DIR"_s},
        {u"turn"_s, u"Headless: what a side says, as speaker=FILE.wav or listener=FILE.wav. Repeatable."_s,
         u"SIDE=FILE"_s},
        {u"all-pairs"_s, u"Headless: one turn for each of the 30 pairs of languages."_s},
        {u"two"_s,
         u"Two people with a device each, who send each other voice messages: two windows, or without any."_s},
        {u"all-languages"_s, u"Headless, for two: an exchange from each of the six languages."_s},
        {u"real-time"_s, u"Headless: speak and listen at the speed of sound."_s},
        {u"speaker"_s, u"Language of the person who holds the device, or of the first of two (display name or code)."_s,
         u"NAME"_s},
        {u"listener"_s, u"Language of the person opposite, or of the second of two (display name or code)."_s,
         u"NAME"_s},
        {u"size"_s, u"Size of the phone's screen in points (default 390x844)."_s, u"WxH"_s},
        {u"font-scale"_s, u"Scale of all text (default 1.0)."_s, u"F"_s},
        {u"speech-key"_s, u"Key of the real speech service (or VYNLEX_SPEECH_KEY)."_s, u"KEY"_s},
        {u"speech-region"_s, u"Region of the real services (or VYNLEX_SPEECH_REGION)."_s, u"REGION"_s},
        {u"translator-key"_s, u"Key of the real translator (or VYNLEX_TRANSLATOR_KEY)."_s, u"KEY"_s},
        {u"web-token"_s, u"With real services: the signed-in user's web token (or CONFERA_WEB_TOKEN)."_s, u"TOKEN"_s},
        {u"sandbox"_s, u"The confera-sandbox program (default: the one of this build)."_s, u"PROGRAM"_s},
    });
    // How a process of two starts those of the devices.
    for (const QString &name : {u"device"_s, u"proxy-port"_s, u"authority"_s}) {
        QCommandLineOption option(name);
        option.setValueName(u"VALUE"_s);
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        parser.addOption(option);
    }
    if (const auto parsed = examples::parse(parser, arguments); !parsed)
        return tl::unexpected(parsed.error());

    Options options;
    options.headless = parser.isSet(u"headless"_s);
    options.outputFolder = parser.isSet(u"out"_s) ? parser.value(u"out"_s) : u"out/demo"_s;
    options.allPairs = parser.isSet(u"all-pairs"_s);
    options.two = parser.isSet(u"two"_s);
    options.allLanguages = parser.isSet(u"all-languages"_s);
    options.device = personNamed(parser.value(u"device"_s));
    if (parser.isSet(u"device"_s) && !options.device)
        return tl::unexpected(u"There is no device of \"%1\"."_s.arg(parser.value(u"device"_s)));
    options.sandboxAddress = {parser.value(u"proxy-port"_s).toUShort(), parser.value(u"authority"_s)};
    options.realTime = parser.isSet(u"real-time"_s);
    options.sandboxProgram =
        parser.isSet(u"sandbox"_s) ? parser.value(u"sandbox"_s) : examples::SandboxProcess::defaultProgram();

    for (const QString &text : parser.values(u"turn"_s)) {
        auto turn = turnFrom(text);
        if (!turn)
            return tl::unexpected(turn.error());
        options.turns.push_back(std::move(*turn));
    }
    for (const auto &[name, asked] :
         {std::pair{u"--all-pairs"_s, options.allPairs}, std::pair{u"--all-languages"_s, options.allLanguages}}) {
        if (asked && !options.turns.empty())
            return tl::unexpected(u"%1 says its own sentences; leave --turn out."_s.arg(name));
    }
    if (options.two && options.allPairs)
        return tl::unexpected(u"--all-pairs is for a conversation; two people have --all-languages."_s);
    if (options.allLanguages && !options.two)
        return tl::unexpected(u"--all-languages needs --two."_s);

    for (const auto &[name, language] :
         {std::pair{u"speaker"_s, &options.speaker}, std::pair{u"listener"_s, &options.listener}}) {
        if (!parser.isSet(name))
            continue;
        *language = languageNamed(parser.value(name));
        if (!*language) {
            return tl::unexpected(
                u"\"%1\" is none of the six languages (English, Hindi, Gujarati, Marathi, Bengali, Telugu: "
                "en hi gu mr bn te)."_s.arg(parser.value(name)));
        }
    }

    if (parser.isSet(u"size"_s)) {
        static const QRegularExpression pattern(u"^(\\d{3,4})x(\\d{3,4})$"_s);
        const auto match = pattern.match(parser.value(u"size"_s));
        if (!match.hasMatch())
            return tl::unexpected(u"--size wants WIDTHxHEIGHT in points, such as 390x844."_s);
        options.size = {match.captured(1).toInt(), match.captured(2).toInt()};
    }
    if (parser.isSet(u"font-scale"_s)) {
        bool isNumber = false;
        options.fontScale = parser.value(u"font-scale"_s).toDouble(&isNumber);
        if (!isNumber || !(options.fontScale >= 0.5 && options.fontScale <= 3))
            return tl::unexpected(u"--font-scale wants a number from 0.5 to 3."_s);
    }

    options.speechKey = setting(parser, u"speech-key"_s, "VYNLEX_SPEECH_KEY");
    options.speechRegion = setting(parser, u"speech-region"_s, "VYNLEX_SPEECH_REGION");
    options.translatorKey = setting(parser, u"translator-key"_s, "VYNLEX_TRANSLATOR_KEY");
    options.webToken = setting(parser, u"web-token"_s, "CONFERA_WEB_TOKEN");
    const std::array given = {!options.speechKey.isEmpty(), !options.speechRegion.isEmpty(),
                              !options.translatorKey.isEmpty()};
    if (std::ranges::count(given, true) % 3 != 0)
        return tl::unexpected(
            u"The real services need all three of --speech-key, --speech-region and --translator-key."_s);
    if (options.two && options.usesRealServices())
        return tl::unexpected(u"--two plays on the sandbox; leave the keys of the real services out."_s);
    return options;
}

} // namespace host
