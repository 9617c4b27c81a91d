#pragma once

#include <VynlexTranslationSDK/VynlexExport.h>

namespace vynlex {

/// Is told when the messages of the open chat have changed.
class VYNLEX_EXPORT VLChatDeleagate {
public:
    virtual ~VLChatDeleagate() = default;

    /// Main thread, within the change.
    virtual void refreshChatData() = 0;
};

} // namespace vynlex
