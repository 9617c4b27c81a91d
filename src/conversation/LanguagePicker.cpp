#include "conversation/LanguagePicker.h"

#include "language/LanguageTranslation.h"
#include "platform/device/Platform.h"

namespace vynlex {

LanguagePicker::LanguagePicker(LanguageTranslation &languages)
    : m_languages(languages)
{
}

void LanguagePicker::open(Side side, std::function<void(LanguageOption)> chosen)
{
    remove();
    m_view = std::make_unique<LanguageSelectionView>(side == Side::Speaker, m_languages, Platform::current()->clock);
    m_view->selectedLanguage = m_languages.language(side);
    m_view->onLanguageSelection = std::move(chosen);
    connect(m_view.get(), &LanguageSelectionView::removedFromSuperview, this, &LanguagePicker::remove);
    m_view->show();
    emit viewChanged();
}

void LanguagePicker::remove()
{
    if (!m_view)
        return;
    LanguageSelectionView *const gone = m_view.release();
    gone->disconnect(this);
    emit viewChanged();
    gone->deleteLater(); // Its view is on its way out before it.
}

} // namespace vynlex
