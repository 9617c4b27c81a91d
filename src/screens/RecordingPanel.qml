import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Screens

/// A recording in the making, then one to be heard, thrown away or sent.
///
/// Recording: a red microphone that pulses, a clock beside a moving wave, a red disc with the pause mark. Stopped: a bin, a framed
/// row with play button, still wave and length, a blue disc with the send mark. A framed row that is too narrow gets a line of its own.
FocusScope {
    id: root

    required property ChatController controller

    /// Comes before the message goes.
    signal sendPressed

    readonly property Item mainButton: stopOrSend
    readonly property bool recording: root.controller.panelState === ChatController.Recording
    readonly property bool stopped: root.controller.panelState === ChatController.Stopped
    readonly property real button: Theme.roundButton
    /// Between the two buttons.
    readonly property real middle: root.width - 2 * (root.button + Theme.gapSmall)
    readonly property bool twoLines: root.stopped && root.middle < preview.smallestWidth

    implicitHeight: root.button + (root.twoLines ? preview.height + Theme.gapSmall : 0)

    Accessible.role: Accessible.Grouping
    Accessible.name: root.recording ? qsTr("Recording") : qsTr("Recorded message")
    Accessible.ignored: !root.enabled

    Rectangle {
        id: pulse

        anchors.centerIn: micOrDelete
        width: root.button
        height: root.button
        radius: root.button / 2
        color: Theme.recording
        visible: root.recording

        SequentialAnimation on opacity {
            loops: Animation.Infinite
            running: pulse.visible

            NumberAnimation {
                from: 0.12
                to: 0.32
                duration: Theme.breath
                easing.type: Easing.InOutSine
            }
            NumberAnimation {
                from: 0.32
                to: 0.12
                duration: Theme.breath
                easing.type: Easing.InOutSine
            }
        }
    }
    RoundButton {
        id: micOrDelete

        anchors.left: parent.left
        anchors.bottom: parent.bottom
        // While the recording runs it only shows that it does.
        enabled: root.controller.micOrDeleteButton.selected
        Accessible.ignored: !micOrDelete.enabled
        name: root.controller.micOrDeleteButton.selected ? qsTr("Discard the recording") : qsTr("Recording")
        diameter: root.button
        ground: root.controller.micOrDeleteButton.selected ? Theme.surface : "transparent"
        picture: root.controller.micOrDeleteButton.currentImage
        onPressed: root.controller.handleMicOrDeleteButtonAction()
    }

    Item {
        anchors.left: micOrDelete.right
        anchors.leftMargin: Theme.gapSmall
        anchors.right: stopOrSend.left
        anchors.rightMargin: Theme.gapSmall
        anchors.bottom: parent.bottom
        height: root.button
        visible: !root.controller.durationLabel.hidden

        Text {
            id: clock

            anchors.right: parent.right
            anchors.rightMargin: Theme.gapSmall
            anchors.verticalCenter: parent.verticalCenter
            text: root.controller.durationLabel.text
            textFormat: Text.PlainText
            color: Theme.ink
            font: Theme.font(clock.text, Theme.title, Font.DemiBold)
            Accessible.role: Accessible.StaticText
            Accessible.name: qsTr("Recorded so far: %1").arg(clock.text.trim())
            Accessible.ignored: !root.enabled
        }
        SoundWave {
            id: voice

            anchors.left: parent.left
            anchors.leftMargin: Theme.gapSmall
            anchors.verticalCenter: parent.verticalCenter
            running: root.recording
            bars: Math.max(0, Math.floor((clock.x - Theme.gapLarge) / (2 * voice.barWidth)))
            barWidth: 4
            tallest: 28
            tint: Theme.recording
        }
    }

    Rectangle {
        id: preview

        readonly property stackLook look: root.controller.playButtonBackStackLook
        readonly property list<url> waves: root.controller.audioWaveStackView
        /// With the wave images drawn together to a third of their width.
        readonly property real smallestWidth: play.width + 2.75 * preview.waves.length + length.width + Theme.gapSmall + Theme.gap

        x: root.twoLines ? 0 : root.button + Theme.gapSmall
        y: root.twoLines ? 0 : root.height - (root.button + preview.height) / 2
        width: root.twoLines ? root.width : root.middle
        height: Math.max(40, length.implicitHeight)
        visible: !root.controller.playButtonBackStackView.hidden
        radius: preview.look.cornerRadius
        color: preview.look.background
        border.width: preview.look.borderWidth
        border.color: preview.look.borderColor

        RoundButton {
            id: play

            anchors.left: parent.left
            anchors.verticalCenter: parent.verticalCenter
            visible: !root.controller.audioPlayButton.hidden
            name: play.checked ? qsTr("Stop playing the recording") : qsTr("Play the recording")
            checkable: true
            checked: root.controller.audioPlayButton.selected
            diameter: 36
            pictureSize: 36
            picture: root.controller.audioPlayButton.currentImage
            onPressed: root.controller.audioPlayButtonAction()
        }
        Row {
            id: row

            readonly property real room: length.x - play.width - Theme.gapSmall
            readonly property real share: Math.min(8, row.room / Math.max(1, preview.waves.length))

            x: play.width + (row.room - row.width) / 2
            anchors.verticalCenter: parent.verticalCenter
            visible: play.visible

            Repeater {
                model: preview.waves

                Image {
                    id: wave

                    required property url modelData
                    required property int index

                    width: row.share // qmllint disable unqualified
                    height: 24
                    source: wave.modelData
                    sourceSize.width: 8
                    sourceSize.height: 24
                    Accessible.ignored: true
                    // All are the same picture; as parts of a voice they differ.
                    transform: Scale {
                        origin.y: 12
                        yScale: 0.3 + 0.7 * Math.abs(Math.sin(1 + wave.index * 0.85) * Math.cos(wave.index * 1.3))
                    }
                }
            }
        }
        Text {
            id: length

            anchors.right: parent.right
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            visible: !root.controller.playDurationLabel.hidden
            text: root.controller.playDurationLabel.text
            textFormat: Text.PlainText
            color: Theme.ink
            font: Theme.font(length.text, Theme.caption + 1, Font.DemiBold)
            Accessible.role: Accessible.StaticText
            Accessible.name: (play.checked ? qsTr("Played: %1") : qsTr("Length: %1")).arg(length.text.trim())
            Accessible.ignored: !root.enabled
        }
    }

    RoundButton {
        id: stopOrSend

        readonly property bool sends: root.controller.stopORSendButton.selected
        readonly property bool waits: !root.controller.stopORSendButton.enabled

        anchors.right: parent.right
        anchors.bottom: parent.bottom
        focus: true
        enabled: !stopOrSend.waits
        name: stopOrSend.waits ? qsTr("Being sent") : stopOrSend.sends ? qsTr("Send the message") : qsTr("Stop recording")
        diameter: root.button
        ground: stopOrSend.waits ? Theme.surface : stopOrSend.sends ? Theme.primary : Theme.recording
        picture: stopOrSend.waits ? "" : root.controller.stopORSendButton.currentImage
        onPressed: {
            if (root.stopped)
                root.sendPressed();
            root.controller.stopRecordingORsendMessageAction();
        }

        BusyDots {
            anchors.centerIn: parent
            visible: stopOrSend.waits
            running: stopOrSend.waits
            dot: 7
            tint: Theme.primary
        }
    }
}
