import QtQuick
import VynlexTranslationSDK.Ui

/// A message over everything, with its actions below each other. Return answers the first, Escape the last.
FocusScope {
    id: root

    required property AlertController controller
    required property ScreenWindow window

    Accessible.role: Accessible.AlertMessage
    Accessible.name: root.controller.title
    Accessible.ignored: !root.enabled
    Accessible.description: root.controller.message

    Keys.onReturnPressed: root.controller.didPressAction(0)
    Keys.onEnterPressed: root.controller.didPressAction(0)
    Keys.onEscapePressed: root.controller.didPressAction(root.controller.actionTitles.length - 1)
    Keys.onPressed: event => scroller.take(event)

    Rectangle {
        anchors.fill: parent
        color: Theme.dimming
    }

    Rectangle {
        id: card

        readonly property real wanted: words.implicitHeight + actions.height + 2 * Theme.gapHuge + Theme.gapLarge

        anchors.centerIn: parent
        width: Math.min(340, root.width - 2 * Theme.gapHuge)
        height: Math.min(card.wanted, root.height - root.window.safeAreaTop - root.window.safeAreaBottom - 2 * Theme.gapHuge)
        radius: Theme.radiusSheet
        color: Theme.surface

        Scroller {
            id: scroller

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.bottom: actions.top
            anchors.margins: Theme.gapHuge
            anchors.bottomMargin: Theme.gapLarge
            contentHeight: words.implicitHeight

            Column {
                id: words

                width: parent.width
                spacing: Theme.gapSmall

                Text {
                    width: parent.width
                    text: root.controller.title
                    textFormat: Text.PlainText
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                    color: Theme.ink
                    font: Theme.font(root.controller.title, Theme.title, Font.DemiBold)
                    Accessible.role: Accessible.StaticText
                    Accessible.name: root.controller.title
                    Accessible.ignored: !root.enabled
                }
                Text {
                    width: parent.width
                    text: root.controller.message
                    textFormat: Text.PlainText
                    wrapMode: Text.Wrap
                    horizontalAlignment: Text.AlignHCenter
                    color: Theme.inkSoft
                    font: Theme.font(root.controller.message, Theme.body + 1, Font.Normal)
                    Accessible.role: Accessible.StaticText
                    Accessible.name: root.controller.message
                    Accessible.ignored: !root.enabled
                }
            }
        }

        Column {
            id: actions

            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.margins: Theme.gapHuge
            spacing: Theme.gapSmall

            Repeater {
                model: root.controller.actionTitles

                WideButton {
                    required property string modelData
                    required property int index

                    width: parent ? parent.width : 0 // qmllint disable unqualified
                    name: modelData
                    onPressed: root.controller.didPressAction(index) // qmllint disable unqualified
                }
            }
        }

        NumberAnimation on scale {
            from: 0.9
            to: 1
            duration: Theme.quick
            easing.type: Easing.OutCubic
        }
    }
}
