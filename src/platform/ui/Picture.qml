import QtQuick

/// A picture of the kit in its own proportions. An empty source shows nothing.
Image {
    id: root

    required property url picture
    property int size: 24

    source: root.picture
    width: root.size
    height: root.size
    sourceSize.width: root.size
    sourceSize.height: root.size
    fillMode: Image.PreserveAspectFit
    smooth: true
    Accessible.ignored: true
}
