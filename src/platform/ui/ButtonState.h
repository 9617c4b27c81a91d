#pragma once

#include <QColor>
#include <QObject>
#include <QObjectBindableProperty>
#include <QQmlEngine>
#include <QString>
#include <QUrl>

namespace vynlex {

/// A button of a screen, without pixels: what its view shows.
///
/// Main thread. An image that is not there is an empty address, and the view shows none.
class ButtonState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Buttons belong to their screen.")

    Q_PROPERTY(QString title READ title NOTIFY titleChanged FINAL)
    Q_PROPERTY(bool enabled READ isEnabled NOTIFY enabledChanged FINAL)
    Q_PROPERTY(bool selected READ isSelected NOTIFY selectedChanged FINAL)
    Q_PROPERTY(bool hidden READ isHidden NOTIFY hiddenChanged FINAL)
    Q_PROPERTY(QUrl currentImage READ currentImage NOTIFY currentImageChanged FINAL)
    Q_PROPERTY(QColor titleColor READ titleColor NOTIFY titleColorChanged FINAL)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor NOTIFY backgroundColorChanged FINAL)

public:
    enum class Appearance { Normal, Selected };

    using QObject::QObject;

    [[nodiscard]] QString title() const { return m_title; }
    void setTitle(const QString &title) { m_title = title; }

    [[nodiscard]] bool isEnabled() const { return m_enabled; } ///< true unless set
    void setEnabled(bool enabled) { m_enabled = enabled; }

    [[nodiscard]] bool isSelected() const { return m_selected; }
    void setSelected(bool selected);

    [[nodiscard]] bool isHidden() const { return m_hidden; }
    void setHidden(bool hidden) { m_hidden = hidden; }

    void setImage(const QUrl &image, Appearance appearance);
    /// The image of the state the button is in; a selected button without an image of its own shows the normal one.
    [[nodiscard]] QUrl currentImage() const;

    /// Invalid unless set: the view's own.
    [[nodiscard]] QColor titleColor() const { return m_titleColor; }
    void setTitleColor(const QColor &color) { m_titleColor = color; }

    /// Transparent unless set.
    [[nodiscard]] QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor &color) { m_backgroundColor = color; }

signals:
    void titleChanged();
    void enabledChanged();
    void selectedChanged();
    void hiddenChanged();
    void currentImageChanged();
    void titleColorChanged();
    void backgroundColorChanged();

private:
    Q_OBJECT_BINDABLE_PROPERTY(ButtonState, QString, m_title, &ButtonState::titleChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ButtonState, bool, m_enabled, true, &ButtonState::enabledChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ButtonState, bool, m_selected, false, &ButtonState::selectedChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ButtonState, bool, m_hidden, false, &ButtonState::hiddenChanged)
    Q_OBJECT_BINDABLE_PROPERTY(ButtonState, QColor, m_titleColor, &ButtonState::titleColorChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(ButtonState, QColor, m_backgroundColor, Qt::transparent,
                                         &ButtonState::backgroundColorChanged)
    QUrl m_normalImage;
    QUrl m_selectedImage;
};

} // namespace vynlex
