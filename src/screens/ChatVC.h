#pragma once

#include <VynlexTranslationSDK/VLChatDeleagate.h>

#include <QAbstractItemModel>
#include <QList>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <memory>

#include "api/DirectoryRecords.h"
#include "api/VLApiRequestError.h"
#include "platform/dispatch/Clock.h"
#include "platform/dispatch/Lifetime.h"
#include "platform/ui/ButtonState.h"
#include "platform/ui/LabelState.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/ViewState.h"
#include "screens/ChatTable.h"
#include "screens/InitialsImage.h"

namespace vynlex {

class ChatViewModel;
class LanguageTranslation;
class SpeachToTextViewModel;
class TextToSpeachViewModel;
class VLApiManager;

/// What a stack of controls has behind it.
struct StackLook {
    Q_GADGET
    QML_VALUE_TYPE(stackLook)

    Q_PROPERTY(double cornerRadius MEMBER cornerRadius FINAL)
    Q_PROPERTY(double borderWidth MEMBER borderWidth FINAL)
    Q_PROPERTY(QColor borderColor MEMBER borderColor FINAL)
    Q_PROPERTY(QColor background MEMBER background FINAL)

public:
    double cornerRadius = 0;
    double borderWidth = 0;
    QColor borderColor = Qt::transparent;
    QColor background = Qt::transparent;

    bool operator==(const StackLook &) const = default;
};

/// The voice chat with one person.
///
/// What the user says is recognised on this device and sent as text in the language it was said in; each message can be
/// read aloud in a voice of its language. One thing is read at a time, a message or the recording that waits to be
/// sent. Failures are silent: a message that could not be sent is lost, one that cannot be read ends at once.
///
/// Main thread. Leaving discards a recording and ends what is being read; once the screen is gone, nothing that the
/// services still answer reaches anyone.
class ChatVC : public ViewController, public VLChatDeleagate {
    Q_OBJECT
    QML_NAMED_ELEMENT(ChatController)
    QML_UNCREATABLE("Screens are made by the kit.")

    Q_PROPERTY(vynlex::LabelState *headerTitleLabel MEMBER headerTitleLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::LabelState *durationLabel MEMBER durationLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::LabelState *playDurationLabel MEMBER playDurationLabel CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *backButton MEMBER backButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *voiceChatBtn MEMBER voiceChatBtn CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *messageButton MEMBER messageButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *stopORSendButton MEMBER stopORSendButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *micOrDeleteButton MEMBER micOrDeleteButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ButtonState *audioPlayButton MEMBER audioPlayButton CONSTANT FINAL)
    Q_PROPERTY(vynlex::ViewState *bottomPanelBackgroundView MEMBER bottomPanelBackgroundView CONSTANT FINAL)
    Q_PROPERTY(vynlex::ViewState *playButtonBackStackView MEMBER playButtonBackStackView CONSTANT FINAL)
    Q_PROPERTY(vynlex::ViewState *playButtonStackLeadingEmptyView MEMBER playButtonStackLeadingEmptyView CONSTANT FINAL)
    Q_PROPERTY(
        vynlex::ViewState *playButtonStackTrailingEmptyView MEMBER playButtonStackTrailingEmptyView CONSTANT FINAL)
    Q_PROPERTY(vynlex::StackLook playButtonBackStackLook READ playButtonBackStackLook NOTIFY
                   playButtonBackStackLookChanged FINAL)
    Q_PROPERTY(vynlex::InitialsImage initialsImageView READ initialsImageView NOTIFY initialsImageViewChanged FINAL)
    Q_PROPERTY(QAbstractItemModel *chatTableView READ chatTableView CONSTANT FINAL)
    Q_PROPERTY(QList<QUrl> audioWaveStackView READ audioWaveStackView NOTIFY audioWaveStackViewChanged FINAL)
    Q_PROPERTY(PanelState panelState READ panelState NOTIFY panelStateChanged FINAL)

public:
    /// What the recording panel is about. `Idle`: it is hidden. It follows from the rest and changes nothing.
    enum class PanelState { Idle, Recording, Stopped };
    Q_ENUM(PanelState)

    /// Of the preview.
    static constexpr int waveImageCount = 20;
    /// A recording of 0 whole seconds is stepped through like one of 1 s.
    static constexpr std::chrono::milliseconds shortestWaveInterval = std::chrono::milliseconds(1000) / waveImageCount;

    /// With the shared instances and the current platform.
    ChatVC();
    /// All three must outlive the screen.
    ChatVC(ChatViewModel &viewModel, VLApiManager &apiManager, LanguageTranslation &languages);
    ~ChatVC() override;

    User userModel; ///< The other person; set before the screen is presented.

