import QtQuick

/// The host's button, for finger, keyboard and assistive tools.
Rectangle {
    id: root

    required property string text
    property real scaled: 1

    signal pressed

    implicitHeight: Math.max(50, label.height + 24)
    radius: 15
    color: tap.pressed ? "#DCE4FF" : "#FFFFFF"
    border.width: root.activeFocus ? 3 : 0
    border.color: "#7FA2FF"
    activeFocusOnTab: true

    Accessible.role: Accessible.Button
    Accessible.name: root.text
    Accessible.focusable: true
    Accessible.onPressAction: root.pressed()
    Keys.onSpacePressed: root.pressed()
    Keys.onReturnPressed: root.pressed()
    Keys.onEnterPressed: root.pressed()

    HostText {
        id: label

        anchors.verticalCenter: parent.verticalCenter
        x: 12
        width: root.width - 24
        horizontalAlignment: Text.AlignHCenter
        text: root.text
        size: 16
        scaled: root.scaled
        weight: Font.DemiBold
        Accessible.ignored: true
    }
    TapHandler {
        id: tap

        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: root.pressed()
    }
}
