import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Screens

/// The voice chat with one person: who it is, what was said, and below it the way to say more, or what is being recorded.
Rectangle {
    id: root

    required property ChatController controller
    required property ScreenWindow window

    color: Theme.surface
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Voice chat with %1").arg(root.controller.headerTitleLabel.text)
    Accessible.ignored: !root.enabled

    Keys.onEscapePressed: root.controller.backAction()
    Keys.onBackPressed: root.controller.backAction()

    Rectangle {
        id: header

        width: root.width
        // In a low window the messages need the room more.
        height: Math.max(root.height < Theme.low ? 0 : Theme.headerHeight, root.window.safeAreaTop + 60)
        color: Theme.primary

        Item {
            anchors.fill: parent
            anchors.topMargin: root.window.safeAreaTop
            anchors.leftMargin: root.window.safeAreaLeft + Theme.gapSmall
            anchors.rightMargin: root.window.safeAreaRight + Theme.gapLarge

            RoundButton {
                id: back

                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                name: qsTr("Back")
                picture: root.controller.backButton.currentImage
                onPressed: root.controller.backAction()
            }
            InitialsPicture {
                id: person

                anchors.left: back.right
                anchors.leftMargin: Theme.gapTiny
                anchors.verticalCenter: parent.verticalCenter
                initials: root.controller.initialsImageView.text
                color: root.controller.initialsImageView.background
                size: 44
                border.width: 2
                border.color: Theme.inkOnPrimary // whatever colour they have, it stands out
            }
            Text {
                id: title

                readonly property int size: Theme.fittingSize(title.text, title.width, title.height, Math.round(Theme.body / Theme.fontScale), Theme.body, Font.Bold) // rather smaller than cut

                anchors.left: person.right
                anchors.leftMargin: Theme.gap
                anchors.right: parent.right
                height: parent.height
                text: root.controller.headerTitleLabel.text
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
                maximumLineCount: Math.max(2, Math.floor(title.height / Theme.lineHeight(title.size)))
                elide: Text.ElideRight
                verticalAlignment: Text.AlignVCenter
                color: root.controller.headerTitleLabel.textColor
                font: Theme.font(title.text, title.size, Font.Bold)
                Accessible.role: Accessible.Heading
                Accessible.name: title.text
                Accessible.ignored: !root.enabled
            }
        }
    }

    MessageList {
        id: messages

        anchors.top: header.bottom
        anchors.bottom: footer.top
        width: root.width
        controller: root.controller
        leftInset: root.window.safeAreaLeft
        rightInset: root.window.safeAreaRight
    }

    Rectangle {
        id: footer

        anchors.bottom: parent.bottom
        width: root.width
        height: controls.height + 2 * Theme.gap + root.window.safeAreaBottom
        color: panel.visible ? Theme.primaryTint : Theme.background

        Rectangle {
            width: parent.width
            height: 1
            color: Theme.hairline
        }

        FocusScope {
            id: controls

            readonly property real room: root.width - root.window.safeAreaLeft - root.window.safeAreaRight

            x: root.window.safeAreaLeft + (controls.room - controls.width) / 2
            y: Theme.gap
            width: Math.min(controls.room - 2 * Theme.gapLarge, Theme.controlsWidth)
            height: panel.visible ? panel.implicitHeight : voiceChat.height

            WideButton {
                id: voiceChat

                anchors.left: parent.left
                anchors.right: message.left
                anchors.rightMargin: Theme.gap
                height: Math.max(Theme.roundButton, voiceChat.implicitHeight)
                visible: !root.controller.voiceChatBtn.hidden
                focus: true
                name: root.controller.voiceChatBtn.title
                picture: root.controller.voiceChatBtn.currentImage
                radius: voiceChat.height / 2
                onPressed: root.controller.voiceChatAction()
            }
            RoundButton {
                id: message

                anchors.right: parent.right
                anchors.verticalCenter: voiceChat.verticalCenter
                visible: !panel.visible
                name: qsTr("Text message")
                diameter: Theme.roundButton
                ground: Theme.primaryTint
                picture: root.controller.messageButton.currentImage
                onPressed: root.controller.messageChatAction()
            }
            RecordingPanel {
                id: panel

                anchors.fill: parent
                visible: !root.controller.bottomPanelBackgroundView.hidden
                controller: root.controller
                // The keys stay with the controls that take the place of those that had them.
                onVisibleChanged: {
                    if (controls.activeFocus)
                        (panel.visible ? panel.mainButton : voiceChat).forceActiveFocus(Qt.OtherFocusReason);
                }
                onSendPressed: messages.showNewest()
            }
        }
    }
}
