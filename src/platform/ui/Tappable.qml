import QtQuick
import VynlexTranslationSDK.Ui

/// What every control does: finger, mouse, keyboard and assistive tools all end in `pressed()`. It draws only its focus; the children
/// of a control are what it looks like.
///
/// Each control takes its own touch point, so two people can press at the same time.
Item {
    id: root

    default property alias look: face.data

    required property string name
    /// Within something that stands on its head: so does what the control looks like, but not the control, because assistive tools
    /// take its place from its corner.
    property bool turned: false
    property bool checkable: false
    property bool checked: false
    property int role: Accessible.Button
    property real focusRadius: Theme.radiusSmall
    /// Points between the control's edges and the ring that shows the keyboard.
    property real focusOutset: 5
    readonly property bool down: tap.pressed || keyDown
    property bool keyDown: false

    signal pressed

    function press() {
        if (root.enabled)
            root.pressed();
    }
    function pressFromAssistiveTool() {
        if (!root.enabled)
            return;
        root.forceActiveFocus(Qt.OtherFocusReason); // where it comes back to from what the press opens
        root.press();
    }

    implicitWidth: Theme.touch
    implicitHeight: Theme.touch
    activeFocusOnTab: true
    rotation: root.turned ? 180 : 0

    Accessible.role: root.role
    Accessible.name: root.name
    Accessible.focusable: true
    Accessible.checkable: root.checkable
    Accessible.checked: root.checked
    // Covered, not merely out of use.
    Accessible.ignored: root.parent !== null && !root.parent.enabled
    Accessible.onPressAction: root.pressFromAssistiveTool()

    Keys.onPressed: event => {
        if (event.key === Qt.Key_Space || event.key === Qt.Key_Return || event.key === Qt.Key_Enter) {
            root.keyDown = true;
            event.accepted = true;
        }
    }
    Keys.onReleased: event => {
        if (!event.isAutoRepeat && root.keyDown) {
            root.keyDown = false;
            event.accepted = true;
            root.press();
        }
    }
    onActiveFocusChanged: root.keyDown = false

    Item {
        id: face

        anchors.fill: parent
        rotation: root.rotation
    }
    TapHandler {
        id: tap
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: root.press()
    }
    HoverHandler {
        cursorShape: Qt.PointingHandCursor
    }

    FocusRing {
        shown: root.activeFocus
        anchors.margins: -root.focusOutset
        radius: root.focusRadius + root.focusOutset
        z: 1
    }
}
