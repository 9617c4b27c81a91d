#include "conversation/ConversationTranslateVC.h"

#include <algorithm>

#include "api/VLApiManager.h"
#include "conversation/TranslationStoryboard.h"
#include "language/LanguageTranslation.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/Console.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/ui/AlertController.h"
#include "platform/ui/ResourceBundle.h"
#include "platform/ui/ViewSource.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

bool isPromptText(const QString &text)
{
    return std::ranges::any_of(allLanguageOptions,
                               [&](LanguageOption option) { return languageEntry(option).promptText == text; });
}

QString describe(const TranslationError &error)
{
    const QString code = u"%1 %2"_s.arg(error.domain).arg(error.code);
    return error.message.isEmpty() ? code : u"%1 (%2)"_s.arg(error.message, code);
}

} // namespace

ConversationTranslateVC::ConversationTranslateVC()
    : ConversationTranslateVC(VLApiManager::shared(), LanguageTranslation::shared())
{
}

ConversationTranslateVC::ConversationTranslateVC(VLApiManager &apiManager, LanguageTranslation &languages)
    : m_languages(languages)
    , m_viewModel(std::make_shared<SpeachToTextViewModel>(apiManager, languages))
    , m_textToSpeachViewModel(std::make_shared<TextToSpeachViewModel>(apiManager, languages))
    , m_textToTextViewModel(apiManager)
    , m_languagePicker(languages)
{
    using enum ButtonState::Appearance;
    speakerMicButton->setImage(ResourceBundle::image(u"micButton"_s), Normal);
    listenerMicButton->setImage(ResourceBundle::image(u"micButton"_s), Normal);
    conversionButton->setImage(ResourceBundle::image(u"conversionButton"_s), Normal);
    infoButton->setImage(ResourceBundle::image(u"infoButton"_s), Normal);
    backButton->setImage(ResourceBundle::image(u"backButton"_s), Normal);
    connect(&m_languagePicker, &LanguagePicker::viewChanged, this,
            &ConversationTranslateVC::languageSelectionViewChanged);
}

ConversationTranslateVC::~ConversationTranslateVC() = default;

QUrl ConversationTranslateVC::viewSource() const
{
    return viewInModule(u"Conversation"_s, u"ConversationTranslateVC"_s);
}

void ConversationTranslateVC::viewDidLoad()
{
    for (const Side side : {Side::Speaker, Side::Listener}) {
        const Half fields = half(side);
        fields.micButton->setImage(ResourceBundle::image(u"micStopButton"_s), ButtonState::Appearance::Selected);
        fields.textToSpeachButton->setImage(ResourceBundle::image(u"playButton"_s), ButtonState::Appearance::Normal);
        fields.textToSpeachButton->setImage(ResourceBundle::image(u"pauseButton"_s), ButtonState::Appearance::Selected);
        fields.languageLabel->setText(m_languages.displayName(side));
        fields.label->setText(m_languages.promptText(side));
        fields.textToSpeachButton->setHidden(true);
        connect(fields.languageBackView, &ViewState::tapped, this, &ConversationTranslateVC::didTapLanguageAction);

        const auto lookChanged = side == Side::Speaker ? &ConversationTranslateVC::speakerLookChanged
                                                       : &ConversationTranslateVC::listenerLookChanged;
        connect(fields.micButton, &ButtonState::selectedChanged, this, lookChanged);
        connect(fields.textToSpeachButton, &ButtonState::selectedChanged, this, lookChanged);
        connect(fields.label, &LabelState::textChanged, this, lookChanged);
    }
}

// --- Listening

void ConversationTranslateVC::didPressSpeakerButtonAction()
{
    toggleMicrophone(Side::Speaker);
}

void ConversationTranslateVC::didPressListenerButtonAction()
{
    toggleMicrophone(Side::Listener);
}

void ConversationTranslateVC::toggleMicrophone(Side side)
{
    ButtonState *const micButton = half(side).micButton;
    if (!micButton->isEnabled())
        return;
    micButton->setSelected(!micButton->isSelected());
    if (!micButton->isSelected()) {
        m_viewModel->stopSpeechRecognition();
        applyListeningState(false, side);
        return;
    }
    endBusyLook();
    applyListeningState(true, side);
    m_listeningHasResult = false;
    m_viewModel->startSpeechRecognition(side == Side::Speaker, m_lifetime.guard([this, side, listening = ++m_listening](
                                                                                    const QString &text, std::int64_t) {
        handleResult(text, side, listening);
    }));
}

void ConversationTranslateVC::handleResult(const QString &text, Side side, std::uint64_t listening)
{
    if (listening != m_listening)
        return; // Late: someone listens anew, and stopping would stop that.
    if (text.isEmpty() && m_listeningHasResult)
        return; // The silence after a sentence must not wipe the sentence.
    m_listeningHasResult = true;
    half(side).micButton->setSelected(false);
    m_viewModel->stopSpeechRecognition();
    handleRecognisedText(text, side);
    applyListeningState(false, side);
}

void ConversationTranslateVC::handleRecognisedText(const QString &text, Side side)
{
    if (text.isEmpty()) {
        speakerLabel->setText(m_languages.promptText(Side::Speaker));
        listenerLabel->setText(m_languages.promptText(Side::Listener));
        return;
    }
    half(side).label->setText(text);
    if (showsPrompt(side))
        return;
    beginBusyLook();
    m_textToTextViewModel.translateText(
        text, m_languages.translatorCode(otherSide(side)),
        m_lifetime.guard([this, side, number = ++m_translation](const tl::expected<QString, TranslationError> &answer) {
            if (number == m_translation)
                endBusyLook();
            handleTranslation(answer, side);
        }));
}

