#include <VynlexTranslationSDK/VLApiServer.h>

#include <array>

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

struct Deployment {
    VLApiServer::Case which;
    QLatin1StringView host;
    QLatin1StringView socketHost;
};

constexpr std::array deployments{
    Deployment{VLApiServer::staging, "staging.confera.example"_L1, "socket.staging.confera.example"_L1},
    Deployment{VLApiServer::preStage, "prestage.confera.example"_L1, "socket.prestage.confera.example"_L1},
    Deployment{VLApiServer::rc, "rc.confera.example"_L1, "socket.rc.confera.example"_L1},
    Deployment{VLApiServer::production, "app.confera.example"_L1, "socket.app.confera.example"_L1},
    Deployment{VLApiServer::tenantGroups, "groups.confera.example"_L1, "socket.groups.confera.example"_L1},
    Deployment{VLApiServer::demo, "demo.confera.example"_L1, "socket.demo.confera.example"_L1},
};

constexpr const Deployment &deploymentOf(VLApiServer::Case which)
{
    return deployments.at(static_cast<std::size_t>(which));
}

constexpr bool rowsAreInOrder()
{
    for (std::size_t i = 0; i < deployments.size(); ++i) {
        if (static_cast<std::size_t>(deployments.at(i).which) != i)
            return false;
    }
    return true;
}
static_assert(rowsAreInOrder());

} // namespace

std::optional<VLApiServer> VLApiServer::fromRawValue(const QString &text)
{
    for (const Deployment &deployment : deployments) {
        if (deployment.host == text)
            return deployment.which;
    }
    return std::nullopt;
}

QString VLApiServer::rawValue() const
{
    return deploymentOf(m_case).host;
}

QString VLApiServer::socketHost() const
{
    return deploymentOf(m_case).socketHost;
}

QString VLApiServer::getApiUrl() const
{
    return "https://"_L1 + deploymentOf(m_case).host + "/api"_L1;
}

} // namespace vynlex
