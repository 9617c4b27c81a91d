#include "platform/network/KernelNetwork.h"

#include <linux/if_addr.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>
#include <tuple>
#include <utility>

namespace vynlex {
namespace {

using Link = KernelNetwork::Link;
using Address = KernelNetwork::Address;
using DefaultRoute = KernelNetwork::DefaultRoute;

QString lastError(const char *step)
{
    return QStringLiteral("The kernel does not tell of its network (%1: %2).")
        .arg(QLatin1String(step), QString::fromLocal8Bit(std::strerror(errno)));
}

/// The attributes of a message, each copied to where it can be read whatever its alignment.
class Attributes {
public:
    Attributes(const void *first, std::size_t size)
        : m_bytes(static_cast<const char *>(first), static_cast<qsizetype>(size))
    {
    }

    /// Empty when there is none of this type.
    [[nodiscard]] QByteArray bytes(unsigned type) const
    {
        QByteArray found;
        forEach([&](unsigned attribute, const QByteArray &value) {
            if (attribute == type)
                found = value;
        });
        return found;
    }

    [[nodiscard]] QByteArray text(unsigned type) const
    {
        const QByteArray value = bytes(type);
        return value.left(static_cast<qsizetype>(qstrnlen(value.constData(), static_cast<quint32>(value.size()))));
    }

    [[nodiscard]] std::uint32_t number(unsigned type, std::uint32_t otherwise) const
    {
        const QByteArray value = bytes(type);
        std::uint32_t number = otherwise;
        if (value.size() == sizeof number)
            std::memcpy(&number, value.constData(), sizeof number);
        return number;
    }

    void forEach(const std::function<void(unsigned, const QByteArray &)> &visit) const
    {
        for (qsizetype at = 0; at + qsizetype(sizeof(rtattr)) <= m_bytes.size();) {
            rtattr header{};
            std::memcpy(&header, m_bytes.constData() + at, sizeof header);
            if (header.rta_len < sizeof header || at + header.rta_len > m_bytes.size())
                return;
            visit(header.rta_type & NLA_TYPE_MASK,
                  m_bytes.mid(at + qsizetype(sizeof header), header.rta_len - qsizetype(sizeof header)));
            at += RTA_ALIGN(header.rta_len);
        }
    }

private:
    QByteArray m_bytes;
};

/// The fixed part of a message, then its attributes.
template<typename Header> std::pair<Header, Attributes> split(const QByteArray &payload)
{
    Header header{};
    std::memcpy(&header, payload.constData(), std::min(sizeof header, static_cast<std::size_t>(payload.size())));
    const qsizetype begin = std::min<qsizetype>(NLMSG_ALIGN(sizeof header), payload.size());
    return {header, Attributes(payload.constData() + begin, static_cast<std::size_t>(payload.size() - begin))};
}

/// One question after the other to the kernel.
class RouteSocket {
public:
    RouteSocket()
        : m_socket(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE))
    {
        const timeval patience{2, 0}; // the kernel answers at once or not at all
        setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    ~RouteSocket()
    {
        if (m_socket >= 0)
            close(m_socket);
    }
    RouteSocket(const RouteSocket &) = delete;
    RouteSocket &operator=(const RouteSocket &) = delete;

    /// Visits the payload of every message of `answerType`.
    tl::expected<void, QString> dump(std::uint16_t requestType, std::uint16_t answerType, unsigned char family,
                                     const std::function<void(const QByteArray &)> &visit)
    {
        if (m_socket < 0)
            return tl::unexpected(lastError("socket"));
        // The longest of the fixed parts; each begins with the family.
        struct {
            nlmsghdr header;
            ifinfomsg body;
        } request{};
        request.header.nlmsg_len = sizeof request;
        request.header.nlmsg_type = requestType;
        request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
        request.header.nlmsg_seq = ++m_sequence;
        request.body.ifi_family = family;
        if (send(m_socket, &request, sizeof request, 0) != ssize_t(sizeof request))
            return tl::unexpected(lastError("send"));

        while (true) {
            const ssize_t size = recv(m_socket, m_buffer.data(), m_buffer.size(), 0);
            if (size < 0 && errno == EINTR)
                continue;
            if (size <= 0)
                return tl::unexpected(lastError("recv"));
            for (std::size_t at = 0; at + sizeof(nlmsghdr) <= static_cast<std::size_t>(size);) {
                nlmsghdr header{};
                std::memcpy(&header, m_buffer.data() + at, sizeof header);
                if (header.nlmsg_len < sizeof header || at + header.nlmsg_len > static_cast<std::size_t>(size))
                    break;
                const QByteArray payload(m_buffer.data() + at + NLMSG_HDRLEN,
                                         static_cast<qsizetype>(header.nlmsg_len) - NLMSG_HDRLEN);
                at += NLMSG_ALIGN(header.nlmsg_len);
                if (header.nlmsg_seq != m_sequence)
                    continue; // of a question that was given up
                if (header.nlmsg_type == NLMSG_DONE)
                    return {};
                if (header.nlmsg_type == NLMSG_ERROR) {
                    std::memcpy(&errno, payload.constData(), std::min<std::size_t>(sizeof errno, payload.size()));
                    errno = -errno;
                    return tl::unexpected(lastError("dump"));
                }
                if (header.nlmsg_type == answerType)
                    visit(payload);
            }
        }
    }

private:
    int m_socket;
    std::uint32_t m_sequence = 0;
    std::array<char, 65536> m_buffer{};
};

Link linkOf(const QByteArray &payload)
{
    const auto [header, attributes] = split<ifinfomsg>(payload);
    const QByteArray info = attributes.bytes(IFLA_LINKINFO);
    return {header.ifi_index, attributes.text(IFLA_IFNAME),
            Attributes(info.constData(), static_cast<std::size_t>(info.size())).text(IFLA_INFO_KIND),
            (header.ifi_flags & IFF_LOOPBACK) != 0,
            (header.ifi_flags & IFF_UP) != 0 && (header.ifi_flags & IFF_RUNNING) != 0};
}

void addAddress(const QByteArray &payload, std::vector<Address> &addresses)
{
    const auto [header, attributes] = split<ifaddrmsg>(payload);
    const std::uint32_t flags = attributes.number(IFA_FLAGS, header.ifa_flags);
    if (header.ifa_scope < RT_SCOPE_LINK && (flags & (IFA_F_TENTATIVE | IFA_F_DADFAILED)) == 0)
        addresses.push_back({static_cast<int>(header.ifa_index), header.ifa_family});
}

void addDefaultRoute(const QByteArray &payload, std::vector<DefaultRoute> &routes)
{
    const auto [header, attributes] = split<rtmsg>(payload);
    const std::uint32_t table = attributes.number(RTA_TABLE, header.rtm_table);
    if (header.rtm_dst_len != 0 || table == RT_TABLE_LOCAL || (header.rtm_flags & RTM_F_CLONED) != 0)
        return;
    const DefaultRoute route{0, header.rtm_family, table == RT_TABLE_MAIN, attributes.number(RTA_PRIORITY, 0)};
    if (header.rtm_type == RTN_UNREACHABLE || header.rtm_type == RTN_BLACKHOLE || header.rtm_type == RTN_PROHIBIT)
        routes.push_back(route);
    if (header.rtm_type != RTN_UNICAST)
        return;
    const auto add = [&](int linkIndex, unsigned flags) {
        if (linkIndex > 0 && (flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)) == 0) {
            routes.push_back(route);
            routes.back().linkIndex = linkIndex;
        }
    };
    add(static_cast<int>(attributes.number(RTA_OIF, 0)), header.rtm_flags);
    const QByteArray hops = attributes.bytes(RTA_MULTIPATH);
    for (qsizetype at = 0; at + qsizetype(sizeof(rtnexthop)) <= hops.size();) {
        rtnexthop hop{};
        std::memcpy(&hop, hops.constData() + at, sizeof hop);
        if (hop.rtnh_len < sizeof hop)
            return;
        add(hop.rtnh_ifindex, hop.rtnh_flags);
        at += RTNH_ALIGN(hop.rtnh_len);
    }
}

} // namespace

