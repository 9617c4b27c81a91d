#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <utility>

namespace vynlex {

// Not in the header: every host makes one, also a host that has its views in QML alone, and so the linker keeps the
// library.
VLTranslationConfig::VLTranslationConfig(QString speechKey, QString speechRegion, QString textTranslationKey)
    : m_speechKey(std::move(speechKey))
    , m_speechRegion(std::move(speechRegion))
    , m_textTranslationKey(std::move(textTranslationKey))
{
}

} // namespace vynlex
