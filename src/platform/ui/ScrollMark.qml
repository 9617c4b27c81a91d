import QtQuick
import VynlexTranslationSDK.Ui

/// Shows at a flickable's edge how much there is and where one stands; nothing when all of it is in sight.
Rectangle {
    id: root

    required property Flickable flickable

    y: root.flickable.y + root.flickable.visibleArea.yPosition * root.flickable.height
    width: 4
    height: root.flickable.visibleArea.heightRatio * root.flickable.height
    radius: 2
    color: Theme.primarySoft
    visible: root.flickable.contentHeight > root.flickable.height
}
