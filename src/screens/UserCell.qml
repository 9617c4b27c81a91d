import QtQuick
import VynlexTranslationSDK.Ui

/// A person's row: initials, name and number, and the two ways to talk to them.
FocusScope {
    id: root

    required property int index
    required property string name
    required property string phoneNumber
    required property bool phoneNumberHidden
    required property string initials
    required property color initialsColor
    required property url callImage
    required property url voiceImage

    /// Points between the row's edges and what is in it.
    property real leftInset: Theme.gapLarge
    property real rightInset: Theme.gapLarge
    /// Whether the keyboard comes here first, and to which of the two buttons.
    property bool current: false
    property bool voiceFirst: false
    /// The buttons stand below name and number, because beside them these would have no room.
    property bool stacked: false

    /// As it is spoken; what is shown may end in blanks.
    readonly property string who: root.name.trim()

    signal callPressed
    signal voicePressed
    signal callFocused
    signal voiceFocused

    Accessible.role: Accessible.ListItem
    Accessible.name: root.phoneNumberHidden ? root.who : qsTr("%1, %2").arg(root.who).arg(root.phoneNumber)
    Accessible.ignored: !root.enabled

    InitialsPicture {
        id: picture

        anchors.left: parent.left
        anchors.leftMargin: root.leftInset
        anchors.verticalCenter: parent.verticalCenter
        initials: root.initials
        color: root.initialsColor
        radius: Theme.radiusInitials
    }
    Column {
        anchors.left: picture.right
        anchors.leftMargin: Theme.gap
        anchors.right: call.left
        anchors.rightMargin: Theme.gapSmall
        anchors.verticalCenter: parent.verticalCenter

        Text {
            id: title

            readonly property real room: root.height - Theme.gapSmall - (root.phoneNumberHidden ? 0 : number.height)
            // Rather smaller than cut.
            readonly property int size: Theme.fittingSize(root.name, title.width, title.room, Math.round(14 / Theme.fontScale), Theme.body, Font.DemiBold)

            width: parent.width
            text: root.name
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: 2
            elide: Text.ElideRight
            color: Theme.label
            font: Theme.font(root.name, title.size, Font.DemiBold)
            Accessible.ignored: true
        }
        Text {
            id: number

            width: parent.width
            height: Theme.lineHeight(Theme.caption)
            visible: !root.phoneNumberHidden
            text: root.phoneNumber
            textFormat: Text.PlainText
            elide: Text.ElideRight
            verticalAlignment: Text.AlignVCenter
            fontSizeMode: Text.Fit
            minimumPixelSize: Theme.small
            color: Theme.label
            font: Theme.font(root.phoneNumber, Theme.caption, Font.Normal)
            Accessible.ignored: true
        }
    }
    RowButton {
        id: call

        anchors.right: voice.left
        anchors.verticalCenter: parent.verticalCenter
        focus: !root.voiceFirst
        activeFocusOnTab: root.current || root.activeFocus // Qt does not take it from where the keys are
        name: qsTr("Call, %1").arg(root.who)
        title: qsTr("Call")
        picture: root.callImage
        Keys.onRightPressed: voice.forceActiveFocus(Qt.TabFocusReason)
        onActiveFocusChanged: {
            if (call.activeFocus)
                root.callFocused();
        }
        onPressed: root.callPressed()
    }
    RowButton {
        id: voice

        anchors.right: parent.right
        anchors.rightMargin: root.rightInset - Theme.gapSmall
        anchors.verticalCenter: parent.verticalCenter
        focus: root.voiceFirst
        activeFocusOnTab: call.activeFocusOnTab
        name: qsTr("Voice, %1").arg(root.who)
        title: qsTr("Voice")
        picture: root.voiceImage
        Keys.onLeftPressed: call.forceActiveFocus(Qt.BacktabFocusReason)
        onActiveFocusChanged: {
            if (voice.activeFocus)
                root.voiceFocused();
        }
        onPressed: root.voicePressed()
    }
    Rectangle {
        anchors.bottom: parent.bottom
        anchors.left: picture.right
        anchors.leftMargin: Theme.gap
        anchors.right: parent.right
        anchors.rightMargin: root.rightInset
        height: 1
        color: Theme.hairline
    }
}
