#include "screens/InitialsImage.h"

#include <QRandomGenerator>
#include <QTextBoundaryFinder>

namespace vynlex {

QString initials(const QString &name)
{
    QString letters;
    for (const QStringView word : QStringView(name).tokenize(u' ', Qt::SkipEmptyParts)) {
        QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, word.data(), word.size());
        letters += word.first(characters.toNextBoundary());
    }
    return letters.toUpper();
}

InitialsImage initialsImage(const QString &name)
{
    const auto anyPart = [] { return static_cast<float>(QRandomGenerator::global()->generateDouble()); };
    const float red = anyPart();
    const float green = anyPart();
    const float blue = anyPart();
    return {initials(name), QColor::fromRgbF(red, green, blue)};
}

} // namespace vynlex
