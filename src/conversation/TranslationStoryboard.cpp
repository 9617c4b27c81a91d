#include "conversation/TranslationStoryboard.h"

#include "conversation/ConversationTranslateVC.h"
#include "conversation/TranslateInfoViewController.h"

using namespace Qt::StringLiterals;

namespace vynlex {

const Storyboard &translationStoryboard()
{
    static const Storyboard storyboard(
        u"Translation"_s,
        {
            {u"ConversationTranslateVC"_s, [] { return std::make_shared<ConversationTranslateVC>(); }},
            {u"TranslateInfoViewController"_s, [] { return std::make_shared<TranslateInfoViewController>(); }},
        });
    return storyboard;
}

} // namespace vynlex
