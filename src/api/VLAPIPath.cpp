#include "api/VLAPIPath.h"

using namespace Qt::StringLiterals;

namespace vynlex {

QString VLAPIPath::apiPathString() const
{
    switch (m_case) {
    case Case::getChatThreadMessages:
    case Case::sendChatMessage:
        return "chat/thread/"_L1 + m_threadId + "/messages"_L1;
    case Case::getPrivateChatThread:
        return u"chat/thread"_s;
    case Case::uploadContacts:
        return u"contacts/append"_s;
    case Case::getContacts:
        return u"contacts/all"_s;
    case Case::getJWTToken:
        return u"externalservertp/get-token"_s;
    case Case::getRecentContacts:
        return u"calls"_s;
    }
    Q_UNREACHABLE();
}

} // namespace vynlex
