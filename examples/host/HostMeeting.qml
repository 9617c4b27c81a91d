import QtQuick

/// A meeting of the day.
Rectangle {
    id: root

    required property string time
    required property string title
    required property string people
    property real scaled: 1
    property bool compact: false

    implicitHeight: Math.max(root.compact ? 56 : 64, words.height + (root.compact ? 14 : 24))
    radius: 16
    color: "#FFFFFF"
    border.width: 1
    border.color: "#E1E5F2"

    HostText {
        id: clock

        x: 16
        anchors.verticalCenter: parent.verticalCenter
        width: Math.round(48 * root.scaled)
        text: root.time
        size: 15
        scaled: root.scaled
        weight: Font.DemiBold
        color: "#0F3CC9"
        wrapMode: Text.NoWrap
    }
    Column {
        id: words

        anchors.left: clock.right
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter

        HostText {
            width: parent.width
            text: root.title
            size: 16
            scaled: root.scaled
            weight: Font.DemiBold
        }
        HostText {
            width: parent.width
            text: root.people
            size: 13
            scaled: root.scaled
            color: "#5A6480"
        }
    }
}
