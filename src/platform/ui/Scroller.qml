import QtQuick
import VynlexTranslationSDK.Ui

/// What is higher than its room scrolls, by finger and by keyboard.
Flickable {
    id: root

    readonly property bool scrolls: root.contentHeight > root.height

    /// For `Keys.onPressed` of whatever has the keys: arrows, Page Up and Down, Home and End.
    function take(event: var) {
        const page = Math.max(Theme.touch, root.height - Theme.touch);
        const step = {
            [Qt.Key_Up]: -Theme.touch,
            [Qt.Key_Down]: Theme.touch,
            [Qt.Key_PageUp]: -page,
            [Qt.Key_PageDown]: page,
            [Qt.Key_Home]: -root.contentHeight,
            [Qt.Key_End]: root.contentHeight
        }[event.key];
        event.accepted = root.scrolls && step !== undefined;
        if (!event.accepted)
            return;
        const from = glide.running ? glide.to : root.contentY;
        glide.to = Math.max(0, Math.min(root.contentHeight - root.height, from + step));
        glide.restart();
    }

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    interactive: root.scrolls
    onMovementStarted: glide.stop()

    NumberAnimation {
        id: glide

        target: root
        property: "contentY"
        duration: Theme.quick
        easing.type: Easing.OutQuad
    }
}
