import QtQuick
import VynlexTranslationSDK.Ui

/// One message: a bubble with who, when, a play button and a wave. The user's own stand at the trailing edge, names there too.
///
/// All cells are of one height. The playing one is framed, the others are dimmed meanwhile.
FocusScope {
    id: root

    required property int index
    required property bool incoming
    required property string name
    required property string time
    required property bool playing
    required property bool dimmed
    required property url playImage
    required property url waveImage
    required property color bubbleColor

    /// Points between the bubble and its edge of the list.
    property real inset: Theme.gapLarge
    /// Whether the keyboard comes here first.
    property bool current: false

    signal playPressed
    signal selected

    readonly property string what: root.time.length > 0 ? `${root.name}, ${root.time}` : root.name
    /// Large letters want a line for the name and one for the time.
    readonly property bool twoLines: Theme.fontScale > 1.2
    readonly property real line: Theme.lineHeight(Theme.caption)

    height: bubble.height + Theme.gap
    opacity: root.dimmed ? Theme.dimmedRow : 1
    enabled: !root.dimmed

    Accessible.role: Accessible.ListItem
    Accessible.name: root.what
    Accessible.ignored: root.parent !== null && !root.parent.enabled // covered, not merely dimmed

    TapHandler {
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: root.selected()
    }

    Rectangle {
        id: bubble

        x: root.incoming ? root.inset : root.width - root.inset - bubble.width
        y: Theme.gap / 2
        width: Theme.bubbleWidth
        height: play.y + play.height + Theme.gapSmall
        radius: Theme.radiusBubble
        color: root.bubbleColor
        border.width: root.playing ? 2 : 0
        border.color: Theme.primary

        Text {
            id: who

            x: root.incoming || root.twoLines ? Theme.gap : bubble.width - Theme.gap - who.width
            y: Theme.gapSmall
            width: bubble.width - 2 * Theme.gap - (root.twoLines ? 0 : when.width + Theme.gapSmall)
            height: root.line
            text: root.name
            textFormat: Text.PlainText
            elide: Text.ElideRight
            // Where letters are large: rather smaller than cut.
            fontSizeMode: root.twoLines ? Text.HorizontalFit : Text.FixedSize
            minimumPixelSize: Math.round(Theme.caption * Math.max(1, 0.7 * Theme.fontScale))
            horizontalAlignment: root.incoming ? Text.AlignLeft : Text.AlignRight
            verticalAlignment: Text.AlignVCenter
            color: Theme.ink
            font: Theme.font(root.name, Theme.caption, Font.DemiBold)
            Accessible.ignored: true
        }
        Text {
            id: when

            x: root.incoming === root.twoLines ? Theme.gap : bubble.width - Theme.gap - when.width
            y: who.y + (root.twoLines ? root.line : 0) + who.baselineOffset - when.baselineOffset
            text: root.time
            textFormat: Text.PlainText
            color: Theme.ink
            font: Theme.font(root.time, Theme.small, Font.Normal)
            Accessible.ignored: true
        }
        RoundButton {
            id: play

            x: Theme.gap - (play.width - play.diameter) / 2
            y: who.y + (root.twoLines ? 2 : 1) * root.line + Theme.gapTiny / 2
            name: (root.playing ? qsTr("Stop playing, %1") : qsTr("Play, %1")).arg(root.what)
            checkable: true
            checked: root.playing
            focus: true
            activeFocusOnTab: root.current || play.activeFocus // Qt does not take it from where the keys are
            diameter: 40
            pictureSize: 40
            picture: root.playImage
            onPressed: root.playPressed()
        }
        Image {
            anchors.left: play.right
            anchors.right: parent.right
            anchors.rightMargin: Theme.gap
            anchors.verticalCenter: play.verticalCenter
            height: 32
            sourceSize.width: 119
            sourceSize.height: 32
            source: root.waveImage
            fillMode: Image.Pad
            Accessible.ignored: true
        }
    }
}
