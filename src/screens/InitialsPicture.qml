import QtQuick
import VynlexTranslationSDK.Ui

/// Stands for a person: initials on their colour, in a square with round corners; a circle unless told otherwise.
Rectangle {
    id: root

    required property string initials
    property real size: 50

    width: root.size
    height: root.size
    radius: root.size / 2
    Accessible.ignored: true

    Text {
        anchors.centerIn: parent
        width: root.size * 0.8
        height: root.size * 0.9
        text: root.initials
        textFormat: Text.PlainText
        // A picture: as large as it is drawn, whatever size the reader wants for texts.
        font: Theme.font(root.initials, root.size * 0.4 / Theme.fontScale, Font.DemiBold)
        fontSizeMode: Text.Fit
        minimumPixelSize: 6
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: Theme.inkOnPrimary
        // The brighter the colour below, the darker the rim that the white letters need.
        style: Text.Outline
        styleColor: Qt.rgba(0, 0, 0, 0.35 + 0.55 * (0.3 * root.color.r + 0.59 * root.color.g + 0.11 * root.color.b))
        Accessible.ignored: true
    }
}
