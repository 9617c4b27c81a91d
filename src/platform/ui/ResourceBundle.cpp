#include "platform/ui/ResourceBundle.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace vynlex {

QUrl ResourceBundle::image(const QString &name)
{
    const QString path = "/VynlexTranslationSDK/images/"_L1 + name + ".svg"_L1;
    return QFile::exists(u':' + path) ? QUrl("qrc"_L1 + u':' + path) : QUrl();
}

} // namespace vynlex
