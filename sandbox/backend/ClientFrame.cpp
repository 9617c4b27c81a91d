#include "sandbox/backend/ClientFrame.h"

#include <boost/json/parse.hpp>

#include <charconv>
#include <cstdint>
#include <string_view>

#include "sandbox/backend/RequestReader.h"

namespace sandbox {

namespace json = boost::json;

namespace {

/// Whole seconds in decimal digits, as a number would be written.
bool isTimestamp(std::string_view text)
{
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    return error == std::errc{} && std::to_string(seconds) == text && seconds >= 0;
}

LoginFrame readLogin(ObjectReader &data)
{
    return {data.text("token")};
}

KeepAliveFrame readKeepAlive(ObjectReader &data)
{
    const json::value *token = data.member("token");
    if (token && (!token->is_string() || token->get_string().empty()))
        data.complain(data.pathOf("token"), "must be a token or \"(null)\"");
    return {};
}

AcknowledgementFrame readAcknowledgement(ObjectReader &data)
{
    AcknowledgementFrame frame{data.text("originalEvent")};
    const json::value *time = data.member("timestamp");
    if (time && (!time->is_string() || !isTimestamp(time->get_string())))
        data.complain(data.pathOf("timestamp"), "must be whole seconds in decimal digits, as a text");
    return frame;
}

ClientFrame readFrame(const json::value &value, FieldErrors &errors)
{
    ObjectReader frame(value, "", errors);
    const std::string event = frame.text("event");
    const json::value *data = frame.member("data");
    if (!errors.empty())
        return {};
    ObjectReader inner(*data, "data", errors);
    if (event == "login")
        return readLogin(inner);
    if (event == "amAlive")
        return readKeepAlive(inner);
    if (event == "ack")
        return readAcknowledgement(inner);
    frame.complain(frame.pathOf("event"), "is none of login, amAlive, ack");
    return {};
}

} // namespace

tl::expected<ClientFrame, std::string> readClientFrame(const WebSocketMessage &message)
{
    if (!message.binary)
        return tl::unexpected(std::string("a text frame; a client's frames are binary"));
    boost::system::error_code error;
    const json::value value = json::parse(message.data, error);
    if (error)
        return tl::unexpected("not JSON: " + error.message());
    FieldErrors errors;
    ClientFrame frame = readFrame(value, errors);
    if (errors.empty())
        return frame;
    return tl::unexpected(errors.front().path + (errors.front().path.empty() ? "" : ": ") + errors.front().message);
}

} // namespace sandbox
