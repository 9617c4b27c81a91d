#pragma once

#include <memory>
#include <utility>

namespace vynlex {

/// Guards callbacks that may outlive the object they belong to. The object holds one `Lifetime` as its last member;
/// a function wrapped by `guard` does nothing once that member is gone.
///
/// The wrapped function must be called on the thread that destroys the object (the main queue, as a rule): the check
/// and the call are not one atomic step.
class Lifetime {
public:
    Lifetime() = default;
    Lifetime(const Lifetime &) = delete;
    Lifetime &operator=(const Lifetime &) = delete;

    template<typename Function> [[nodiscard]] auto guard(Function function) const
    {
        return
            [alive = std::weak_ptr<const char>(m_token), function = std::move(function)](auto &&...arguments) mutable {
                if (!alive.expired())
                    function(std::forward<decltype(arguments)>(arguments)...);
            };
    }

private:
    std::shared_ptr<const char> m_token = std::make_shared<const char>();
};

} // namespace vynlex
