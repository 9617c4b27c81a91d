import QtQuick
import VynlexTranslationSDK.Ui

/// A picture on a round ground; touchable over at least 44 points, however small it is drawn.
Tappable {
    id: root

    required property url picture
    property real diameter: Theme.touch
    property int pictureSize: Theme.icon
    property color ground: "transparent"

    implicitWidth: Math.max(Theme.touch, root.diameter)
    implicitHeight: Math.max(Theme.touch, root.diameter)
    focusRadius: root.width / 2
    focusOutset: 5 - (root.width - root.diameter) / 2

    Rectangle {
        anchors.centerIn: parent
        width: root.diameter
        height: root.diameter
        radius: width / 2
        color: root.ground
        scale: root.down ? 0.94 : 1

        Behavior on scale {
            NumberAnimation {
                duration: Theme.quick
                easing.type: Easing.OutQuad
            }
        }
        Picture {
            anchors.centerIn: parent
            picture: root.picture
            size: root.pictureSize
        }
        Rectangle {
            anchors.fill: parent
            radius: width / 2
            color: Theme.pressedShade
            visible: root.down
        }
    }
}
