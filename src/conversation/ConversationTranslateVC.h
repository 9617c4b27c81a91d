#pragma once

#include <cstdint>
#include <memory>

#include "conversation/LanguagePicker.h"
#include "language/Side.h"
#include "platform/dispatch/Clock.h"
#include "platform/dispatch/Lifetime.h"
#include "platform/ui/ButtonState.h"
#include "platform/ui/LabelState.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/ViewState.h"
#include "translation/SpeachToTextViewModel.h"
#include "translation/TextToSpeachViewModel.h"
#include "translation/TextToTextViewModel.h"

namespace vynlex {

class LanguageTranslation;
class VLApiManager;

/// The face-to-face translator: two people share one device, each with a half of the screen.
///
/// What one side says is recognised in its language and shown in its label, translated, and shown in the other side's
/// label; either label can be read aloud. One final result ends a listening. Failures of the services are console
/// lines: a microphone stays selected until it is pressed again, and labels keep what they show.
///
/// Main thread. Once the screen is gone, nothing that the services still answer reaches anyone; a text that is being
/// read aloud is read to its end.
class ConversationTranslateVC : public ViewController {
    Q_OBJECT
    QML_NAMED_ELEMENT(ConversationTranslateController)
    QML_UNCREATABLE("Screens are made by the kit.")

    Q_PROPERTY(vynlex::ButtonState *speakerMicButton MEMBER speakerMicButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *listenerMicButton MEMBER listenerMicButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::LabelState *speakerLabel MEMBER speakerLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::LabelState *listenerLabel MEMBER listenerLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *speakerTextToSpeachButton MEMBER speakerTextToSpeachButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *listenerTextToSpeachButton MEMBER listenerTextToSpeachButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::LabelState *speakerLanguageLabel MEMBER speakerLanguageLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::LabelState *listenerLanguageLabel MEMBER listenerLanguageLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::ViewState *speakerLanguageBackView MEMBER speakerLanguageBackView CONSTANT FINAL)
    Q_PROPERTY(vynlex::ViewState *listenerLanguageBackView MEMBER listenerLanguageBackView CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *conversionButton MEMBER conversionButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *infoButton MEMBER infoButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *backButton MEMBER backButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::LanguageSelectionView *languageSelectionView READ languageSelectionView NOTIFY
                   languageSelectionViewChanged FINAL)
    Q_PROPERTY(SideState speakerState READ speakerState NOTIFY speakerLookChanged FINAL)
    Q_PROPERTY(SideState listenerState READ listenerState NOTIFY listenerLookChanged FINAL)
    Q_PROPERTY(bool speakerShowsPrompt READ speakerShowsPrompt NOTIFY speakerLookChanged FINAL)
    Q_PROPERTY(bool listenerShowsPrompt READ listenerShowsPrompt NOTIFY listenerLookChanged FINAL)

public:
    /// How a half looks. `Busy`: a text is on its way from or to this side. It follows from the rest and changes
    /// nothing.
    enum class SideState { Idle, Listening, Busy, Speaking };
    Q_ENUM(SideState)

    /// The service may answer so that nobody is told, or not at all; the busy look ends then anyway.
    static constexpr std::chrono::milliseconds longestBusyLook{15'000};

    /// With the shared instances and the current platform.
    ConversationTranslateVC();
    /// `apiManager` and `languages` must outlive the screen.
    ConversationTranslateVC(VLApiManager &apiManager, LanguageTranslation &languages);
    ~ConversationTranslateVC() override;

    ButtonState *const speakerMicButton = new ButtonState(this);
    ButtonState *const listenerMicButton = new ButtonState(this);
    LabelState *const speakerLabel = new LabelState(this);
    LabelState *const listenerLabel = new LabelState(this);
    ButtonState *const speakerTextToSpeachButton = new ButtonState(this);
    ButtonState *const listenerTextToSpeachButton = new ButtonState(this);
    LabelState *const speakerLanguageLabel = new LabelState(this);
    LabelState *const listenerLanguageLabel = new LabelState(this);
    ViewState *const speakerLanguageBackView = new ViewState(this);
    ViewState *const listenerLanguageBackView = new ViewState(this);
    ButtonState *const conversionButton = new ButtonState(this);
    ButtonState *const infoButton = new ButtonState(this);
    ButtonState *const backButton = new ButtonState(this);

    Q_INVOKABLE void didPressSpeakerButtonAction();
    Q_INVOKABLE void didPressListenerButtonAction();
    Q_INVOKABLE void didPressSpeakerSideTextToSpeachButtonAction();
    Q_INVOKABLE void didPressListenerSideTextToSpeachButtonAction();
    /// `tapped` is one of the two chips; their taps come here by themselves.
    void didTapLanguageAction(const ViewState *tapped);
    Q_INVOKABLE void didPressConversionButtonAction();
    Q_INVOKABLE void didPressInfoButtonAction();
    Q_INVOKABLE void didPressBackButtonAction();

    /// The picker that lies over this screen, or null.
    [[nodiscard]] LanguageSelectionView *languageSelectionView() const { return m_languagePicker.view(); }

    [[nodiscard]] SideState speakerState() const { return state(Side::Speaker); }
    [[nodiscard]] SideState listenerState() const { return state(Side::Listener); }
    [[nodiscard]] bool speakerShowsPrompt() const { return showsPrompt(Side::Speaker); }
    [[nodiscard]] bool listenerShowsPrompt() const { return showsPrompt(Side::Listener); }

    [[nodiscard]] QUrl viewSource() const override;

signals:
    void languageSelectionViewChanged();
    void speakerLookChanged();
    void listenerLookChanged();

protected:
    void viewDidLoad() override;

private:
    /// The fields of one side.
    struct Half {
        ButtonState *micButton;
        LabelState *label;
        ButtonState *textToSpeachButton;
        LabelState *languageLabel;
        ViewState *languageBackView;
    };
    [[nodiscard]] Half half(Side side) const;
    [[nodiscard]] SideState state(Side side) const;
    [[nodiscard]] bool showsPrompt(Side side) const;

    void toggleMicrophone(Side side);
    void handleResult(const QString &text, Side side, std::uint64_t listening);
    void handleRecognisedText(const QString &text, Side side);
    void handleTranslation(const tl::expected<QString, TranslationError> &translation, Side from);
    void applyListeningState(bool active, Side side);
    void hideTextToSpeachButtonsWithoutText();
    void toggleReadingAloud(Side side);
    void languageWasChosen(LanguageOption option, Side side);

    void beginBusyLook();
    void endBusyLook();

    LanguageTranslation &m_languages;
    const std::shared_ptr<SpeachToTextViewModel> m_viewModel;
    const std::shared_ptr<TextToSpeachViewModel> m_textToSpeachViewModel;
    TextToTextViewModel m_textToTextViewModel;
    LanguagePicker m_languagePicker;
    std::uint64_t m_speakerReading = 0; ///< The number of what the side's button began last.
    std::uint64_t m_listenerReading = 0;
    std::uint64_t m_listening = 0; ///< The number of the latest listening.
    bool m_listeningHasResult = false;
    std::uint64_t m_translation = 0;   ///< The number of the latest translation.
    std::unique_ptr<Timer> m_busyLook; ///< Running while both sides look busy.
    Lifetime m_lifetime;
};

} // namespace vynlex
