import QtQuick

/// The host's type.
Text {
    id: root

    required property real size
    property real scaled: 1
    property int weight: Font.Normal

    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    color: "#14204A"
    font.pixelSize: Math.round(root.size * root.scaled)
    font.weight: root.weight
    Accessible.role: Accessible.StaticText
    Accessible.name: root.text
}
