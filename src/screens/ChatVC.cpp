#include "screens/ChatVC.h"

#include <algorithm>
#include <utility>

#include "api/VLApiManager.h"
#include "chat/ChatViewModel.h"
#include "chat/WireText.h"
#include "language/LanguageTranslation.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/Console.h"
#include "platform/dispatch/GlobalQueue.h"
#include "platform/dispatch/MainQueue.h"
#include "platform/ui/Color.h"
#include "platform/ui/ResourceBundle.h"
#include "platform/ui/ViewSource.h"
#include "screens/ClockText.h"
#include "translation/SpeachToTextViewModel.h"
#include "translation/TextToSpeachViewModel.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace vynlex {
namespace {

QString formattedTime(int seconds)
{
    QString text = clockText(seconds);
    consoleLine("formatted time : "_L1 + text);
    return text;
}

} // namespace

ChatVC::ChatVC()
    : ChatVC(ChatViewModel::shared(), VLApiManager::shared(), LanguageTranslation::shared())
{
}

ChatVC::ChatVC(ChatViewModel &viewModel, VLApiManager &apiManager, LanguageTranslation &languages)
    : m_viewModel(viewModel)
    , m_apiManager(apiManager)
    , m_languages(languages)
    , m_textToSpeachViewModel(std::make_shared<TextToSpeachViewModel>(apiManager, languages))
    , m_speechToTextViewModel(std::make_shared<SpeachToTextViewModel>(apiManager, languages))
    , m_chatTableView(viewModel.aryMessages)
    , m_asDelegate(std::make_shared<char>(), this)
{
    const struct {
        ButtonState *button;
        QString image;
        QString selectedImage;
    } images[] = {
        {backButton, u"back"_s, {}},
        {voiceChatBtn, u"micWhite"_s, {}},
        {messageButton, u"messageIcon"_s, {}},
        {stopORSendButton, u"pauseIcon"_s, u"sendMessage"_s},
        {micOrDeleteButton, u"mic_recording"_s, u"deleteButton"_s},
        {audioPlayButton, u"audioPlayIcon"_s, u"chatAudioPlayButton"_s},
    };
    for (const auto &[button, image, selectedImage] : images) {
        button->setImage(ResourceBundle::image(image), ButtonState::Appearance::Normal);
        if (!selectedImage.isEmpty())
            button->setImage(ResourceBundle::image(selectedImage), ButtonState::Appearance::Selected);
    }
    voiceChatBtn->setTitle(u"Voice Chat"_s);
    headerTitleLabel->setTextColor(Qt::white);
    durationLabel->setText(clockText(0));
    bottomPanelBackgroundView->setHidden(true);
    setPreviewRowHidden(true);
    showCompletedWaves(0);

    connect(bottomPanelBackgroundView, &ViewState::hiddenChanged, this, &ChatVC::panelStateChanged);
    connect(stopORSendButton, &ButtonState::selectedChanged, this, &ChatVC::panelStateChanged);
}

ChatVC::~ChatVC()
{
    if (m_reading != 0)
        m_textToSpeachViewModel->stopSpeaking();
}

QUrl ChatVC::viewSource() const
{
    return viewInModule(u"Screens"_s, u"ChatVC"_s);
}

void ChatVC::viewDidLoad()
{
    headerTitleLabel->setText(userModel.name);
    m_initialsImageView = initialsImage(userModel.name);
    emit initialsImageViewChanged();
    m_chatTableView.setOtherPerson(userModel.name);

    m_viewModel.delegate = m_asDelegate;
    m_viewModel.openPrivateThread(userModel.id);
    reloadTable();
}

void ChatVC::backAction()
{
    if (panelState() == PanelState::Recording)
        stopRecording();
    resetRecordingPanel();
    endPlaying();
    dismiss(Animated::Yes);
}

void ChatVC::messageChatAction()
{
    consoleLine(u"message button tapped"_s);
}

void ChatVC::microphoneClickedAction()
{
    consoleLine(u"microphone tapped"_s);
}

ChatVC::PanelState ChatVC::panelState() const
{
    if (bottomPanelBackgroundView->isHidden())
        return PanelState::Idle;
    return stopORSendButton->isSelected() ? PanelState::Stopped : PanelState::Recording;
}

// --- Recording

void ChatVC::voiceChatAction()
{
    if (voiceChatBtn->isHidden())
        return;
    consoleLine(u"voice chat button tapped"_s);
    endPlaying(); // or the microphone would hear it
    startRecording();
}

