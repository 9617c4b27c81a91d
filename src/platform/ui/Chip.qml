import QtQuick
import VynlexTranslationSDK.Ui

/// A few words with an arrow behind them: they lead somewhere else.
Tappable {
    id: root

    required property string text
    property color ground: Theme.primaryTint
    property color edge: "transparent"
    property real largestWidth: 240

    implicitWidth: Math.min(root.largestWidth, label.implicitWidth + 2 * Theme.gapLarge + Theme.gapTiny + arrow.width)
    implicitHeight: Math.max(Theme.touch, Math.ceil(label.implicitHeight) + Theme.gapSmall)
    focusRadius: root.height / 2

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: root.ground
        border.width: 1
        border.color: root.edge

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            color: Theme.pressedShade
            visible: root.down
        }
        Text {
            id: label

            anchors.left: parent.left
            anchors.leftMargin: Theme.gapLarge
            anchors.right: arrow.left
            anchors.rightMargin: Theme.gapTiny
            anchors.verticalCenter: parent.verticalCenter
            font: Theme.font(root.text, Theme.body + 1, Font.DemiBold)
            text: root.text
            textFormat: Text.PlainText
            elide: Text.ElideRight
            color: Theme.primary
            Accessible.ignored: true
        }
        Picture {
            id: arrow

            anchors.right: parent.right
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            picture: Theme.image("chevronDown")
            size: 20
        }
    }
}
