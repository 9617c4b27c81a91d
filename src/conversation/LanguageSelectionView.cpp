#include "conversation/LanguageSelectionView.h"

#include <algorithm>

#include "language/LanguageTranslation.h"
#include "platform/device/Platform.h"
#include "platform/ui/ResourceBundle.h"
#include "platform/ui/ScreenWindow.h"

using namespace Qt::StringLiterals;

namespace vynlex {

LanguageSelectionView::LanguageSelectionView(bool fromSpeaker)
    : LanguageSelectionView(fromSpeaker, LanguageTranslation::shared(), Platform::current()->clock)
{
}

LanguageSelectionView::LanguageSelectionView(bool fromSpeaker, LanguageTranslation &languages,
                                             std::shared_ptr<Clock> clock)
    : isFromSpeaker(fromSpeaker)
    , m_languages(languages)
    , m_clock(std::move(clock))
{
    QJSEngine::setObjectOwnership(this, QJSEngine::CppOwnership);
    titleLabel->setText(isFromSpeaker ? u"Translate from"_s : u"Translate to"_s);
    closeButton->setImage(ResourceBundle::image(u"cross"_s), ButtonState::Appearance::Normal);
    languageOptions.assign(allLanguageOptions.begin(), allLanguageOptions.end());
    connect(backgroundView, &ViewState::tapped, this, &LanguageSelectionView::hide);
    connect(this, &LanguageSelectionView::shownChanged, this, &LanguageSelectionView::backgroundAlphaChanged);
}

void LanguageSelectionView::show()
{
    const ScreenWindow *const window = ScreenWindow::key();
    m_sheetHeight = rowHeight * numberOfRows() + chromeHeight + (window ? window->safeAreaBottom() : 0);
    reloadTable();
    m_hiding.reset();
    m_shown = true;
    m_sheetOffset = 0;
}

void LanguageSelectionView::hide()
{
    if (!m_shown)
        return;
    m_dragging = false;
    m_shown = false;
    m_sheetOffset = m_sheetHeight.value();
    m_hiding = m_clock->after(spring::duration, [this] { emit removedFromSuperview(); });
}

LanguageCell LanguageSelectionView::cellForRow(int row) const
{
    const LanguageOption option = languageOptions.at(static_cast<std::size_t>(row));
    return {{option == selectedLanguage}, rawValue(option), row == numberOfRows() - 1};
}

void LanguageSelectionView::reloadTable()
{
    std::vector<LanguageCell> cells;
    cells.reserve(languageOptions.size());
    for (int row = 0; row < numberOfRows(); ++row)
        cells.push_back(cellForRow(row));
    m_table.setRows(std::move(cells));
}

void LanguageSelectionView::didSelectRow(int row)
{
    if (row < 0 || row >= numberOfRows())
        return;
    selectedLanguage = languageOptions[static_cast<std::size_t>(row)];
    m_languages.store(isFromSpeaker ? Side::Speaker : Side::Listener, selectedLanguage);
    if (onLanguageSelection)
        onLanguageSelection(selectedLanguage);
    reloadTable();
}

void LanguageSelectionView::didPressCloseButtonAction()
{
    hide();
}

void LanguageSelectionView::dragChanged(qreal translation)
{
    if (!m_shown)
        return;
    m_dragging = true;
    m_sheetOffset = std::max(0.0, translation);
}

void LanguageSelectionView::dragEnded(qreal translation)
{
    m_dragging = false;
    if (!m_shown)
        return;
    if (translation >= m_sheetHeight / 2)
        hide();
    else
        m_sheetOffset = 0;
}

void LanguageSelectionView::dragCancelled()
{
    dragEnded(0);
}

} // namespace vynlex
