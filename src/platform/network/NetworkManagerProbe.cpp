#include "platform/network/NetworkManagerProbe.h"

#include <dbus/dbus.h>

#include <memory>

namespace vynlex {
namespace {

struct Close {
    void operator()(DBusConnection *connection) const
    {
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }
};
struct Unref {
    void operator()(DBusMessage *message) const { dbus_message_unref(message); }
};
using Connection = std::unique_ptr<DBusConnection, Close>;
using Message = std::unique_ptr<DBusMessage, Unref>;

constexpr int answerTimeoutMs = 5'000;

} // namespace

bool networkManagerAnswers()
{
    const Connection bus(dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr));
    if (!bus)
        return false;
    dbus_connection_set_exit_on_disconnect(bus.get(), FALSE);
    const Message question(dbus_message_new_method_call(
        "org.freedesktop.NetworkManager", "/org/freedesktop/NetworkManager", "org.freedesktop.DBus.Properties", "Get"));
    const char *interface = "org.freedesktop.NetworkManager";
    const char *property = "State";
    if (!question || !dbus_message_append_args(question.get(), DBUS_TYPE_STRING, &interface, DBUS_TYPE_STRING,
                                               &property, DBUS_TYPE_INVALID))
        return false;
    dbus_message_set_auto_start(question.get(), FALSE);
    const Message answer(
        dbus_connection_send_with_reply_and_block(bus.get(), question.get(), answerTimeoutMs, nullptr));
    return answer && dbus_message_get_type(answer.get()) == DBUS_MESSAGE_TYPE_METHOD_RETURN;
}

} // namespace vynlex
