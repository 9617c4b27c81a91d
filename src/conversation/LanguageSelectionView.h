#pragma once

#include <QAbstractItemModel>
#include <QEasingCurve>
#include <QObject>
#include <QObjectBindableProperty>
#include <QQmlEngine>

#include <functional>
#include <memory>
#include <vector>

#include "conversation/LanguageCell.h"
#include "language/LanguageOption.h"
#include "language/Side.h"
#include "platform/dispatch/Clock.h"
#include "platform/ui/ButtonState.h"
#include "platform/ui/LabelState.h"
#include "platform/ui/SpringCurve.h"
#include "platform/ui/ViewState.h"

namespace vynlex {

class LanguageTranslation;

/// The sheet on which one side of a conversation chooses its language. It stores the choice itself, then tells its
/// owner; it stays open until it is closed.
///
/// Main thread. The owner makes it, sets `selectedLanguage` and `onLanguageSelection`, lays it over its own view and
/// calls `show`. When the sheet has been hidden it says `removedFromSuperview`, and the owner lets go of it.
class LanguageSelectionView : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(LanguageSelectionController)
    QML_UNCREATABLE("The picker is made by its screen.")

    Q_PROPERTY(vynlex::ViewState *backgroundView MEMBER backgroundView CONSTANT FINAL)
    Q_PROPERTY(vynlex::LabelState *titleLabel MEMBER titleLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *closeButton MEMBER closeButton CONSTANT FINAL)
    Q_PROPERTY(QAbstractItemModel *optionsTableView READ tableModel CONSTANT FINAL)
    Q_PROPERTY(bool isFromSpeaker MEMBER isFromSpeaker CONSTANT FINAL)
    Q_PROPERTY(qreal sheetHeight READ sheetHeight NOTIFY sheetHeightChanged FINAL)
    Q_PROPERTY(qreal sheetOffset READ sheetOffset NOTIFY sheetOffsetChanged FINAL)
    Q_PROPERTY(qreal backgroundAlpha READ backgroundAlpha NOTIFY backgroundAlphaChanged FINAL)
    Q_PROPERTY(bool shown READ isShown NOTIFY shownChanged FINAL)
    Q_PROPERTY(bool dragging READ isDragging NOTIFY draggingChanged FINAL)
    Q_PROPERTY(int animationDuration READ animationDuration CONSTANT FINAL)
    Q_PROPERTY(QEasingCurve animationCurve READ animationCurve CONSTANT FINAL)

public:
    static constexpr qreal rowHeight = 56;    ///< points per option
    static constexpr qreal chromeHeight = 71; ///< points above and below the options
    static constexpr qreal dimming = 0.45;    ///< alpha of the black background

    explicit LanguageSelectionView(bool isFromSpeaker);
    /// `languages` must outlive the view.
    LanguageSelectionView(bool isFromSpeaker, LanguageTranslation &languages, std::shared_ptr<Clock> clock);

    ViewState *const backgroundView = new ViewState(this); ///< a tap on it closes the sheet
    LabelState *const titleLabel = new LabelState(this);
    ButtonState *const closeButton = new ButtonState(this);
    std::vector<LanguageOption> languageOptions;
    LanguageOption selectedLanguage = LanguageOption::english;
    const bool isFromSpeaker;
    std::function<void(LanguageOption)> onLanguageSelection;

    /// Sizes the sheet, fills the table and slides the sheet in.
    void show();
    /// Slides the sheet out; `removedFromSuperview` follows when that is done. Hiding twice is hiding once.
    void hide();

    [[nodiscard]] int numberOfRows() const { return static_cast<int>(languageOptions.size()); }
    [[nodiscard]] LanguageCell cellForRow(int row) const;
    [[nodiscard]] const LanguageTable &optionsTableView() const { return m_table; }
    [[nodiscard]] QAbstractItemModel *tableModel() { return &m_table; }

    /// A row was chosen; indexes outside the options are ignored.
    Q_INVOKABLE void didSelectRow(int row);
    Q_INVOKABLE void didPressCloseButtonAction();

    /// The sheet is dragged, `translation` points down from where the finger went down.
    Q_INVOKABLE void dragChanged(qreal translation);
    /// The finger went up there. Half the sheet's height or more closes the sheet, less springs back.
    Q_INVOKABLE void dragEnded(qreal translation);
    /// The drag was taken away from the view: springs back.
    Q_INVOKABLE void dragCancelled();

    /// Points, including what the key window's bottom edge takes. 0 until the sheet is shown.
    [[nodiscard]] qreal sheetHeight() const { return m_sheetHeight; }
    /// Where the sheet is to be, in points below its place when shown: 0 shown, `sheetHeight` hidden, between them
    /// while it is dragged. The view moves there with the spring, and at once while `dragging`.
    [[nodiscard]] qreal sheetOffset() const { return m_sheetOffset; }
    /// What the dimming layer's alpha is to be: `dimming` while shown, else 0.
    [[nodiscard]] qreal backgroundAlpha() const { return m_shown ? dimming : 0; }
    [[nodiscard]] bool isShown() const { return m_shown; }
    [[nodiscard]] bool isDragging() const { return m_dragging; }
    /// Milliseconds.
    [[nodiscard]] static int animationDuration() { return static_cast<int>(spring::duration.count()); }
    [[nodiscard]] static QEasingCurve animationCurve() { return spring::curve(); }

signals:
    void sheetHeightChanged();
    void sheetOffsetChanged();
    void backgroundAlphaChanged();
    void shownChanged();
    void draggingChanged();
    void removedFromSuperview();

private:
    void reloadTable();

    LanguageTranslation &m_languages;
    std::shared_ptr<Clock> m_clock;
    std::unique_ptr<Timer> m_hiding;
    LanguageTable m_table{languageTableRoles()};
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(LanguageSelectionView, qreal, m_sheetHeight, 0,
                                         &LanguageSelectionView::sheetHeightChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(LanguageSelectionView, qreal, m_sheetOffset, 0,
                                         &LanguageSelectionView::sheetOffsetChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(LanguageSelectionView, bool, m_shown, false,
                                         &LanguageSelectionView::shownChanged)
    Q_OBJECT_BINDABLE_PROPERTY_WITH_ARGS(LanguageSelectionView, bool, m_dragging, false,
                                         &LanguageSelectionView::draggingChanged)
};

} // namespace vynlex
