import QtQuick
import VynlexTranslationSDK.Ui

/// A field to search with: a magnifier, what is searched for, and a way to clear it.
FocusScope {
    id: root

    /// What the bar shows. The user's own changes are told by `edited`.
    required property string text
    required property string placeholder

    /// The field has the keyboard; the bar itself may keep the focus without.
    readonly property bool editing: input.activeFocus

    signal edited(string text)
    signal searchPressed

    /// Gives up the keyboard, and what is being composed on it.
    function resignFirstResponder() {
        input.clear();
        root.endEditing();
    }
    /// Gives up the keyboard.
    function endEditing() {
        input.focus = false;
    }

    implicitHeight: Theme.searchHeight

    Rectangle {
        anchors.fill: parent
        anchors.topMargin: 5
        anchors.bottomMargin: 5
        radius: Theme.radiusField
        color: Theme.field
        border.width: input.activeFocus ? 2 : 0
        border.color: Theme.primary

        TapHandler {
            gesturePolicy: TapHandler.ReleaseWithinBounds
            onTapped: input.forceActiveFocus(Qt.MouseFocusReason)
        }
        Picture {
            id: magnifier

            anchors.left: parent.left
            anchors.leftMargin: Theme.gap
            anchors.verticalCenter: parent.verticalCenter
            picture: Theme.image("magnifier")
            size: 20
        }
        TextInput {
            id: input

            anchors.left: magnifier.right
            anchors.leftMargin: Theme.gapSmall
            anchors.right: clear.visible ? clear.left : parent.right
            anchors.rightMargin: clear.visible ? 0 : Theme.gap
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            clip: true
            focus: true
            activeFocusOnTab: true
            selectByMouse: true
            inputMethodHints: Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase
            EnterKey.type: Qt.EnterKeySearch
            text: root.text
            color: Theme.ink
            selectionColor: Theme.primarySoft
            selectedTextColor: Theme.ink
            font: Theme.font(input.displayText, Theme.body, Font.Normal)
            Accessible.role: Accessible.EditableText
            Accessible.name: root.placeholder
            Accessible.ignored: !root.enabled
            Accessible.searchEdit: true
            onTextEdited: root.edited(input.text)
            onAccepted: root.searchPressed()
        }
        Text {
            anchors.fill: input
            visible: input.displayText.length === 0
            text: root.placeholder
            textFormat: Text.PlainText
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            color: Theme.fieldHint
            font: Theme.font(root.placeholder, Theme.body, Font.Normal)
            Accessible.ignored: true
        }
        RoundButton {
            id: clear

            anchors.right: parent.right
            anchors.rightMargin: Theme.gapTiny / 2
            anchors.verticalCenter: parent.verticalCenter
            visible: root.text.length > 0
            name: qsTr("Clear the search")
            diameter: 28
            pictureSize: 16
            ground: Theme.surface
            picture: Theme.image("cross")
            onPressed: {
                root.edited("");
                input.forceActiveFocus(Qt.OtherFocusReason);
            }
        }
    }
}
