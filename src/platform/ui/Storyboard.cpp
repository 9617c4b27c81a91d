#include "platform/ui/Storyboard.h"

#include "platform/dispatch/FatalError.h"

using namespace Qt::StringLiterals;

namespace vynlex {

Storyboard::Storyboard(QString name, Scenes scenes)
    : m_name(std::move(name))
    , m_scenes(std::move(scenes))
{
}

std::shared_ptr<ViewController> Storyboard::instantiateViewController(const QString &identifier) const
{
    const auto scene = m_scenes.find(identifier);
    if (scene == m_scenes.end())
        fatalError(u"The storyboard \"%1\" has no scene \"%2\"."_s.arg(m_name, identifier));
    return scene->second();
}

} // namespace vynlex
