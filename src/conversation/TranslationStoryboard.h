#pragma once

#include "platform/ui/Storyboard.h"

namespace vynlex {

/// The storyboard "Translation": "ConversationTranslateVC" and "TranslateInfoViewController".
[[nodiscard]] const Storyboard &translationStoryboard();

} // namespace vynlex
