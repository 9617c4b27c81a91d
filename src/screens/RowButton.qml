import QtQuick
import VynlexTranslationSDK.Ui

/// A small button of a row: a picture over its title.
Tappable {
    id: root

    required property string title
    required property url picture

    implicitWidth: 52
    implicitHeight: 38 + Theme.gapTiny / 2 + label.height
    focusOutset: 4
    focusRadius: Theme.radiusSmall

    Rectangle {
        id: disc

        anchors.horizontalCenter: parent.horizontalCenter
        width: 38
        height: 38
        radius: 19
        color: Theme.primaryTint
        scale: root.down ? 0.92 : 1

        Behavior on scale {
            NumberAnimation {
                duration: Theme.quick
                easing.type: Easing.OutQuad
            }
        }
        Rectangle {
            anchors.fill: parent
            radius: width / 2
            color: Theme.pressedShade
            visible: root.down
        }
        Picture {
            anchors.centerIn: parent
            picture: root.picture
            size: 22
        }
    }
    Text {
        id: label

        anchors.top: disc.bottom
        anchors.topMargin: Theme.gapTiny / 2
        width: parent.width
        height: Math.ceil(Theme.small * Theme.fontScale * 1.4)
        text: root.title
        textFormat: Text.PlainText
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        fontSizeMode: Text.HorizontalFit // rather smaller than cut
        minimumPixelSize: Theme.small
        color: Theme.label
        font: Theme.font(root.title, Theme.small, Font.Normal)
        Accessible.ignored: true
    }
}