tl::expected<KernelNetwork, QString> KernelNetwork::read()
{
    KernelNetwork network;
    RouteSocket kernel;
    return kernel
        .dump(RTM_GETLINK, RTM_NEWLINK, AF_UNSPEC,
              [&](const QByteArray &payload) { network.links.push_back(linkOf(payload)); })
        .and_then([&] {
            return kernel.dump(RTM_GETADDR, RTM_NEWADDR, AF_UNSPEC,
                               [&](const QByteArray &payload) { addAddress(payload, network.addresses); });
        })
        .and_then([&] {
            return kernel.dump(RTM_GETROUTE, RTM_NEWROUTE, AF_UNSPEC,
                               [&](const QByteArray &payload) { addDefaultRoute(payload, network.defaultRoutes); });
        })
        .map([&] { return std::move(network); });
}

bool isCellular(const Link &link)
{
    static const std::array<QByteArray, 3> kinds{"wwan", "rmnet", "mhi_net"};
    static const std::array<QByteArray, 5> prefixes{"ww", "rmnet", "ccmni", "v4-rmnet", "v4-ccmni"};
    return std::find(kinds.begin(), kinds.end(), link.kind) != kinds.end() ||
           std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const QByteArray &prefix) { return link.name.startsWith(prefix); });
}

ReachabilityFlags flagsOf(const KernelNetwork &network)
{
    const auto usableLink = [&](const DefaultRoute &route) -> const Link * {
        const auto link = std::find_if(network.links.begin(), network.links.end(),
                                       [&](const Link &l) { return l.index == route.linkIndex; });
        const bool addressed =
            std::any_of(network.addresses.begin(), network.addresses.end(), [&](const Address &address) {
                return address.linkIndex == route.linkIndex && address.family == route.family;
            });
        const bool usable = link != network.links.end() && !link->loopback && link->running && addressed;
        return usable ? &*link : nullptr;
    };
    ReachabilityFlags flags = 0;
    bool cellular = true;
    for (const int family : {AF_INET, AF_INET6}) {
        // The main table goes before others, whose rules are not looked at; then the lowest metric.
        std::optional<std::tuple<bool, std::uint32_t>> bestRank;
        const Link *best = nullptr;
        for (const DefaultRoute &route : network.defaultRoutes) {
            const Link *const link = usableLink(route);
            const std::tuple rank(!route.mainTable, route.metric);
            if (route.family != family || (!link && route.linkIndex != 0) || (bestRank && *bestRank <= rank))
                continue;
            bestRank = rank;
            best = link;
        }
        if (best) {
            flags |= reachabilityFlag::reachable;
            cellular = cellular && isCellular(*best);
        }
    }
    return flags != 0 && cellular ? flags | reachabilityFlag::wwan : flags;
}

} // namespace vynlex
