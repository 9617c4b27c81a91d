import QtQuick
import VynlexTranslationSDK.Ui

/// The main action of a dialog or a screen: its title on the product's colour, behind a picture if it has one.
Tappable {
    id: root

    property string title: root.name
    property url picture
    property real radius: Theme.radiusSmall

    readonly property real pictureRoom: icon.status === Image.Ready ? icon.size + Theme.gapSmall : 0

    implicitWidth: root.pictureRoom + label.implicitWidth + 2 * Theme.gapHuge
    implicitHeight: Math.max(48, label.implicitHeight + Theme.gapLarge)
    focusRadius: root.radius

    Rectangle {
        anchors.fill: parent
        radius: root.radius
        color: Theme.primary

        Rectangle {
            anchors.fill: parent
            radius: root.radius
            color: Theme.pressedShade
            visible: root.down
        }
        Picture {
            id: icon

            anchors.right: label.left
            anchors.rightMargin: Theme.gapSmall
            anchors.verticalCenter: parent.verticalCenter
            picture: root.picture
        }
        Text {
            id: label

            anchors.centerIn: parent
            anchors.horizontalCenterOffset: root.pictureRoom / 2
            width: Math.min(label.implicitWidth, parent.width - root.pictureRoom - 2 * Theme.gap)
            text: root.title
            textFormat: Text.PlainText
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignHCenter
            color: Theme.inkOnPrimary
            font: Theme.font(root.title, Theme.body, Font.DemiBold)
            Accessible.ignored: true
        }
    }
}
