#pragma once

#include <boost/asio/async_result.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/compose.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/websocket/teardown.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "sandbox/server/Streams.h"

namespace sandbox {

/// The layer between a WebSocket and its TLS stream. It can swallow what the WebSocket library sends of its own accord:
/// pongs only, or everything.
///
/// Relies on two habits of the library: the first bytes handed to a write at a frame's beginning hold the complete
/// frame header, and frames are written one after the other.
class FrameFilter {
public:
    using executor_type = TlsStream::executor_type;
    using next_layer_type = TlsStream;

    explicit FrameFilter(TlsStream &next)
        : m_next(next)
    {
    }

    executor_type get_executor() noexcept { return m_next.get_executor(); }
    TlsStream &next_layer() noexcept { return m_next; }
    const TlsStream &next_layer() const noexcept { return m_next; }

    /// The answer to the upgrade is out: frames from now on.
    void beginFrames() { m_pastHandshake = true; }

    void dropPongs() { m_dropPongs = true; }
    void dropEverything() { m_dropEverything = true; }

    template<class Buffers, class Handler> auto async_read_some(const Buffers &buffers, Handler &&handler)
    {
        return m_next.async_read_some(buffers, std::forward<Handler>(handler));
    }

    template<class Buffers, class Handler> auto async_write_some(const Buffers &buffers, Handler &&handler)
    {
        namespace asio = boost::asio;
        using Signature = void(boost::system::error_code, std::size_t);
        const std::size_t offered = asio::buffer_size(buffers);
        const bool dropped = drops(buffers);
        return asio::async_compose<Handler, Signature>(
            [this, buffers, offered, dropped, started = false](auto &self, boost::system::error_code error = {},
                                                               std::size_t written = 0) mutable {
                if (std::exchange(started, true)) {
                    self.complete(error, dropped ? offered : account(written));
                } else if (dropped) {
                    account(offered);
                    asio::post(m_next.get_executor(), std::move(self));
                } else {
                    m_next.async_write_some(buffers, std::move(self));
                }
            },
            handler, m_next);
    }

private:
    /// Looks at the frame header when `buffers` begin a frame.
    template<class Buffers> bool drops(const Buffers &buffers)
    {
        if (m_frameBytesLeft > 0)
            return m_dropFrame;
        std::array<std::uint8_t, 10> header{};
        const std::size_t size = boost::asio::buffer_copy(boost::asio::buffer(header), buffers);
        if (!m_pastHandshake || size < 2)
            return false;
        std::uint64_t length = header[1] & 0x7FU; // the server's frames are not masked
        std::uint64_t headerSize = 2;
        if (length >= 126) {
            headerSize = length == 126 ? 4 : 10;
            length = 0;
            for (std::size_t i = 2; i < headerSize; ++i)
                length = length << 8U | header[i];
        }
        m_frameBytesLeft = headerSize + length;
        constexpr std::uint8_t pong = 0x8A;
        m_dropFrame = m_dropEverything || (m_dropPongs && header[0] == pong);
        return m_dropFrame;
    }

    std::size_t account(std::size_t written)
    {
        m_frameBytesLeft -= std::min<std::uint64_t>(written, m_frameBytesLeft);
        return written;
    }

    TlsStream &m_next;
    std::uint64_t m_frameBytesLeft = 0;
    bool m_dropFrame = false;
    bool m_pastHandshake = false;
    bool m_dropPongs = false;
    bool m_dropEverything = false;
};

template<class Handler> void async_teardown(boost::beast::role_type role, FrameFilter &filter, Handler &&handler)
{
    using boost::beast::websocket::async_teardown;
    async_teardown(role, filter.next_layer(), std::forward<Handler>(handler));
}

} // namespace sandbox
