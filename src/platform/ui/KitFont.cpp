#include "platform/ui/KitFont.h"

#include <QFontMetricsF>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace vynlex {

namespace {

// Named one by one: left to itself the system pairs Gujarati with a serif face.
const std::array<std::pair<QChar::Script, QString>, 5> families{{
    {QChar::Script_Latin, u"Noto Sans"_s},
    {QChar::Script_Devanagari, u"Noto Sans Devanagari"_s},
    {QChar::Script_Gujarati, u"Noto Sans Gujarati"_s},
    {QChar::Script_Bengali, u"Noto Sans Bengali"_s},
    {QChar::Script_Telugu, u"Noto Sans Telugu"_s},
}};

std::size_t leadingFamily(const QString &text)
{
    for (const QChar letter : text) {
        for (std::size_t family = 0; family < families.size(); ++family) {
            if (letter.script() == families[family].first)
                return family;
        }
    }
    return 0;
}

} // namespace

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

QFont KitFont::fitting(const QString &text, qreal size, int weight) const
{
    QStringList names;
    for (const auto &[script, name] : families)
        names.append(name);
    names.move(static_cast<qsizetype>(leadingFamily(text)), 0);

    QFont font;
    font.setFamilies(names);
    font.setPixelSize(std::max(1, qRound(size * m_scale)));
    font.setWeight(static_cast<QFont::Weight>(weight));
    return font;
}

int KitFont::largestFitting(const QString &text, qreal width, qreal height, int smallest, int largest, int weight) const
{
    const auto fits = [&](int size) {
        const QFontMetricsF metrics(fitting(text, size, weight));
        const QRectF taken = metrics.boundingRect(QRectF(0, 0, width, height), Qt::TextWordWrap, text);
        return taken.width() <= width && taken.height() <= height;
    };
    // Sizes below `fitted` fit, sizes from `tooLarge` on do not; the smallest is taken as it is.
    int fitted = smallest;
    for (int tooLarge = largest + 1; tooLarge - fitted > 1;) {
        const int size = (fitted + tooLarge) / 2;
        (fits(size) ? fitted : tooLarge) = size;
    }
    return fitted;
}

} // namespace vynlex
