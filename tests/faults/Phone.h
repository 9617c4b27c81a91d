#pragma once

#include <memory>

#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/SocketManager.h"
#include "conversation/ConversationTranslateVC.h"
#include "language/LanguageTranslation.h"
#include "screens/ChatVC.h"
#include "screens/HomeVC.h"
#include "tests/faults/Laboratory.h"

namespace faults {

/// The person with this number in the sandbox's seed, 1 to `people`.
constexpr int people = 43;
QString userId(int number);
vynlex::User user(int number);

/// One person's kit: what a process has once, here once more.
class Phone {
public:
    /// `region` of the speech service, and with `deployment` of the backend: routes that faults can be told apart by.
    Phone(Laboratory &laboratory, int person, vynlex::VLApiServer deployment,
          const QString &region = QStringLiteral("centralindia"));
    ~Phone();

    /// As the host does it: exchanges the person's web token, and loads the home screen when that has gone well.
    void setUp();
    [[nodiscard]] bool isSignedIn() const { return !api.currentJWT.isEmpty(); }
    [[nodiscard]] bool isQuiet() const { return *m_requests == 0; } ///< No request to the backend is under way.

    vynlex::HomeVC &home() { return *m_home; }
    std::shared_ptr<vynlex::ChatVC> openChat(int withPerson);
    std::shared_ptr<vynlex::ConversationTranslateVC> openConversation();
    [[nodiscard]] bool showsHomeAlone() const { return !m_home->presentedViewController(); }

    /// Says the laboratory's sentence.
    void say() { m_microphone.say(Laboratory::sentence(), m_laboratory.recording()); }

private:
    Laboratory &m_laboratory;
    vynlex::WavMicrophone m_microphone{vynlex::WavMicrophone::Pace::AsFastAsAccepted};
    const std::shared_ptr<int> m_requests;
    const int m_person;

public:
    vynlex::VLApiManager api;
    vynlex::LanguageTranslation languages;
    vynlex::ChatViewModel chat{api};
    vynlex::SocketManager sockets{chat};

private:
    const std::shared_ptr<vynlex::ViewController> m_host = std::make_shared<vynlex::ViewController>();
    const std::shared_ptr<vynlex::HomeVC> m_home = std::make_shared<vynlex::HomeVC>(api, languages, sockets);
};

} // namespace faults
