#include "platform/ui/KitFont.h"

#include <QtMath>

#include <algorithm>

namespace vynlex {

KitFont &KitFont::shared()
{
    static KitFont font;
    return font;
}

KitFont *KitFont::create(QQmlEngine *, QJSEngine *)
{
    QJSEngine::setObjectOwnership(&shared(), QJSEngine::CppOwnership);
    return &shared();
}

void KitFont::setScale(qreal scale)
{
    const qreal kept = std::clamp(scale, 0.8, 2.0);
    if (qFuzzyCompare(kept, m_scale))
        return;
    m_scale = kept;
    emit scaleChanged();
}

QFont KitFont::sized(qreal size, int weight) const
{
    QFont font;
    // Named one by one: left to itself the system pairs Gujarati with a serif face.
    font.setFamilies({QStringLiteral("Noto Sans"), QStringLiteral("Noto Sans Devanagari"),
                      QStringLiteral("Noto Sans Gujarati"), QStringLiteral("Noto Sans Bengali"),
                      QStringLiteral("Noto Sans Telugu")});
    font.setPixelSize(qMax(1, qRound(size * m_scale)));
    font.setWeight(QFont::Weight(weight));
    return font;
}

} // namespace vynlex
