#include "conversation/TranslateInfoViewController.h"

#include "platform/ui/ViewSource.h"

using namespace Qt::StringLiterals;

namespace vynlex {

QUrl TranslateInfoViewController::viewSource() const
{
    return viewInModule(u"Conversation"_s, u"TranslateInfoViewController"_s);
}

} // namespace vynlex
