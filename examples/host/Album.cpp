#include "Album.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace host {

Album::Album(Stage &stage, const QString &folder)
    : m_stage(stage)
    , m_folder(folder)
{
}

void Album::take(const QString &name)
{
    const QString file = name + ".png"_L1;
    if (const auto written = m_stage.takePicture(path(file)); !written && m_problem.isEmpty())
        m_problem = written.error();
    m_names.push_back(file);
}

void Album::settleAndTake(const QString &name)
{
    m_stage.settle();
    take(name);
}

tl::expected<std::vector<QString>, QString> Album::taken()
{
    auto names = std::exchange(m_names, {});
    if (const QString problem = std::exchange(m_problem, {}); !problem.isEmpty())
        return tl::unexpected(problem);
    return names;
}

} // namespace host
