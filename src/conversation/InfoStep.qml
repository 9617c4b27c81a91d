import QtQuick
import VynlexTranslationSDK.Ui

/// One line of an explanation: a picture, what to do, and what happens then.
Item {
    id: root

    required property url picture
    required property string title
    required property string text

    implicitHeight: Math.max(disc.height, words.implicitHeight)
    Accessible.role: Accessible.StaticText
    Accessible.name: root.title + ". " + root.text
    Accessible.ignored: !root.enabled

    Rectangle {
        id: disc

        width: 48
        height: 48
        radius: 24
        color: Theme.primaryTint

        Picture {
            anchors.centerIn: parent
            picture: root.picture
        }
    }

    Column {
        id: words

        anchors.left: disc.right
        anchors.leftMargin: Theme.gapLarge
        anchors.right: parent.right
        anchors.verticalCenter: words.implicitHeight < disc.height ? disc.verticalCenter : undefined
        spacing: 2

        Text {
            width: parent.width
            text: root.title
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: Theme.ink
            font: Theme.font(root.title, Theme.body + 1, Font.DemiBold)
            Accessible.ignored: true
        }
        Text {
            width: parent.width
            text: root.text
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: Theme.inkSoft
            font: Theme.font(root.text, Theme.body, Font.Normal)
            Accessible.ignored: true
        }
    }
}
