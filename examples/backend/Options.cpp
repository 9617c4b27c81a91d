#include "Options.h"

#include <QCommandLineParser>

#include <array>

#include "CommandLine.h"
#include "SandboxProcess.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace {

/// Of the person whom the sandbox's seed tells most about.
const QString webTokenOfTheSeed = u"web-token-65b20a005eed000000000001"_s;
/// With whom that person has talked most.
const QString partnerOfTheSeed = u"65b20a005eed000000000002"_s;

constexpr std::array environments = {
    std::pair{"staging"_L1, VLApiServer::staging},
    std::pair{"preStage"_L1, VLApiServer::preStage},
    std::pair{"rc"_L1, VLApiServer::rc},
    std::pair{"production"_L1, VLApiServer::production},
    std::pair{"tenantGroups"_L1, VLApiServer::tenantGroups},
    std::pair{"demo"_L1, VLApiServer::demo},
};

/// By name, or by host name.
std::optional<VLApiServer> environmentNamed(const QString &name)
{
    for (const auto &[known, server] : environments)
        if (name.compare(known, Qt::CaseInsensitive) == 0)
            return VLApiServer(server);
    return VLApiServer::fromRawValue(name);
}

} // namespace

tl::expected<Options, QString> parseOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Exchanges a web token and shows its user's contacts, recent calls, and one conversation. Without --env "
        "everything comes from a local stand-in for the backend."_s);
    parser.addOptions({
        {u"env"_s, u"A real deployment: staging, preStage, rc, production, tenantGroups, demo, or its host name."_s,
         u"NAME"_s},
        {u"web-token"_s, u"Whose account (or VYNLEX_WEB_TOKEN); needed with --env."_s, u"TOKEN"_s},
        {u"contacts"_s,
         u"Uploads an address book first: JSON, {\"deviceContacts\": [{\"name\", \"lname\", \"phoneNumbers\": []}]} "
         "(default without --env: the stand-in's own)."_s,
         u"FILE"_s},
        {u"with"_s, u"The other person of the conversation, by user id (default: the first contact)."_s, u"USERID"_s},
        {u"send"_s,
         u"Sends a message in that conversation first; the stand-in also shows what the other person hears of it."_s,
         u"TEXT"_s},
        {u"sandbox"_s, u"The confera-sandbox program (default: the one of this build)."_s, u"PROGRAM"_s},
    });
    if (const auto parsed = examples::parse(parser, arguments); !parsed)
        return tl::unexpected(parsed.error());

    Options options;
    options.webToken =
        parser.isSet(u"web-token"_s) ? parser.value(u"web-token"_s) : qEnvironmentVariable("VYNLEX_WEB_TOKEN");
    if (parser.isSet(u"env"_s)) {
        options.environment = environmentNamed(parser.value(u"env"_s));
        if (!options.environment)
            return tl::unexpected(u"\"%1\" is none of the deployments. Try --help."_s.arg(parser.value(u"env"_s)));
        if (options.webToken.isEmpty())
            return tl::unexpected(u"A real deployment needs --web-token."_s);
    } else if (options.webToken.isEmpty()) {
        options.webToken = webTokenOfTheSeed;
        options.partner = partnerOfTheSeed;
    }
    if (parser.isSet(u"contacts"_s))
        options.contactsFile = parser.value(u"contacts"_s);
    else if (!options.environment)
        options.contactsFile = QStringLiteral(EXAMPLE_CONTACTS_FILE);
    if (parser.isSet(u"with"_s))
        options.partner = parser.value(u"with"_s);
    options.text = parser.value(u"send"_s);
    options.sandboxProgram =
        parser.isSet(u"sandbox"_s) ? parser.value(u"sandbox"_s) : examples::SandboxProcess::defaultProgram();
    return options;
}
