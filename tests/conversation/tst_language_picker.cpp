#include "conversation/LanguageSelectionView.h"
#include "language/LanguageTranslation.h"
#include "platform/ui/ResourceBundle.h"
#include "platform/ui/ScreenWindow.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"
#include "tests/fakes/TestPlatform.h"

#include <QSignalSpy>
#include <QTest>

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

    void aChosenRowIsStoredToldAndMarked_data()
    {
        addRows<bool, int, QString>({
            {"speaker", true, 4, u"SpeakerLanguage"_s},
            {"listener", false, 2, u"ListenerLanguage"_s},
            {"the one that is chosen already", false, 1, u"ListenerLanguage"_s},
        });
    }
    void aChosenRowIsStoredToldAndMarked()
    {
        const auto [speaker, row, key] = currentRow<bool, int, QString>();
        const auto view = picker(speaker ? Side::Speaker : Side::Listener);
        std::vector<LanguageOption> told;
        std::optional<QString> storedWhenTold;
        view->onLanguageSelection = [&](LanguageOption option) {
            told.push_back(option);
            storedWhenTold = m_platform->userDefaults->string(key);
        };
        view->show();
        QSignalSpy reset(view->tableModel(), &QAbstractItemModel::modelReset);

        view->didSelectRow(row);
        const LanguageOption option = allLanguageOptions.at(static_cast<std::size_t>(row));
        QCOMPARE(told, std::vector{option});
        QCOMPARE(storedWhenTold, rawValue(option));
        QCOMPARE(view->selectedLanguage, option);
        for (int other = 0; other < view->numberOfRows(); ++other)
            QCOMPARE(view->optionsTableView().rows().at(static_cast<std::size_t>(other)).radioButton.selected,
                     other == row);
        QCOMPARE(reset.count(), 0); // the mark moves; the list stays where it is
        QVERIFY(view->isShown());
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

    void hidingEndsAfterTheSpring_data()
    {
        addRows<int>({{"close button", 0}, {"tap beside the sheet", 1}, {"drag", 2}});
    }
    void hidingEndsAfterTheSpring()
    {
        const auto [way] = currentRow<int>();
        const auto view = picker(Side::Speaker);
        QSignalSpy removed(view.get(), &LanguageSelectionView::removedFromSuperview);
        view->show();
        QCOMPARE(view->sheetOffset(), 0.0);
        QCOMPARE(view->backgroundAlpha(), 0.45);

        if (way == 0)
            view->didPressCloseButtonAction();
        else if (way == 1)
            view->backgroundView->tap();
        else
            view->dragEnded(400);
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

    void theSheetFollowsTheFingerDownwards()
    {
        const auto view = picker(Side::Speaker);
        view->show();
        view->dragChanged(30);
        QVERIFY(view->isDragging());
        QCOMPARE(view->sheetOffset(), 30.0);
        view->dragChanged(-20);
        QCOMPARE(view->sheetOffset(), 0.0);
        view->dragChanged(350);
        view->dragCancelled();
        QVERIFY(view->isShown() && !view->isDragging());
        QCOMPARE(view->sheetOffset(), 0.0);
    }

    void halfTheHeightClosesLessSpringsBack_data()
    {
        addRows<double, bool>({
            {"less", 203.4, false},
            {"half", 203.5, true},
            {"more", 300.0, true},
            {"upwards", -300.0, false},
        });
    }
    void halfTheHeightClosesLessSpringsBack()
    {
        const auto [translation, closes] = currentRow<double, bool>();
        const auto view = picker(Side::Speaker);
        view->show();
        view->dragChanged(translation);
        view->dragEnded(translation);
        QCOMPARE(view->isShown(), !closes);
        QCOMPARE(view->sheetOffset(), closes ? view->sheetHeight() : 0.0);
        QVERIFY(!view->isDragging());
    }
};

template struct vynlex::InSuite<tst_language_picker>;

#include "tst_language_picker.moc"
