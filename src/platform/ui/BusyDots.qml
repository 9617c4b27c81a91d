import QtQuick

/// Three dots that rise one after the other: something is on its way.
Row {
    id: root

    required property bool running
    property real dot: 12
    property color tint: "black"

    /// Which dot is up; runs from 0 to 3 and starts again.
    property real beat

    spacing: root.dot * 0.75
    height: root.dot * 2

    Repeater {
        model: 3

        Rectangle {
            id: dot

            required property int index
            // qmllint disable unqualified
            readonly property real lift: Math.max(0, 1 - Math.abs(root.beat - dot.index - 0.5))

            y: root.dot * (1 - dot.lift)
            width: root.dot
            height: root.dot
            radius: root.dot / 2
            color: root.tint
            opacity: 0.45 + 0.55 * dot.lift
            // qmllint enable unqualified
        }
    }

    NumberAnimation on beat {
        from: -0.5
        to: 3.5
        duration: 1100
        loops: Animation.Infinite
        running: root.running && root.visible
    }
}
