import QtQuick

/// Bars that swing like a voice while `running`.
Row {
    id: root

    required property bool running
    property int bars: 5
    property real barWidth: 4
    property real tallest: 32
    property color tint: "black"

    /// Where the wave stands, in radians.
    property real phase

    spacing: root.barWidth
    height: root.tallest

    Repeater {
        model: root.bars

        Rectangle {
            id: bar

            required property int index

            // qmllint disable unqualified
            anchors.verticalCenter: parent ? parent.verticalCenter : undefined
            width: root.barWidth
            height: Math.max(root.barWidth, root.tallest * (0.25 + 0.75 * Math.abs(Math.sin(root.phase + bar.index * 0.85) * Math.cos(bar.index * 1.3))))
            radius: root.barWidth / 2
            color: root.tint
            // qmllint enable unqualified
        }
    }

    NumberAnimation on phase {
        from: 0
        to: 2 * Math.PI
        duration: 1600
        loops: Animation.Infinite
        running: root.running && root.visible
    }
}
