import QtQuick
import VynlexTranslationSDK.Ui

/// Shows at a flickable's edge how much there is and where one stands; nothing when all of it is in sight.
Rectangle {
    id: root

    required property Flickable flickable

    /// Where one stands, from 0 at the beginning to 1 at the end.
    readonly property real place: root.flickable.visibleArea.yPosition / Math.max(0.001, 1 - root.flickable.visibleArea.heightRatio)

    y: root.flickable.y + root.place * (root.flickable.height - root.height)
    width: 4
    height: Math.max(Theme.gapHuge, root.flickable.visibleArea.heightRatio * root.flickable.height)
    radius: 2
    color: Theme.primarySoft
    visible: root.flickable.contentHeight > root.flickable.height
}
