#include <QStringDecoder>

#include <algorithm>
#include <array>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include "platform/net/BeastConnection.h"
#include "tests/fuzz/FuzzTargets.h"
#include "tests/fuzz/Property.h"
#include "tests/platform/net/Frames.h"

// An input that begins with "f" is frames, after a correct upgrade; else it is the whole of what the server says, "@"
// for the accept key. The client's loop and the server's end take turns on this thread, over loopback.

namespace vynlex::fuzz {
namespace {

class Listener {
public:
    Listener()
        : m_descriptor(::socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *const any = reinterpret_cast<sockaddr *>(&address);
        if (::bind(m_descriptor, any, size) != 0 || ::listen(m_descriptor, 16) != 0 ||
            ::getsockname(m_descriptor, any, &size) != 0)
            qFatal("no loopback");
        m_port = ntohs(address.sin_port);
    }

    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }
    [[nodiscard]] int accept() const { return ::accept(m_descriptor, nullptr, nullptr); }

private:
    int m_descriptor;
    quint16 m_port = 0;
};

void runUntilReadable(boost::asio::io_context &loop, int descriptor)
{
    pollfd watched{descriptor, POLLIN, 0};
    while (::poll(&watched, 1, 0) != 1)
        loop.run_one_for(std::chrono::milliseconds(1));
}

/// What the client tells of a server that says `bytes`, in two pieces, the first of `split` bytes.
std::vector<WebSocketEvent> eventsOf(const QByteArray &bytes, qsizetype split)
{
    static const Listener listener;
    static boost::asio::io_context loop{1}; // for all, because it has a thread of its own that looks names up
    loop.restart();
    const auto client = std::make_shared<BeastConnection>(loop);
    std::vector<WebSocketEvent> events;
    client->start({QUrl(QStringLiteral("ws://127.0.0.1:%1/").arg(listener.port())), {}},
                  [&](const WebSocketEvent &event) { events.push_back(event); });
    client->open({});
    runUntilReadable(loop, listener.descriptor());
    Peer server(listener.accept(), nullptr);
    runUntilReadable(loop, server.descriptor());

    QByteArray said = bytes;
    if (bytes.startsWith('f')) {
        upgrade(server);
        said = bytes.mid(1);
    } else {
        said.replace('@', acceptKey(server.readHead()));
    }
    loop.poll();
    server.write(said.left(split));
    loop.poll();
    server.write(said.mid(split));
    loop.poll();
    server.closeForSending();
    server.resetAtEnd(); // leaves no port behind
    loop.run_for(std::chrono::seconds(20));
    return events;
}

template<typename... Kinds> bool isOneOf(const WebSocketEvent &event)
{
    return (std::holds_alternative<Kinds>(event) || ...);
}

void requireContract(const std::vector<WebSocketEvent> &events)
{
    using namespace websocket;
    const auto ends = [](const WebSocketEvent &event) {
        return isOneOf<Disconnected, PeerClosed, Error, Cancelled>(event);
    };
    require(std::ranges::count_if(events, ends) == 1 && ends(events.back()), "a client ends once, and last");
    for (std::size_t i = 0; i < events.size(); ++i) {
        require((i == 0) == std::holds_alternative<Connected>(events[i]) || ends(events[i]), "first it is connected");
        if (const auto *text = std::get_if<Text>(&events[i])) {
            require(QByteArray(text->utf8).isValidUtf8(), "a text is UTF-8");
            require(text->utf8.size() <= WebSocketClient::maximumMessageBytes, "a message has its limit");
        }
    }
}

/// What tells two runs apart; the words of an error may differ.
QByteArrayList tellingOf(const std::vector<WebSocketEvent> &events)
{
    QByteArrayList all;
    for (const WebSocketEvent &event : events) {
        QByteArray telling = QByteArray::number(static_cast<int>(event.index()));
        if (const auto *text = std::get_if<websocket::Text>(&event))
            telling += text->utf8;
        else if (const auto *binary = std::get_if<websocket::Binary>(&event))
            telling += binary->data;
        else if (const auto *closed = std::get_if<websocket::Disconnected>(&event))
            telling += QByteArray::number(closed->code) + closed->reason.toUtf8();
        all.append(telling);
    }
    return all;
}

} // namespace

void websocket(const QByteArray &bytes)
{
    const auto whole = eventsOf(bytes, bytes.size());
    requireContract(whole);
    // Anywhere, but always in the same place for the same input.
    const auto inPieces =
        eventsOf(bytes, bytes.isEmpty() ? 0 : static_cast<unsigned char>(bytes.back()) % bytes.size());
    requireContract(inPieces);
    require(tellingOf(whole) == tellingOf(inPieces), "how the network cuts a stream does not matter");
}

} // namespace vynlex::fuzz
