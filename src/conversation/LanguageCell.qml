import QtQuick
import VynlexTranslationSDK.Ui

/// One language of the picker: radio mark, name in its own script, a line below.
Tappable {
    id: root

    required property string optionLabel
    required property bool radioSelected
    required property url radioImage
    required property bool seperatorHidden

    name: root.optionLabel
    role: Accessible.RadioButton
    checkable: true
    checked: root.radioSelected
    Accessible.onToggleAction: root.pressFromAssistiveTool() // unheard, a radio button changes its mark by itself

    Keys.onUpPressed: root.nextItemInFocusChain(false).forceActiveFocus(Qt.BacktabFocusReason)
    Keys.onDownPressed: root.nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.gapSmall
        anchors.rightMargin: Theme.gapSmall
        radius: Theme.radiusSmall
        color: root.down ? Theme.primaryTint : Theme.surface
    }
    Picture {
        id: radio

        anchors.left: parent.left
        anchors.leftMargin: Theme.gapHuge
        anchors.verticalCenter: parent.verticalCenter
        picture: root.radioImage
    }
    Text {
        id: label

        anchors.left: radio.right
        anchors.leftMargin: Theme.gapLarge
        anchors.right: parent.right
        anchors.rightMargin: Theme.gapHuge
        anchors.verticalCenter: parent.verticalCenter
        text: root.optionLabel
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: root.radioSelected ? Theme.primary : Theme.ink
        font: Theme.font(root.optionLabel, Theme.body + 2, root.radioSelected ? Font.DemiBold : Font.Normal)
        Accessible.ignored: true
    }
    Rectangle {
        anchors.left: label.left
        anchors.right: label.right
        anchors.bottom: parent.bottom
        height: 1
        visible: !root.seperatorHidden
        color: Theme.hairline
    }
}
