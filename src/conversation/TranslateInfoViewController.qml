import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Conversation

/// How the translator works, in a few lines.
Rectangle {
    id: root

    required property TranslateInfoController controller
    required property ScreenWindow window

    color: Theme.background
    Accessible.role: Accessible.Dialog
    Accessible.name: heading.text
    Accessible.ignored: !root.enabled

    Keys.onEscapePressed: root.controller.didPressCloseButtonAction()
    Keys.onPressed: event => scroll.take(event)

    Scroller {
        id: scroll

        anchors.fill: parent
        contentWidth: root.width
        contentHeight: page.y + page.implicitHeight + Theme.gapHuge + root.window.safeAreaBottom

        Column {
            id: page

            x: (root.width - page.width) / 2
            y: root.window.safeAreaTop + Theme.gapLarge
            width: Math.min(560, root.width - 2 * Theme.gapHuge - root.window.safeAreaLeft - root.window.safeAreaRight)
            spacing: Theme.gapHuge

            Text {
                id: heading

                width: parent.width - close.width - Theme.gap
                height: Math.max(close.height, heading.implicitHeight)
                verticalAlignment: Text.AlignVCenter
                text: qsTr("How it works")
                wrapMode: Text.Wrap
                color: Theme.ink
                font: Theme.font(heading.text, Theme.headline, Font.Bold)
                Accessible.role: Accessible.Heading
                Accessible.name: heading.text
                Accessible.ignored: !root.enabled
            }
            Rectangle {
                width: parent.width
                height: 192
                radius: Theme.radiusCard
                color: Theme.surface
                border.width: 1
                border.color: Theme.hairline

                Image {
                    anchors.centerIn: parent
                    width: Math.min(320, parent.width - 2 * Theme.gap)
                    height: width / 2
                    sourceSize.width: 320
                    sourceSize.height: 160
                    source: Theme.image("infoConversation")
                    fillMode: Image.PreserveAspectFit
                    Accessible.ignored: true
                }
            }
            InfoStep {
                width: parent.width
                picture: Theme.image("infoFace")
                title: qsTr("Share one device")
                text: qsTr("Lay it between you. Each of you has a half that faces you.")
            }
            InfoStep {
                width: parent.width
                picture: Theme.image("infoSpeak")
                title: qsTr("Press your microphone and speak")
                text: qsTr("One sentence at a time. It stops by itself when you pause.")
            }
            InfoStep {
                width: parent.width
                picture: Theme.image("infoTranslate")
                title: qsTr("Read the translation")
                text: qsTr("Your words appear on your half, the translation on the other.")
            }
            InfoStep {
                width: parent.width
                picture: Theme.image("infoListen")
                title: qsTr("Hear it")
                text: qsTr("Press play and the text is read aloud in its own language.")
            }
            InfoStep {
                width: parent.width
                picture: Theme.image("infoSwap")
                title: qsTr("Choose and swap languages")
                text: qsTr("Tap a language to change it, or swap the two with the arrows.")
            }
        }
    }

    ScrollMark {
        x: root.width - root.window.safeAreaRight - Theme.gapSmall
        flickable: scroll
    }

    RoundButton {
        id: close

        anchors.right: parent.right
        anchors.rightMargin: Theme.gapLarge + root.window.safeAreaRight
        y: root.window.safeAreaTop + Theme.gapLarge
        name: qsTr("Close")
        diameter: 40
        ground: Theme.surface
        picture: Theme.image("cross")
        onPressed: root.controller.didPressCloseButtonAction()
    }
}
