#pragma once

#include <QObject>

#include <functional>
#include <memory>

#include "conversation/LanguageSelectionView.h"
#include "language/Side.h"

namespace vynlex {

/// The place over a screen where the language picker lies while it is open. Belongs to the screen; main thread.
class LanguagePicker : public QObject {
    Q_OBJECT

public:
    /// `languages` must outlive the picker.
    explicit LanguagePicker(LanguageTranslation &languages);

    /// Lays a picker over the screen, in place of one that is there, with the side's language selected. `chosen` is
    /// told each choice after it was stored.
    void open(Side side, std::function<void(LanguageOption)> chosen = {});

    /// Null while there is none.
    [[nodiscard]] LanguageSelectionView *view() const { return m_view.get(); }

signals:
    void viewChanged();

private:
    void remove();

    LanguageTranslation &m_languages;
    std::unique_ptr<LanguageSelectionView> m_view;
};

} // namespace vynlex
