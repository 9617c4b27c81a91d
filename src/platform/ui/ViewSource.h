#pragma once

#include <QString>
#include <QUrl>

namespace vynlex {

/// Where the view `name` of the QML module VynlexTranslationSDK.`module` is found inside the library.
[[nodiscard]] QUrl viewInModule(const QString &module, const QString &name);

} // namespace vynlex
