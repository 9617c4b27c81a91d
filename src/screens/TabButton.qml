import QtQuick
import VynlexTranslationSDK.Ui

/// One of the tabs that share a capsule. Its colours come with its state.
Tappable {
    id: root

    required property ButtonState button
    required property bool active

    name: root.button.title
    role: Accessible.PageTab
    focusRadius: root.height / 2
    focusOutset: 3
    Accessible.selectable: true
    Accessible.selected: root.active

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        color: root.button.backgroundColor

        Rectangle {
            anchors.fill: parent
            radius: height / 2
            color: Theme.pressedShade
            visible: root.down
        }
        Text {
            anchors.fill: parent
            anchors.leftMargin: Theme.gap
            anchors.rightMargin: Theme.gap
            text: root.button.title
            textFormat: Text.PlainText
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            fontSizeMode: Text.HorizontalFit // rather smaller than cut
            minimumPixelSize: Theme.caption
            color: root.button.titleColor
            font: Theme.font(root.button.title, Theme.body, root.active ? Font.DemiBold : Font.Normal)
            Accessible.ignored: true
        }
    }
}