void ChatVC::startRecording()
{
    bottomPanelBackgroundView->setHidden(false);
    voiceChatBtn->setHidden(true);
    setPreviewRowHidden(true);
    m_timer = Platform::current()->clock->every(1s, [this] { updateTimer(); });
    // Takes effect on a queue of the model's own, in the order of starts and stops.
    m_speechToTextViewModel->startSpeechRecognition(
        true, m_lifetime.guard([this, recording = ++m_recording](const QString &piece, std::int64_t) {
            if (recording == m_recording && !piece.isEmpty()) // Silence is no piece, or it would be sent.
                m_messageToSend += u' ' + piece;
        }));
}

void ChatVC::updateTimer()
{
    ++m_seconds;
    durationLabel->setText(formattedTime(m_seconds));
}

void ChatVC::stopRecordingORsendMessageAction()
{
    switch (panelState()) {
    case PanelState::Idle:
        break;
    case PanelState::Recording:
        stopRecording();
        break;
    case PanelState::Stopped:
        sendMessage();
        break;
    }
}

void ChatVC::stopRecording()
{
    setPreviewRowHidden(false);
    setPlayButtonBackStackLook({20, 1, colorFromHex(u"#B5B5B5"), QColor::fromRgbF(1, 1, 1, 0.65F)});
    micOrDeleteButton->setSelected(true);
    durationLabel->setHidden(true);
    playDurationLabel->setText(formattedTime(m_seconds));
    m_timer.reset();
    m_speechToTextViewModel->stopSpeechRecognition();
    stopORSendButton->setSelected(true);
}

void ChatVC::sendMessage()
{
    // Until the thread is known the recording waits: the model still has that of the chat before, where nothing that is
    // said here must go. A second press would send the same once more.
    if (m_messageToSend.isEmpty() || !m_viewModel.isThreadKnown() || m_isSendMesssage)
        return;
    m_isSendMesssage = true;
    stopORSendButton->setEnabled(false);
    m_apiManager.sendChatMessage(
        m_viewModel.threadID, encodeWireText({m_languages.recognitionLocale(Side::Speaker), m_messageToSend}), {},
        m_lifetime.guard([this, recording = m_recording](const VLApiResult<VLChatMessage> &answer) {
            messageWasSent(answer, recording);
        }));
}

void ChatVC::messageWasSent(const VLApiResult<VLChatMessage> &answer, std::uint64_t recording)
{
    consoleLine(u"messageSent"_s);
    if (recording == m_recording) // else it was discarded meanwhile, and the panel may be about the next one
        resetRecordingPanel();
    m_viewModel.messageSent(answer);
}

void ChatVC::handleMicOrDeleteButtonAction()
{
    if (stopORSendButton->isSelected())
        resetRecordingPanel();
}

void ChatVC::resetRecordingPanel()
{
    endPreview();
    ++m_recording; // Pieces that are still on their way go with the rest.
    durationLabel->setHidden(false);
    durationLabel->setText(clockText(0));
    m_messageToSend.clear();
    m_isSendMesssage = false;
    bottomPanelBackgroundView->setHidden(true);
    voiceChatBtn->setHidden(false);
    stopORSendButton->setSelected(false);
    stopORSendButton->setEnabled(true);
    micOrDeleteButton->setSelected(false);
    setPreviewRowHidden(true);
    m_seconds = 0;
    setPlayButtonBackStackLook({});
}

void ChatVC::setPreviewRowHidden(bool hidden)
{
    audioPlayButton->setHidden(hidden);
    playButtonBackStackView->setHidden(hidden);
    playDurationLabel->setHidden(hidden);
    playButtonStackLeadingEmptyView->setHidden(hidden);
    playButtonStackTrailingEmptyView->setHidden(hidden);
}

void ChatVC::setPlayButtonBackStackLook(const StackLook &look)
{
    if (m_playButtonBackStackLook == look)
        return;
    m_playButtonBackStackLook = look;
    emit playButtonBackStackLookChanged();
}

// --- Preview of the recording

void ChatVC::audioPlayButtonAction()
{
    if (panelState() != PanelState::Stopped)
        return;
    if (audioPlayButton->isSelected())
        endPreview();
    else
        startPreview();
}

