#include "platform/ui/ButtonState.h"

namespace vynlex {

void ButtonState::setSelected(bool selected)
{
    const QUrl before = currentImage();
    m_selected = selected;
    if (currentImage() != before)
        emit currentImageChanged();
}

void ButtonState::setImage(const QUrl &image, Appearance appearance)
{
    const QUrl before = currentImage();
    (appearance == Appearance::Selected ? m_selectedImage : m_normalImage) = image;
    if (currentImage() != before)
        emit currentImageChanged();
}

QUrl ButtonState::currentImage() const
{
    return m_selected && !m_selectedImage.isEmpty() ? m_selectedImage : m_normalImage;
}

} // namespace vynlex
