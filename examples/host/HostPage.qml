import QtQuick
import VynlexTranslationSDK.Ui
import ConferaHost

/// The host's own screen: what a meeting application shows before its user wants a translator.
Rectangle {
    id: root

    required property HostPageController controller
    required property ScreenWindow window

    color: "#FFFFFF"

    Column {
        anchors.centerIn: parent
        width: Math.min(parent.width - 48, 420)
        spacing: 24

        Text {
            id: title

            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: qsTr("Confera")
            color: "#14204A"
            font: Theme.font(title.text, 34, Font.Bold)
        }
        Text {
            id: subtitle

            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: qsTr("This page belongs to the host application. What the kit shows opens over it.")
            color: "#56607F"
            font: Theme.font(subtitle.text, 16, Font.Normal)
        }
        WideButton {
            width: parent.width
            name: qsTr("Translate a conversation")
            onPressed: root.controller.didPressTranslateAction()
        }
        WideButton {
            width: parent.width
            visible: root.controller.chatPartner.length > 0
            name: qsTr("Voice chat with %1").arg(root.controller.chatPartner)
            onPressed: root.controller.didPressChatAction()
        }
    }
}
