import QtQuick
import VynlexTranslationSDK.Ui
import ConferaHost

/// Stands in for a microphone: sentences to say, in a window of their own.
Rectangle {
    id: root

    required property SayPanelController panel

    color: "#20242F"

    Text {
        id: hint

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 16
        }
        wrapMode: Text.Wrap
        text: root.panel.hint
        color: "#FFFFFF"
        font: Theme.font(hint.text, 15, Font.DemiBold)
    }
    ListView {
        id: list

        anchors {
            left: parent.left
            right: parent.right
            top: hint.bottom
            bottom: parent.bottom
            topMargin: 12
        }
        clip: true
        model: root.panel.sentences
        // qmllint disable unqualified
        delegate: Item {
            id: row

            required property int index
            required property string modelData

            width: list.width
            height: Math.max(44, label.implicitHeight + 16)
            Accessible.role: Accessible.Button
            Accessible.name: label.text
            Accessible.onPressAction: root.panel.say(row.index)

            Rectangle {
                anchors.fill: parent
                color: touch.pressed ? "#3A4152" : "transparent"
            }
            Text {
                id: label

                anchors {
                    left: parent.left
                    right: parent.right
                    verticalCenter: parent.verticalCenter
                    leftMargin: 16
                    rightMargin: 16
                }
                wrapMode: Text.Wrap
                text: row.modelData
                color: "#E7EBF8"
                font: Theme.font(label.text, 15, Font.Normal)
            }
            TapHandler {
                id: touch

                onTapped: root.panel.say(row.index)
            }
        }
        // qmllint enable unqualified
    }
}
