#pragma once

#include <QColor>
#include <QObject>
#include <QObjectBindableProperty>
#include <QQmlEngine>
#include <QString>

namespace vynlex {

/// A label of a screen, without pixels. Main thread.
class LabelState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Labels belong to their screen.")

    Q_PROPERTY(QString text READ text NOTIFY textChanged FINAL)
    Q_PROPERTY(bool hidden READ isHidden NOTIFY hiddenChanged FINAL)
    Q_PROPERTY(QColor textColor READ textColor NOTIFY textColorChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] QString text() const { return m_text; }
    void setText(const QString &text) { m_text = text; }

    [[nodiscard]] bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden) { m_hidden = hidden; }

    /// Invalid unless set: the view's own.
    [[nodiscard]] QColor textColor() const { return m_textColor; }
    void setTextColor(const QColor &color) { m_textColor = color; }

signals:
    void textChanged();
    void hiddenChanged();
    void textColorChanged();

private:
    Q_OBJECT_BINDABLE_PROPERTY(LabelState, QString, m_text, &LabelState::textChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(LabelState, bool, m_hidden, false, &LabelState::hiddenChanged)
    Q_OBJECT_BINDABLE_PROPERTY(LabelState, QColor, m_textColor, &LabelState::textColorChanged)
};

} // namespace vynlex
