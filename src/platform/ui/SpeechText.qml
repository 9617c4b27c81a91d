import QtQuick
import VynlexTranslationSDK.Ui

/// A text to be read from arm's length: as large as its room allows, centred; when even the smallest size is too long, it scrolls.
Item {
    id: root

    required property string text
    property bool prompt: false
    property color tint: Theme.ink
    property color ground: Theme.surface
    /// As with controls: what is seen stands on its head.
    property bool turned: false
    readonly property bool scrolls: scroller.scrolls

    readonly property int weight: root.prompt ? Font.Normal : Font.Medium
    readonly property int smallest: root.prompt ? Theme.promptSmallest : Theme.speechSmallest
    readonly property int largest: (root.prompt ? Theme.promptLargest : Theme.speechLargest) * (root.width > Theme.wide ? 1.4 : 1)
    readonly property int size: Theme.fittingSize(root.text, label.width, root.height, root.smallest, root.largest, root.weight)

    onTextChanged: scroller.contentY = 0

    activeFocusOnTab: root.scrolls
    rotation: root.turned ? 180 : 0
    Keys.onPressed: event => scroller.take(event)

    Accessible.role: Accessible.StaticText
    Accessible.name: root.text
    Accessible.ignored: !root.enabled || root.text.length === 0

    Item {
        anchors.fill: parent
        rotation: root.rotation

        Scroller {
            id: scroller

            anchors.fill: parent
            contentWidth: root.width
            contentHeight: label.height

            Text {
                id: label

                x: (root.width - label.width) / 2
                width: Math.min(root.width, Theme.readableWidth)
                height: Math.max(root.height, label.implicitHeight)
                font: Theme.font(root.text, root.size, root.weight)
                text: root.text
                textFormat: Text.PlainText
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
                color: root.tint
                Accessible.ignored: true
            }
        }

        // More to read above or below: the text fades out instead of being cut.
        Rectangle {
            anchors.top: parent.top
            width: root.width
            height: 28
            visible: root.scrolls && !scroller.atYBeginning
            gradient: Gradient {
                GradientStop {
                    position: 0
                    color: root.ground
                }
                GradientStop {
                    position: 1
                    color: Qt.rgba(root.ground.r, root.ground.g, root.ground.b, 0)
                }
            }
        }
        Rectangle {
            anchors.bottom: parent.bottom
            width: root.width
            height: 28
            visible: root.scrolls && !scroller.atYEnd
            gradient: Gradient {
                GradientStop {
                    position: 0
                    color: Qt.rgba(root.ground.r, root.ground.g, root.ground.b, 0)
                }
                GradientStop {
                    position: 1
                    color: root.ground
                }
            }
        }
        ScrollMark {
            x: root.width + Theme.gapTiny
            flickable: scroller
        }
        FocusRing {
            shown: root.activeFocus
            radius: Theme.radiusSmall
        }
    }
}
