#include "tests/faults/Phone.h"

#include "api/VLNetworkClient.h"

using namespace Qt::StringLiterals;
using namespace vynlex;

namespace faults {

QString userId(int number)
{
    return u"65b20a005eed0000000000%1"_s.arg(number, 2, 16, QLatin1Char('0'));
}

User user(int number)
{
    return {userId(number), u"Person %1"_s.arg(number), {}, {}};
}

Phone::Phone(Laboratory &laboratory, int person, VLApiServer deployment, const QString &region)
    : m_laboratory(laboratory)
    , m_requests([&] {
        auto requests = std::make_shared<int>();
        laboratory.useNext(m_microphone, requests);
        return requests;
    }())
    , m_person(person)
{
    const auto keys = examples::SandboxProcess::configuration();
    api.translatedConfig = VLTranslationConfig(keys.speechKey(), region, keys.textTranslationKey());
    api.currentEnv = deployment;
    api.networkClient->serverEnvironment = deployment;
}

Phone::~Phone() = default;

void Phone::setUp()
{
    if (!m_home->isViewLoaded())
        m_host->present(m_home, Animated::No);
    m_home->webToken = "web-token-"_L1 + userId(m_person);
    m_home->fetchJWToken([home = std::weak_ptr(m_home)] {
        if (const auto screen = home.lock())
            screen->loadData();
    });
}

std::shared_ptr<ChatVC> Phone::openChat(int withPerson)
{
    m_laboratory.useNext(m_microphone, m_requests);
    const auto screen = std::make_shared<ChatVC>(chat, api, languages);
    screen->userModel = user(withPerson);
    m_home->present(screen, Animated::No);
    return screen;
}

std::shared_ptr<ConversationTranslateVC> Phone::openConversation()
{
    m_laboratory.useNext(m_microphone, m_requests);
    const auto screen = std::make_shared<ConversationTranslateVC>(api, languages);
    m_home->present(screen, Animated::No);
    return screen;
}

} // namespace faults
