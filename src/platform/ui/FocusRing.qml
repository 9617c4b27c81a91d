import QtQuick
import VynlexTranslationSDK.Ui

/// Shows where the keyboard is. Two colours, so that it stands out on every ground.
Rectangle {
    id: root

    required property bool shown

    anchors.fill: parent
    visible: root.shown
    color: "transparent"
    border.width: Theme.focusWidth
    border.color: Theme.ink

    Rectangle {
        anchors.fill: parent
        anchors.margins: Theme.focusWidth
        radius: Math.max(0, root.radius - Theme.focusWidth)
        color: "transparent"
        border.width: 2
        border.color: Theme.surface
    }
}
