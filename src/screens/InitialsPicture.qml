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
        // The colour below may be a bright one.
        style: Text.Outline
        styleColor: "#66000000"
        Accessible.ignored: true
    }
}
