#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <boost/beast/core/rate_policy.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>

namespace sandbox {

/// A TCP connection whose speed can be limited.
using TcpStream =
    boost::beast::basic_stream<boost::asio::ip::tcp, boost::asio::any_io_executor, boost::beast::simple_rate_policy>;
using TlsStream = boost::beast::ssl_stream<TcpStream>;

/// Drops the connection so that the peer sees a reset instead of an end.
void resetConnection(TcpStream &stream);

} // namespace sandbox
