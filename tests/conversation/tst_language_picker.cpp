#include "conversation/LanguageSelectionView.h"
#include "language/LanguageTranslation.h"
#include "platform/ui/ResourceBundle.h"
#include "platform/ui/ScreenWindow.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <functional>

using namespace vynlex;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class tst_language_picker : public QObject {
    Q_OBJECT

    std::unique_ptr<TestPlatform> m_platform;
    std::unique_ptr<LanguageTranslation> m_languages;

    [[nodiscard]] std::unique_ptr<LanguageSelectionView> picker(Side side) const
    {
        auto view = std::make_unique<LanguageSelectionView>(side == Side::Speaker, *m_languages, m_platform->clock);
        view->selectedLanguage = m_languages->language(side);
        return view;
    }

private slots:
    void init()
    {
        m_platform = std::make_unique<TestPlatform>();
        m_languages = std::make_unique<LanguageTranslation>(m_platform->userDefaults);
    }

    void theListenersPickerMarksHindiOnAFreshInstallation()
    {
        const auto view = picker(Side::Listener);
        view->show();
        QCOMPARE(view->titleLabel->text(), u"Translate to"_s);
        QCOMPARE(picker(Side::Speaker)->titleLabel->text(), u"Translate from"_s);
        QCOMPARE(view->closeButton->currentImage(), ResourceBundle::image(u"cross"_s));

        QStringList names;
        QStringList marked;
        QStringList withoutSeparator;
        QCOMPARE(view->numberOfRows(), 6);
        for (const LanguageCell &cell : view->optionsTableView().rows()) {
            names << cell.optionLabel;
            if (cell.radioButton.selected)
                marked << cell.optionLabel;
            if (cell.seperatorViewHidden)
                withoutSeparator << cell.optionLabel;
            const auto image = cell.radioButton.selected ? u"radioButton_Selected"_s : u"radioButton_Unselected"_s;
            QVERIFY(!ResourceBundle::image(image).isEmpty());
            QCOMPARE(cell.radioButton.currentImage(), ResourceBundle::image(image));
        }
        QCOMPARE(names, QStringList({u"English"_s, u"हिंदी"_s, u"ગુજરાતી"_s, u"मराठी"_s, u"বাংলা"_s, u"తెలుగు"_s}));
        QCOMPARE(marked, QStringList(u"हिंदी"_s));
        QCOMPARE(withoutSeparator, QStringList(u"తెలుగు"_s));
    }

    void aChosenRowIsStoredToldAndMarked()
    {
        const auto view = picker(Side::Listener);
        std::vector<LanguageOption> told;
        std::optional<QString> storedWhenTold;
        view->onLanguageSelection = [&](LanguageOption option) {
            told.push_back(option);
            storedWhenTold = m_platform->userDefaults->string(u"ListenerLanguage"_s);
        };
        view->show();
        QSignalSpy reset(view->tableModel(), &QAbstractItemModel::modelReset);
        for (const int row : {2, 1, 1}) { // also the one that is chosen already
            view->didSelectRow(row);
            const LanguageOption option = allLanguageOptions.at(static_cast<std::size_t>(row));
            QCOMPARE(told.back(), option);
            QCOMPARE(storedWhenTold, rawValue(option));
            QCOMPARE(view->selectedLanguage, option);
            for (int other = 0; other < view->numberOfRows(); ++other)
                QCOMPARE(view->optionsTableView().rows().at(static_cast<std::size_t>(other)).radioButton.selected,
                         other == row);
        }
        QCOMPARE(told.size(), 3U);
        QCOMPARE(reset.count(), 0); // the mark moves; the list stays where it is
        QVERIFY(view->isShown());
        picker(Side::Speaker)->didSelectRow(4);
        QCOMPARE(m_languages->language(Side::Speaker), allLanguageOptions.at(4));
    }

    void theSheetIsAsHighAsItsRowsAndTheDevicesEdge()
    {
        const auto view = picker(Side::Speaker);
        view->show();
        QCOMPARE(view->sheetHeight(), 6 * 56.0 + 71); // no key window, no edge

        ScreenWindow window;
        window.setSafeAreaInsets({0, 47, 0, 34});
        window.makeKey();
        view->show();
        QCOMPARE(view->sheetHeight(), 6 * 56.0 + 71 + 34);
    }

    void hidingEndsAfterTheSpring()
    {
        const std::vector<std::function<void(LanguageSelectionView &)>> ways{
            [](auto &view) { view.didPressCloseButtonAction(); },
            [](auto &view) { view.backgroundView->tap(); },
            [](auto &view) { view.dragEnded(400); },
        };
        for (const auto &hide : ways) {
            const auto view = picker(Side::Speaker);
            QSignalSpy removed(view.get(), &LanguageSelectionView::removedFromSuperview);
            view->show();
            QCOMPARE(view->sheetOffset(), 0.0);
            QCOMPARE(view->backgroundAlpha(), 0.45);
            hide(*view);
            QCOMPARE(view->sheetOffset(), view->sheetHeight());
            QCOMPARE(view->backgroundAlpha(), 0.0);
            view->hide(); // again, while it goes
            view->dragChanged(10);
            QVERIFY(!view->isDragging());
            m_platform->clock->advance(499ms);
            QCOMPARE(removed.count(), 0);
            m_platform->clock->advance(1ms);
            QCOMPARE(removed.count(), 1);
        }
    }

    void theSheetFollowsTheFingerDownwardsAndClosesFromHalfItsHeight()
    {
        for (const double translation : {203.4, -300.0, 203.5, 300.0}) {
            const auto view = picker(Side::Speaker);
            view->show();
            view->dragChanged(350);
            view->dragCancelled();
            QVERIFY(view->isShown() && !view->isDragging());
            QCOMPARE(view->sheetOffset(), 0.0);
            view->dragChanged(translation);
            QVERIFY(view->isDragging());
            QCOMPARE(view->sheetOffset(), std::max(0.0, translation));
            view->dragEnded(translation);
            const bool closes = translation >= 203.5;
            QCOMPARE(view->isShown(), !closes);
            QCOMPARE(view->sheetOffset(), closes ? view->sheetHeight() : 0.0);
            QVERIFY(!view->isDragging());
        }
    }
};

template struct vynlex::InSuite<tst_language_picker>;

#include "tst_language_picker.moc"
