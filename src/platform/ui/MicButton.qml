import QtQuick
import VynlexTranslationSDK.Ui

/// The large microphone. Idle: the product's blue. Listening: white with rings that pulse. Disabled: grey and crossed out.
Tappable {
    id: root

    required property url picture
    property bool available: true
    property bool listening: false
    property real diameter: Theme.micDiameter
    /// How far the rings grow, in points of diameter.
    property real reach: 28

    implicitWidth: root.diameter
    implicitHeight: root.diameter
    focusRadius: root.width / 2
    enabled: root.available
    checkable: true
    checked: root.listening

    Repeater {
        model: 2

        Rectangle {
            id: ring

            required property int index

            // qmllint disable unqualified
            /// 0 at the button's edge to 1 where the ring has faded; the second follows half a turn behind.
            readonly property real travel: (pulse.turn + ring.index * 0.5) % 1

            anchors.centerIn: parent
            width: root.diameter + root.reach * ring.travel
            height: ring.width
            radius: ring.width / 2
            visible: root.listening
            color: "transparent"
            border.width: 4
            border.color: Theme.surface
            opacity: 0.8 * (1 - ring.travel)
            // qmllint enable unqualified
        }
    }

    NumberAnimation {
        id: pulse

        property real turn

        target: pulse
        property: "turn"
        from: 0
        to: 1
        duration: 1800
        loops: Animation.Infinite
        running: root.listening && root.visible
    }

    Rectangle {
        anchors.centerIn: parent
        width: root.diameter
        height: root.diameter
        radius: width / 2
        color: root.listening ? Theme.surface : root.available ? Theme.primary : Theme.disabled
        scale: root.down ? 0.94 : 1

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
            size: Math.round(root.diameter * 0.47)
        }
        Picture {
            anchors.centerIn: parent
            visible: !root.available
            picture: Theme.image("micSlash")
            size: Math.round(root.diameter * 0.47)
        }
    }
}
