#include "platform/device/Platform.h"

#include "platform/dispatch/Guarded.h"

namespace vynlex {
namespace {

Guarded<std::shared_ptr<const Platform>> &slot()
{
    static auto *const installed = new Guarded<std::shared_ptr<const Platform>>;
    return *installed;
}

} // namespace

std::shared_ptr<const Platform> Platform::current()
{
    return slot().with([](std::shared_ptr<const Platform> &installed) {
        if (!installed)
            installed = std::make_shared<const Platform>(shipped());
        return installed;
    });
}

void Platform::install(Platform platform)
{
    slot().set(std::make_shared<const Platform>(std::move(platform)));
}

} // namespace vynlex
