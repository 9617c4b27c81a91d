#include "api/VLApiManager.h"

namespace vynlex {

VLApiManager &VLApiManager::shared()
{
    static auto *const instance = new VLApiManager;
    return *instance;
}

} // namespace vynlex
