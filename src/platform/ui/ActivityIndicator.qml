import QtQuick
import VynlexTranslationSDK.Ui

/// A ring of spokes that turns while something is under way, on a ground that keeps it apart from what lies below.
Rectangle {
    id: root

    required property bool running
    property real size: 40

    readonly property int spokes: 12
    /// The brightest spoke; runs from 0 to the number of spokes and starts again.
    property int beat

    width: root.size * 2
    height: root.size * 2
    radius: Theme.radiusSheet
    color: Theme.surface
    border.width: 1
    border.color: Theme.hairline
    visible: root.running
    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Loading")
    Accessible.ignored: !root.enabled

    Repeater {
        model: root.spokes

        Item {
            id: spoke

            required property int index

            // qmllint disable unqualified
            anchors.centerIn: parent
            width: root.size
            height: root.size
            rotation: 360 * spoke.index / root.spokes
            opacity: 1 - 0.8 * ((root.beat - spoke.index + root.spokes) % root.spokes) / root.spokes

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: root.size * 0.1
                height: root.size * 0.28
                radius: width / 2
                color: Theme.spinner
                antialiasing: true
            }
            // qmllint enable unqualified
        }
    }

    NumberAnimation on beat {
        from: 0
        to: root.spokes
        duration: 1000
        loops: Animation.Infinite
        running: root.running
    }
}
