import QtQuick
import VynlexTranslationSDK.Ui

/// One person's half of the screen: language, what is said, microphone and reader.
///
/// Four looks that differ by more than colour. Idle: text on white. Listening: the half turns blue with a large wave, the
/// microphone is a stop mark in pulsing rings. Being translated: three moving dots. Speaking: a framed half and a wave beside the
/// pause mark.
Item {
    id: root

    required property string who
    /// Faces the person opposite.
    property bool turned: false
    required property string language
    required property string text
    required property bool prompting
    required property bool listening
    required property bool busy
    required property bool speaking
    required property bool micEnabled
    required property url micPicture
    required property bool readAloudShown
    required property url readAloudPicture

    signal languagePressed
    signal micPressed
    signal readAloudPressed

    /// Too low for three rows: the controls move beside the text.
    readonly property bool low: root.height < 260 && root.width > 500
    readonly property real inset: root.height < 280 ? Theme.gap : Theme.gapLarge
    readonly property real micDiameter: root.height < 250 && !root.low && Theme.fontScale > 1.2 ? Theme.roundButton : root.height < 280 ? 64 : root.width > 600 ? 88 : Theme.micDiameter

    Accessible.role: Accessible.Grouping
    Accessible.name: root.who
    Accessible.description: root.listening ? qsTr("Listening") : root.busy ? qsTr("Translating") : root.speaking ? qsTr("Reading aloud") : ""
    Accessible.ignored: !root.enabled

    Rectangle {
        anchors.fill: parent
        rotation: root.turned ? 180 : 0
        radius: Theme.radiusCard
        color: root.listening ? Theme.primary : Theme.surface
        border.width: root.speaking ? 3 : 1
        border.color: root.listening || root.speaking ? Theme.primary : Theme.hairline

        Behavior on color {
            enabled: root.listening // the way back is at once: there is text to be read
            ColorAnimation {
                duration: Theme.quick
            }
        }

        Chip {
            id: chip

            turned: root.turned
            x: root.inset
            y: root.inset
            width: Math.min(chip.implicitWidth, root.width - 3 * root.inset - readAloud.width)
            name: qsTr("%1 language: %2").arg(root.who).arg(root.language)
            text: root.language
            ground: root.listening ? Theme.surface : Theme.primaryTint
            onPressed: root.languagePressed()
        }

        SpeechText {
            id: speech

            turned: root.turned
            x: root.low ? chip.x + chip.width + Theme.gapLarge : root.inset
            y: root.low ? root.inset : chip.y + chip.height + Theme.gapSmall
            width: (root.low ? readAloud.x - Theme.gapLarge : root.width - root.inset) - speech.x
            height: (root.low ? root.height - root.inset : mic.y - Theme.gapSmall) - speech.y
            visible: !root.listening && !dots.visible
            text: root.text
            prompt: root.prompting
            tint: root.prompting ? Theme.inkSoft : Theme.ink
        }

        SoundWave {
            anchors.centerIn: speech
            visible: root.listening
            running: root.listening
            bars: 9
            barWidth: 7
            tallest: Math.max(28, Math.min(96, speech.height * 0.75))
            tint: Theme.inkOnPrimary
        }

        BusyDots {
            id: dots

            anchors.centerIn: speech
            visible: root.busy && root.text.length === 0
            running: root.busy
            dot: 16
            tint: Theme.primary
        }

        BusyDots {
            x: root.low ? chip.x + Theme.gapLarge : readAloud.x - width - Theme.gapLarge
            y: (root.low ? root.height - root.inset - 22 : readAloud.y + readAloud.height / 2) - height / 2
            visible: root.busy && !dots.visible
            running: root.busy
            dot: root.low ? 12 : Math.max(6, Math.min(12, (readAloud.x - chip.x - chip.width - 2 * Theme.gapLarge) / 4.5))
            tint: Theme.primary
        }

        SoundWave {
            x: root.low ? chip.x + Theme.gapLarge : readAloud.x - width - Theme.gapSmall
            y: (root.low ? root.height - root.inset - 22 : readAloud.y + readAloud.height / 2) - height / 2
            visible: root.speaking
            running: root.speaking
            bars: root.low ? 5 : Math.max(1, Math.min(5, Math.floor((readAloud.x - chip.x - chip.width - Theme.gapLarge) / 8)))
            barWidth: 4
            tallest: 28
            tint: Theme.primary
        }

        RoundButton {
            id: readAloud

            turned: root.turned
            x: root.low ? mic.x - readAloud.width - root.inset : root.width - root.inset - readAloud.width
            y: root.low ? mic.y + (mic.height - readAloud.height) / 2 : chip.y + (chip.height - readAloud.height) / 2
            name: root.speaking ? qsTr("Stop reading aloud, %1").arg(root.who) : qsTr("Read aloud, %1").arg(root.who)
            checkable: true
            checked: root.speaking
            visible: root.readAloudShown
            diameter: 48
            ground: Theme.primaryTint
            picture: root.readAloudPicture
            onPressed: root.readAloudPressed()
        }

        MicButton {
            id: mic

            turned: root.turned
            x: root.low ? root.width - root.inset - mic.width - Theme.gapLarge : (root.width - mic.width) / 2
            y: root.low ? (root.height - mic.height) / 2 : root.height - root.inset - mic.height
            name: (root.listening ? qsTr("Stop listening, %1") : root.micEnabled ? qsTr("Microphone, %1") : qsTr("Microphone off, %1")).arg(root.who)
            diameter: root.micDiameter
            available: root.micEnabled
            listening: root.listening
            picture: root.micPicture
            onPressed: root.micPressed()
        }
    }
}
