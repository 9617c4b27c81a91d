import QtQuick
import VynlexTranslationSDK.Ui

/// The main action of a dialog: its name on the product's colour.
Tappable {
    id: root

    implicitWidth: label.implicitWidth + 2 * Theme.gapHuge
    implicitHeight: Math.max(48, label.implicitHeight + Theme.gapLarge)
    focusRadius: Theme.radiusSmall

    Rectangle {
        anchors.fill: parent
        radius: Theme.radiusSmall
        color: Theme.primary

        Rectangle {
            anchors.fill: parent
            radius: Theme.radiusSmall
            color: Theme.pressedShade
            visible: root.down
        }
        Text {
            id: label

            anchors.centerIn: parent
            width: Math.min(label.implicitWidth, parent.width - 2 * Theme.gap)
            text: root.name
            textFormat: Text.PlainText
            elide: Text.ElideRight
            horizontalAlignment: Text.AlignHCenter
            color: Theme.inkOnPrimary
            font: Theme.font(root.name, Theme.body, Font.DemiBold)
            Accessible.ignored: true
        }
    }
}
