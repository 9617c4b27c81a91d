import QtQuick
import VynlexTranslationSDK.Ui

/// What stands where a list has nothing to show: a faint picture and a sentence. It comes late, since a list that is empty for a
/// moment only says nothing.
Column {
    id: root

    required property bool shown
    required property string text
    required property url picture
    property int pictureWidth: 48
    property int pictureHeight: 48

    spacing: Theme.gap
    visible: root.opacity > 0
    opacity: 0

    states: State {
        name: "shown"
        when: root.shown
        PropertyChanges {
            root.opacity: 1
        }
    }
    transitions: Transition {
        to: "shown"
        SequentialAnimation {
            PauseAnimation {
                duration: Theme.patience
            }
            NumberAnimation {
                property: "opacity"
                duration: Theme.push
            }
        }
    }

    Image {
        anchors.horizontalCenter: parent.horizontalCenter
        sourceSize.width: root.pictureWidth
        sourceSize.height: root.pictureHeight
        source: root.picture
        opacity: 0.35
        Accessible.ignored: true
    }
    Text {
        width: root.width
        text: root.text
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        color: Theme.inkSoft
        font: Theme.font(root.text, Theme.body, Font.Normal)
        Accessible.role: Accessible.StaticText
        Accessible.name: root.text
        Accessible.ignored: !root.enabled
    }
}
