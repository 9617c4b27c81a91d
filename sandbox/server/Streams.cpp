#include "sandbox/server/Streams.h"

namespace sandbox {

void resetConnection(TcpStream &stream)
{
    boost::system::error_code ignored; // a connection that is gone already needs no reset
    stream.socket().set_option(boost::asio::socket_base::linger(true, 0), ignored);
    stream.socket().close(ignored);
}

} // namespace sandbox
