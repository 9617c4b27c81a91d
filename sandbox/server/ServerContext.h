#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <type_traits>
#include <utility>

#include "sandbox/server/FaultBoard.h"
#include "sandbox/server/RequestLog.h"
#include "sandbox/server/Router.h"

namespace sandbox {

/// What a service gets from the server it is added to. Handlers run on the server's one I/O thread; whatever takes
/// longer than a few milliseconds belongs to `offload`.
struct ServerContext {
    Router router;
    FaultBoard faults;
    RequestLog log;
    boost::asio::thread_pool &workers;
    Router control = {}; ///< of the control port: what a service tells of itself goes under the host "localhost"

    /// Runs `work` on a worker thread; the caller goes on, on its own executor, with what it returned or threw. What
    /// `work` refers to must outlive it: it is not interrupted when the connection of the caller ends.
    template<class Work> boost::asio::awaitable<std::invoke_result_t<Work>> offload(Work work)
    {
        using Result = std::invoke_result_t<Work>;
        co_return co_await boost::asio::co_spawn(
            workers, [](Work inner) -> boost::asio::awaitable<Result> { co_return inner(); }(std::move(work)),
            boost::asio::use_awaitable);
    }
};

} // namespace sandbox
