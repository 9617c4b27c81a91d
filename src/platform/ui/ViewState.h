#pragma once

#include <QObject>
#include <QObjectBindableProperty>
#include <QQmlEngine>

namespace vynlex {

/// A plain area of a screen, without pixels: it can be hidden and tapped. Main thread.
class ViewState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Areas belong to their screen.")

    Q_PROPERTY(bool hidden READ isHidden NOTIFY hiddenChanged FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden) { m_hidden = hidden; }

    /// The view's tap, forwarded.
    Q_INVOKABLE void tap() { emit tapped(this); }

signals:
    void hiddenChanged();
    void tapped(vynlex::ViewState *self);

private:
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ViewState, bool, m_hidden, false, &ViewState::hiddenChanged)
};

} // namespace vynlex
