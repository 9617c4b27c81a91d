#pragma once

#include <QColor>
#include <QObject>
#include <QQmlEngine>
#include <QString>

namespace vynlex {

/// The picture that stands for a person: initials on a colour.
struct InitialsImage {
    Q_GADGET
    QML_VALUE_TYPE(initialsImage)

    Q_PROPERTY(QString text MEMBER text FINAL)
    Q_PROPERTY(QColor background MEMBER background FINAL)

public:
    QString text;
    QColor background;

    bool operator==(const InitialsImage &) const = default;
};

/// The first character of each word of `name`, as people count characters (a Devanagari letter keeps its vowel sign),
/// in upper case. Words stand between blanks; a name without words has no initials.
[[nodiscard]] QString initials(const QString &name);

/// On an opaque colour drawn at random each time, so that a person has a new one whenever they are shown anew.
[[nodiscard]] InitialsImage initialsImage(const QString &name);

} // namespace vynlex