void ChatVC::startPreview()
{
    endPlaying();
    audioPlayButton->setSelected(true);
    const std::chrono::milliseconds totalDuration = std::chrono::seconds(m_seconds);
    m_waveInterval = std::max(totalDuration / waveImageCount, shortestWaveInterval);

    m_reading = m_textToSpeachViewModel->announce();
    const auto clock = Platform::current()->clock;
    m_playAudioTimer = clock->every(m_waveInterval, [this] { updateWaveImages(); });
    m_playAudioTimer2 = clock->every(1s, [this] { updatePlayDuration(); });
    updateWaveImages();

    const Task completed = m_lifetime.guard([this, call = m_reading] {
        if (call == m_reading)
            endPreview();
    });
    GlobalQueue::async([reader = m_textToSpeachViewModel, call = m_reading, text = m_messageToSend, completed] {
        reader->speakText(call, text, true, {}, [completed] { MainQueue::async(completed); });
    });
}

void ChatVC::updateWaveImages()
{
    m_elapsedTime += m_waveInterval;
    const auto completedWaves =
        static_cast<int>(std::min<std::int64_t>(m_elapsedTime / m_waveInterval + 1, waveImageCount));
    showCompletedWaves(completedWaves);
    if (completedWaves < waveImageCount)
        return;
    m_playAudioTimer.reset();
    MainQueue::async(m_lifetime.guard([this, call = m_reading] {
        if (call == m_reading)
            endPreview();
    }));
}

void ChatVC::updatePlayDuration()
{
    ++m_playDurationSeconds;
    playDurationLabel->setText(formattedTime(m_playDurationSeconds));
}

void ChatVC::endPreview()
{
    if (!audioPlayButton->isSelected())
        return;
    m_elapsedTime = 0ms;
    m_playDurationSeconds = 0;
    m_playAudioTimer.reset();
    m_playAudioTimer2.reset();
    m_reading = 0;
    m_textToSpeachViewModel->stopSpeaking();
    audioPlayButton->setSelected(false);
    playDurationLabel->setText(formattedTime(m_seconds));
    showCompletedWaves(0);
}

void ChatVC::showCompletedWaves(int count)
{
    QList<QUrl> images(waveImageCount, ResourceBundle::image(u"normalAudioWave"_s));
    std::fill_n(images.begin(), count, ResourceBundle::image(u"completedAudioWave"_s));
    if (images == m_audioWaveStackView)
        return;
    m_audioWaveStackView = images;
    emit audioWaveStackViewChanged();
}

// --- Messages

void ChatVC::refreshChatData()
{
    if (std::exchange(m_reloadIsDue, true))
        return;
    MainQueue::async(m_lifetime.guard([this] { reloadTable(); }));
}

void ChatVC::reloadTable()
{
    m_reloadIsDue = false;
    if (m_chatTableView.reload() == ChatTable::Rows::Replaced)
        endPlaying(); // What is being read has no row any more.
}

void ChatVC::didSelectRow(int row)
{
    if (m_chatTableView.isDimmed(row))
        return;
    endPlaying();
    reloadTable();
}

void ChatVC::didPressPlayButton(int row)
{
    if (m_chatTableView.isDimmed(row))
        return;
    if (m_chatTableView.selectedIndex() == row)
        endPlaying();
    else if (row >= 0 && static_cast<std::size_t>(row) < m_viewModel.aryMessages.size())
        playMessage(row);
}

void ChatVC::playMessage(int row)
{
    endPreview();
    m_chatTableView.setSelectedIndex(row);
    m_reading = m_textToSpeachViewModel->announce();

    const Task ended = m_lifetime.guard([this, call = m_reading] {
        if (call != m_reading)
            return;
        m_reading = 0;
        m_chatTableView.setSelectedIndex({});
    });
    const Task completed = [ended] {
        consoleLine(u"speech synthesis completed"_s);
        MainQueue::async(ended);
    };
    const QString &messageText = m_viewModel.aryMessages[static_cast<std::size_t>(row)].messageText;
    GlobalQueue::async([reader = m_textToSpeachViewModel, call = m_reading, messageText, completed, ended] {
        const WireText message = decodeWireText(messageText);
        reader->speakText(call, message.text, true, LanguageTranslation::voiceForLocale(message.languageCode),
                          completed);
        MainQueue::async(ended); // One that could not be read ends as well; nobody reports it.
    });
}

void ChatVC::endPlaying()
{
    if (!m_chatTableView.selectedIndex())
        return;
    m_reading = 0;
    m_textToSpeachViewModel->stopSpeaking();
    m_chatTableView.setSelectedIndex({});
}

} // namespace vynlex
