#pragma once

#include <QFont>
#include <QObject>
#include <QQmlEngine>

namespace vynlex {

/// The kit's typeface: one family per script, so that every language is drawn in the same style, and the reader's font
/// scale.
///
/// One instance per process, main thread. In QML the singleton `KitFont`.
class KitFont : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(KitFont)
    QML_SINGLETON

    Q_PROPERTY(qreal scale READ scale WRITE setScale NOTIFY scaleChanged FINAL)

public:
    static KitFont &shared();
    static KitFont *create(QQmlEngine *engine, QJSEngine *);

    /// How much larger than designed the user wants to read; 1 unless set. Kept within 0.8 to 2, where the layouts
    /// hold.
    [[nodiscard]] qreal scale() const { return m_scale; }
    void setScale(qreal scale);

    /// The font for `text`: its first letter's script leads, so that lines get that script's height. `size` is in
    /// points before scaling, `weight` a QFont::Weight.
    [[nodiscard]] Q_INVOKABLE QFont fitting(const QString &text, qreal size, int weight = QFont::Normal) const;

    /// The largest whole size from `smallest` to `largest`, in points before scaling, at which `text`, wrapped at
    /// words, has room in `width` by `height` points; `smallest` when there is none.
    [[nodiscard]] Q_INVOKABLE int largestFitting(const QString &text, qreal width, qreal height, int smallest,
                                                 int largest, int weight = QFont::Normal) const;

signals:
    void scaleChanged();

private:
    KitFont() = default;

    qreal m_scale = 1;
};

} // namespace vynlex
