#include "chat/SocketMessages.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

QString secondsSince1970()
{
    using namespace std::chrono;
    return QString::number(duration_cast<seconds>(system_clock::now().time_since_epoch()).count());
}

} // namespace

LoginSocketRequest::LoginSocketRequest(const QString &token)
    : SocketRequest{.event = u"login"_s, .data = {{u"token"_s, token}}}
    , jwt(token)
{
}

AmAliveSocketRequest::AmAliveSocketRequest(const QString &jwt)
    : SocketRequest{.event = u"amAlive"_s, .data = {{u"token"_s, jwt.isEmpty() ? u"(null)"_s : jwt}}}
{
}

AckSocketRequest::AckSocketRequest(const QString &receivedEvent)
    : SocketRequest{.event = u"ack"_s,
                    .data = {{u"originalEvent"_s, receivedEvent}, {u"timestamp"_s, secondsSince1970()}}}
    , originalEvent(receivedEvent)
{
}

} // namespace vynlex
