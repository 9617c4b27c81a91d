#pragma once

#include <QDir>
#include <QString>

#include <tl/expected.hpp>
#include <vector>

#include "Stage.h"

namespace host {

/// Pictures of a stage, kept in a folder. The first that cannot be written is told when they are asked for. Main
/// thread.
class Album {
public:
    Album(Stage &stage, const QString &folder);

    /// At once, as `name`.png.
    void take(const QString &name);
    /// When everything has come to rest.
    void settleAndTake(const QString &name);

    /// File names, in the folder, of those taken since the last call.
    [[nodiscard]] tl::expected<std::vector<QString>, QString> taken();

    /// Of any file in the folder.
    [[nodiscard]] QString path(const QString &fileName) const { return m_folder.filePath(fileName); }

private:
    Stage &m_stage;
    const QDir m_folder;
    std::vector<QString> m_names;
    QString m_problem;
};

} // namespace host