    LabelState *const headerTitleLabel = new LabelState(this);
    LabelState *const durationLabel = new LabelState(this);
    LabelState *const playDurationLabel = new LabelState(this);
    ButtonState *const backButton = new ButtonState(this);
    ButtonState *const voiceChatBtn = new ButtonState(this);
    ButtonState *const messageButton = new ButtonState(this);
    ButtonState *const stopORSendButton = new ButtonState(this);
    ButtonState *const micOrDeleteButton = new ButtonState(this);
    ButtonState *const audioPlayButton = new ButtonState(this);
    ViewState *const bottomPanelBackgroundView = new ViewState(this);
    ViewState *const playButtonBackStackView = new ViewState(this);
    ViewState *const playButtonStackLeadingEmptyView = new ViewState(this);
    ViewState *const playButtonStackTrailingEmptyView = new ViewState(this);

    // A press that the state of the screen leaves no button for (hidden, disabled, dimmed) does nothing.
    Q_INVOKABLE void backAction();
    /// Begins a recording.
    Q_INVOKABLE void voiceChatAction();
    Q_INVOKABLE void messageChatAction();
    Q_INVOKABLE void microphoneClickedAction();
    /// The first press stops the recording, the second sends it. What arrives from the recogniser in between still
    /// counts; nothing recognised is nothing to send.
    Q_INVOKABLE void stopRecordingORsendMessageAction();
    /// Discards a recording that has been stopped.
    Q_INVOKABLE void handleMicOrDeleteButtonAction();
    /// Begins or ends the preview of a recording that has been stopped.
    Q_INVOKABLE void audioPlayButtonAction();
    /// The play button of a message: begins or ends its reading.
    Q_INVOKABLE void didPressPlayButton(int row);
    /// Ends the reading.
    Q_INVOKABLE void didSelectRow(int row);

    /// Shows the messages as they are on a later turn of the main queue.
    void refreshChatData() override;

    [[nodiscard]] StackLook playButtonBackStackLook() const { return m_playButtonBackStackLook; }
    [[nodiscard]] InitialsImage initialsImageView() const { return m_initialsImageView; }
    [[nodiscard]] QAbstractItemModel *chatTableView() { return &m_chatTableView; }
    [[nodiscard]] QList<QUrl> audioWaveStackView() const { return m_audioWaveStackView; }
    [[nodiscard]] PanelState panelState() const;
    /// What has been recognised of the recording, a blank before each piece.
    [[nodiscard]] const QString &messageToSend() const { return m_messageToSend; }

    [[nodiscard]] QUrl viewSource() const override;

signals:
    void playButtonBackStackLookChanged();
    void initialsImageViewChanged();
    void audioWaveStackViewChanged();
    void panelStateChanged();

protected:
    void viewDidLoad() override;

private:
    void startRecording();
    void stopRecording();
    void sendMessage();
    void messageWasSent(const VLApiResult<VLChatMessage> &answer, std::uint64_t recording);
    void resetRecordingPanel();
    void setPreviewRowHidden(bool hidden);
    void setPlayButtonBackStackLook(const StackLook &look);
    void updateTimer();

    void startPreview();
    void endPreview();
    void updateWaveImages();
    void updatePlayDuration();
    void showCompletedWaves(int count);

    void playMessage(int row);
    void endPlaying();
    void reloadTable();

    ChatViewModel &m_viewModel;
    VLApiManager &m_apiManager;
    LanguageTranslation &m_languages;
    const std::shared_ptr<TextToSpeachViewModel> m_textToSpeachViewModel;
    const std::shared_ptr<SpeachToTextViewModel> m_speechToTextViewModel;

    std::uint64_t m_reading = 0; ///< What is being read, as the reader numbers it; 0 is nothing.

    QString m_messageToSend;        ///< A blank before each piece, deliberately: it travels with the text.
    std::uint64_t m_recording = 0;  ///< The number of the recording that the panel is about.
    bool m_isSendMesssage = false;  ///< It is on its way; the spelling is the kit's own.
    std::unique_ptr<Timer> m_timer; ///< Of the recording's clock.
    int m_seconds = 0;

    std::unique_ptr<Timer> m_playAudioTimer;  ///< Of the wave images.
    std::unique_ptr<Timer> m_playAudioTimer2; ///< Of the preview's clock.
    std::chrono::milliseconds m_waveInterval{};
    std::chrono::milliseconds m_elapsedTime{};
    int m_playDurationSeconds = 0;

    ChatTable m_chatTableView;
    bool m_reloadIsDue = false; ///< However many messages come in one turn.
    StackLook m_playButtonBackStackLook;
    InitialsImage m_initialsImageView;
    QList<QUrl> m_audioWaveStackView;

    const std::shared_ptr<VLChatDeleagate> m_asDelegate; ///< This screen, for who may only know it weakly.
    Lifetime m_lifetime;
};

} // namespace vynlex