void ConversationTranslateVC::handleTranslation(const tl::expected<QString, TranslationError> &translation, Side from)
{
    if (!translation) {
        consoleLine("Error: "_L1 + describe(translation.error()));
        return;
    }
    half(otherSide(from)).label->setText(*translation);
    consoleLine(*translation);
    hideTextToSpeachButtonsWithoutText();
}

void ConversationTranslateVC::applyListeningState(bool active, Side side)
{
    hideTextToSpeachButtonsWithoutText();
    if (!active) {
        speakerMicButton->setEnabled(true);
        listenerMicButton->setEnabled(true);
        return;
    }
    speakerTextToSpeachButton->setHidden(true);
    listenerTextToSpeachButton->setHidden(true);
    speakerMicButton->setEnabled(side == Side::Speaker);
    listenerMicButton->setEnabled(side == Side::Listener);
    speakerLabel->setText({});
    listenerLabel->setText({});
}

void ConversationTranslateVC::hideTextToSpeachButtonsWithoutText()
{
    for (const Side side : {Side::Speaker, Side::Listener})
        half(side).textToSpeachButton->setHidden(half(side).label->text().isEmpty() || showsPrompt(side));
}

// --- Reading aloud

void ConversationTranslateVC::didPressSpeakerSideTextToSpeachButtonAction()
{
    toggleReadingAloud(Side::Speaker);
}

void ConversationTranslateVC::didPressListenerSideTextToSpeachButtonAction()
{
    toggleReadingAloud(Side::Listener);
}

void ConversationTranslateVC::toggleReadingAloud(Side side)
{
    ButtonState *const button = half(side).textToSpeachButton;
    if (button->isSelected()) {
        button->setSelected(false);
        m_textToSpeachViewModel->stopSpeaking();
        return;
    }
    button->setSelected(true);
    const QString text = half(side).label->text();
    if (showsPrompt(side)) {
        present(std::make_shared<AlertController>(u"Alert"_s, text, std::vector<AlertAction>{{u"Ok"_s, {}}}),
                Animated::Yes);
        button->setSelected(false);
        return;
    }
    std::uint64_t &reading = side == Side::Speaker ? m_speakerReading : m_listenerReading;
    reading = m_textToSpeachViewModel->announce();
    const Task completed = m_lifetime.guard([button, &reading, call = reading] {
        if (call == reading) // else the text is being read once more
            button->setSelected(false);
    });
    GlobalQueue::async([reader = m_textToSpeachViewModel, call = reading, text, side, completed] {
        reader->speakText(call, text, side == Side::Speaker, {}, [completed] { MainQueue::async(completed); });
    });
}

// --- Languages

void ConversationTranslateVC::didTapLanguageAction(const ViewState *tapped)
{
    const Side side = tapped == speakerLanguageBackView ? Side::Speaker : Side::Listener;
    m_languagePicker.open(side, [this, side](LanguageOption option) { languageWasChosen(option, side); });
}

void ConversationTranslateVC::languageWasChosen(LanguageOption option, Side side)
{
    half(side).languageLabel->setText(rawValue(option));
    // Only a prompt follows the language; a text that was said or translated stays as it is.
    if (isPromptText(half(side).label->text()))
        half(side).label->setText(m_languages.promptText(side));
}

void ConversationTranslateVC::didPressConversionButtonAction()
{
    const LanguageOption speaker = m_languages.language(Side::Speaker);
    const LanguageOption listener = m_languages.language(Side::Listener);
    m_languages.store(Side::Listener, speaker);
    m_languages.store(Side::Speaker, listener);

    const auto swapTexts = [](LabelState *first, LabelState *second) {
        const QString text = first->text();
        first->setText(second->text());
        second->setText(text);
    };
    swapTexts(speakerLanguageLabel, listenerLanguageLabel);
    swapTexts(speakerLabel, listenerLabel);
    // The texts have changed sides, and with them which side has something to read.
    hideTextToSpeachButtonsWithoutText();
}

// --- Other screens

void ConversationTranslateVC::didPressInfoButtonAction()
{
    present(translationStoryboard().instantiateViewController(u"TranslateInfoViewController"_s), Animated::Yes);
}

void ConversationTranslateVC::didPressBackButtonAction()
{
    dismiss(Animated::Yes);
}

// --- Fields and looks of a side

ConversationTranslateVC::Half ConversationTranslateVC::half(Side side) const
{
    if (side == Side::Speaker)
        return {speakerMicButton, speakerLabel, speakerTextToSpeachButton, speakerLanguageLabel,
                speakerLanguageBackView};
    return {listenerMicButton, listenerLabel, listenerTextToSpeachButton, listenerLanguageLabel,
            listenerLanguageBackView};
}

bool ConversationTranslateVC::showsPrompt(Side side) const
{
    return half(side).label->text() == m_languages.promptText(side);
}

ConversationTranslateVC::SideState ConversationTranslateVC::state(Side side) const
{
    if (half(side).micButton->isSelected())
        return SideState::Listening;
    if (half(side).textToSpeachButton->isSelected())
        return SideState::Speaking;
    return m_busyLook ? SideState::Busy : SideState::Idle;
}

void ConversationTranslateVC::beginBusyLook()
{
    m_busyLook = Platform::current()->clock->after(longestBusyLook, [this] { endBusyLook(); });
    emit speakerLookChanged();
    emit listenerLookChanged();
}

void ConversationTranslateVC::endBusyLook()
{
    if (!m_busyLook)
        return;
    m_busyLook.reset();
    emit speakerLookChanged();
    emit listenerLookChanged();
}

} // namespace vynlex
