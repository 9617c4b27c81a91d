import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Conversation

/// Two people share one device: the lower half faces its holder, the upper half, turned round, the person opposite.
Rectangle {
    id: root

    required property ConversationTranslateController controller
    required property ScreenWindow window

    color: Theme.background
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Conversation translator")
    Accessible.ignored: !root.enabled

    Keys.onEscapePressed: root.controller.didPressBackButtonAction()

    Item {
        id: face

        readonly property real half: (face.height - bar.height - 2 * face.gap) / 2
        readonly property real gap: face.height < 480 ? Theme.gapTiny : Theme.gapSmall

        // Behind the picker nothing can be reached, by finger or keyboard.
        enabled: !picker.sheet
        anchors.fill: parent
        anchors.leftMargin: Theme.gap + root.window.safeAreaLeft
        anchors.rightMargin: Theme.gap + root.window.safeAreaRight
        anchors.topMargin: Theme.gapSmall + root.window.safeAreaTop
        anchors.bottomMargin: Theme.gapSmall + root.window.safeAreaBottom

        ConversationSide {
            id: listener

            width: face.width
            height: face.half
            turned: true
            who: qsTr("Listener")
            language: root.controller.listenerLanguageLabel.text
            text: root.controller.listenerLabel.text
            prompting: root.controller.listenerShowsPrompt
            listening: root.controller.listenerState === ConversationTranslateController.Listening
            busy: root.controller.listenerState === ConversationTranslateController.Busy
            speaking: root.controller.listenerState === ConversationTranslateController.Speaking
            micEnabled: root.controller.listenerMicButton.enabled
            micPicture: root.controller.listenerMicButton.currentImage
            readAloudShown: !root.controller.listenerTextToSpeachButton.hidden
            readAloudPicture: root.controller.listenerTextToSpeachButton.currentImage
            onLanguagePressed: root.controller.listenerLanguageBackView.tap()
            onMicPressed: root.controller.didPressListenerButtonAction()
            onReadAloudPressed: root.controller.didPressListenerSideTextToSpeachButtonAction()
        }

        Item {
            id: bar

            y: face.half + face.gap
            width: face.width
            height: 52

            RoundButton {
                anchors.left: parent.left
                anchors.verticalCenter: parent.verticalCenter
                name: qsTr("Back")
                diameter: 44
                ground: Theme.surface
                picture: root.controller.backButton.currentImage
                onPressed: root.controller.didPressBackButtonAction()
            }
            RoundButton {
                anchors.centerIn: parent
                name: qsTr("Swap the languages")
                diameter: 52
                ground: Theme.primary
                picture: root.controller.conversionButton.currentImage
                onPressed: root.controller.didPressConversionButtonAction()
            }
            RoundButton {
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                name: qsTr("How it works")
                diameter: 44
                ground: Theme.surface
                picture: root.controller.infoButton.currentImage
                onPressed: root.controller.didPressInfoButtonAction()
            }
        }

        ConversationSide {
            id: speaker

            y: face.height - face.half
            width: face.width
            height: face.half
            who: qsTr("Speaker")
            language: root.controller.speakerLanguageLabel.text
            text: root.controller.speakerLabel.text
            prompting: root.controller.speakerShowsPrompt
            listening: root.controller.speakerState === ConversationTranslateController.Listening
            busy: root.controller.speakerState === ConversationTranslateController.Busy
            speaking: root.controller.speakerState === ConversationTranslateController.Speaking
            micEnabled: root.controller.speakerMicButton.enabled
            micPicture: root.controller.speakerMicButton.currentImage
            readAloudShown: !root.controller.speakerTextToSpeachButton.hidden
            readAloudPicture: root.controller.speakerTextToSpeachButton.currentImage
            onLanguagePressed: root.controller.speakerLanguageBackView.tap()
            onMicPressed: root.controller.didPressSpeakerButtonAction()
            onReadAloudPressed: root.controller.didPressSpeakerSideTextToSpeachButtonAction()
        }
    }

    PickerOverlay {
        id: picker

        anchors.fill: parent
        sheet: root.controller.languageSelectionView
        window: root.window
        screen: root
    }
}
