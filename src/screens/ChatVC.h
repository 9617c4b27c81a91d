#pragma once

#include <QAbstractItemModel>
#include <QList>
#include <QUrl>

#include "api/DirectoryRecords.h"
#include "platform/ui/ButtonState.h"
#include "platform/ui/LabelState.h"
#include "platform/ui/ViewController.h"
#include "platform/ui/ViewState.h"
#include "screens/ChatTable.h"
#include "screens/InitialsImage.h"

namespace vynlex {

class ChatViewModel;
class LanguageTranslation;
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
class ChatVC : public ViewController {
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

    /// All three must outlive the screen.
    ChatVC(ChatViewModel &viewModel, VLApiManager &apiManager, LanguageTranslation &languages);
    ~ChatVC() override;

    User userModel; ///< The other person; set before the screen is shown.

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

    Q_INVOKABLE void backAction();
    Q_INVOKABLE void voiceChatAction();
    Q_INVOKABLE void messageChatAction();
    Q_INVOKABLE void microphoneClickedAction();
    Q_INVOKABLE void stopRecordingORsendMessageAction();
    Q_INVOKABLE void handleMicOrDeleteButtonAction();
    Q_INVOKABLE void audioPlayButtonAction();
    Q_INVOKABLE void didPressPlayButton(int row);
    Q_INVOKABLE void didSelectRow(int row);

    [[nodiscard]] StackLook playButtonBackStackLook() const { return m_playButtonBackStackLook; }
    [[nodiscard]] InitialsImage initialsImageView() const { return m_initialsImageView; }
    [[nodiscard]] QAbstractItemModel *chatTableView() { return &m_chatTableView; }
    [[nodiscard]] QList<QUrl> audioWaveStackView() const { return m_audioWaveStackView; }
    [[nodiscard]] PanelState panelState() const;

    [[nodiscard]] QUrl viewSource() const override;

signals:
    void playButtonBackStackLookChanged();
    void initialsImageViewChanged();
    void audioWaveStackViewChanged();
    void panelStateChanged();

protected:
    void viewDidLoad() override;

private:
    std::vector<VLChatMessage> m_noMessages;
    ChatTable m_chatTableView{m_noMessages};
    StackLook m_playButtonBackStackLook;
    InitialsImage m_initialsImageView;
    QList<QUrl> m_audioWaveStackView;
};

} // namespace vynlex
