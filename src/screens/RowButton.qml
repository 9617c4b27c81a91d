import QtQuick
import VynlexTranslationSDK.Ui

/// A small button of a row: a picture over its title, or before it.
Tappable {
    id: root

    required property string title
    required property url picture

    property bool lying: false

    // The ring of one keeps clear of its own title and of the other's.
    implicitWidth: root.lying ? disc.width + Theme.gapTiny + Math.ceil(label.implicitWidth) + Theme.gapSmall : Math.max(52, Math.ceil(label.implicitWidth) + Theme.gapLarge)
    implicitHeight: root.lying ? Math.max(48, label.height) : disc.height + Theme.gapTiny / 2 + label.height
    focusOutset: 4
    focusRadius: Theme.radiusSmall

    Rectangle {
        id: disc

        x: root.lying ? 0 : (root.width - disc.width) / 2
        y: root.lying ? (root.height - disc.height) / 2 : 0
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

        x: root.lying ? disc.width + Theme.gapTiny : 0
        y: root.lying ? (root.height - label.height) / 2 : disc.height + Theme.gapTiny / 2
        width: root.width - label.x
        height: Math.ceil(Theme.small * Theme.fontScale * 1.4)
        text: root.title
        textFormat: Text.PlainText
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
        color: Theme.label
        font: Theme.font(root.title, Theme.small, Font.Normal)
        Accessible.ignored: true
    }
}
