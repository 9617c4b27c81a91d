#include "platform/network/NetlinkReachabilitySource.h"

#include <linux/rtnetlink.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/network/KernelNetwork.h"

namespace vynlex {

/// Owned by the source and by the thread, so that stopping waits for nothing.
struct NetlinkReachabilitySource::Watch {
    int socket = -1;
    int wakeUp = -1;
    std::atomic<bool> stopped = false;
    Changed changed;

    Watch() = default;
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;
    ~Watch()
    {
        for (const int file : {socket, wakeUp})
            if (file >= 0)
                close(file);
    }

    bool open()
    {
        socket = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
        wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
        sockaddr_nl address{};
        address.nl_family = AF_NETLINK;
        address.nl_groups =
            RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
        return socket >= 0 && wakeUp >= 0 &&
               bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }

    void stop()
    {
        stopped = true;
        const std::uint64_t one = 1;
        (void)!write(wakeUp, &one, sizeof one); // fails only when it is awake already
    }

    void run()
    {
        pthread_setname_np(pthread_self(), "reachability");
        std::optional<ReachabilityFlags> told;
        while (!stopped) {
            std::array<pollfd, 2> files{pollfd{socket, POLLIN, 0}, pollfd{wakeUp, POLLIN, 0}};
            if (poll(files.data(), files.size(), -1) < 0 && errno != EINTR)
                return;
            if (stopped || !drain())
                continue;
            const auto network = KernelNetwork::read();
            if (!network || told == flagsOf(*network) || stopped)
                continue; // What cannot be read now is read after the next change.
            told = flagsOf(*network);
            changed(*told);
        }
    }

    /// False when there was nothing. What the messages say does not matter, and neither does it if some were lost.
    [[nodiscard]] bool drain() const
    {
        std::array<char, 8192> buffer{};
        for (bool any = false;; any = true) {
            if (recv(socket, buffer.data(), buffer.size(), MSG_DONTWAIT) < 0 && errno != ENOBUFS)
                return any;
        }
    }
};

NetlinkReachabilitySource::NetlinkReachabilitySource() = default;

NetlinkReachabilitySource::~NetlinkReachabilitySource()
{
    NetlinkReachabilitySource::stop();
}

tl::expected<void, ReachabilitySource::StartFailure> NetlinkReachabilitySource::start(Changed changed)
{
    stop();
    auto watch = std::make_shared<Watch>();
    watch->changed = std::move(changed);
    if (!watch->open())
        return tl::unexpected(StartFailure::Callback);
    try {
        std::thread([watch] { watch->run(); }).detach();
    } catch (const std::system_error &) {
        return tl::unexpected(StartFailure::Queue);
    }
    m_watch.set(std::move(watch));
    return {};
}

void NetlinkReachabilitySource::stop()
{
    if (const auto watch = m_watch.exchange(nullptr))
        watch->stop();
}

tl::expected<ReachabilityFlags, QString> NetlinkReachabilitySource::currentFlags()
{
    return KernelNetwork::read().map([](const KernelNetwork &network) { return flagsOf(network); });
}

} // namespace vynlex
