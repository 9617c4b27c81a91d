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
        y: words.y + (words.height - picture.height) / 2
        initials: root.initials
        color: root.initialsColor
        radius: Theme.radiusInitials
    }
    Column {
        id: words

        readonly property real room: root.height - (root.stacked ? call.height + Theme.gap : 0)

        anchors.left: picture.right
        anchors.leftMargin: Theme.gap
        anchors.right: root.stacked ? parent.right : call.left
        anchors.rightMargin: root.stacked ? root.rightInset : Theme.gapSmall
        y: (words.room - words.height) / 2

        Text {
            id: title

            readonly property real room: words.room - Theme.gapSmall - (root.phoneNumberHidden ? 0 : number.height)
            // Rather smaller than cut.
            readonly property int size: Theme.fittingSize(root.name, title.width, title.room, Math.round(14 / Theme.fontScale), Theme.body, Font.DemiBold)

            width: parent.width
            text: root.name
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            maximumLineCount: Math.max(2, Math.floor(title.room / Theme.lineHeight(title.size)))
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

        x: root.stacked ? words.x : voice.x - call.width
        y: root.stacked ? words.room : (root.height - call.height) / 2
        lying: root.stacked
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

        x: root.stacked ? words.x + words.width / 2 : root.width - root.rightInset - voice.width + (voice.width > 52 ? 0 : Theme.gapSmall)
        y: call.y
        lying: root.stacked
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
