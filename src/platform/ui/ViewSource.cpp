#include "platform/ui/ViewSource.h"

using namespace Qt::StringLiterals;

namespace vynlex {

QUrl viewInModule(const QString &module, const QString &name)
{
    return QUrl(u"qrc:/qt-project.org/imports/VynlexTranslationSDK/%1/%2.qml"_s.arg(module, name));
}

} // namespace vynlex
