pragma Singleton

import QtQuick
import VynlexTranslationSDK.Ui // the module of this file: its C++ types come only when it is named

/// The one place for colours, sizes, type and motion. Lengths are points, times milliseconds.
QtObject {
    id: root

    // Colours of the product
    readonly property color primary: "#0F3CC9"
    readonly property color primarySoft: "#9EB5FA"
    readonly property color primaryTint: "#E7EBF8"
    readonly property color neutral: "#B5B5B5"
    readonly property color background: "#F2F5FF"

    // Colours that follow from them; text on its ground keeps a contrast of at least 4.5 to 1
    readonly property color surface: "#FFFFFF"
    readonly property color inkOnPrimary: "#FFFFFF"
    readonly property color ink: "#14204A"
    readonly property color inkSoft: "#56607F"
    readonly property color hairline: "#D5DCF2"
    readonly property color disabled: "#A3A9BC"
    readonly property color recording: "#C62828"
    readonly property color pressedShade: "#1A000000"
    readonly property color primaryLight: "#3358D4" // a control's ground on the product's blue
    readonly property color field: "#ECEEF3"
    readonly property color fieldHint: "#5F6472"
    readonly property color label: "#000000" // what a row of people says
    readonly property color spinner: "#85868C"
    readonly property color dimming: Qt.rgba(0, 0, 0, 0.45)

    // Type; the reader's font scale is applied by font()
    readonly property int small: 12
    readonly property int caption: 13
    readonly property int body: 16
    readonly property int title: 20
    readonly property int headline: 26
    /// Readable from 60 cm. A reader who asks for larger type gets it, but not so much that every text has to scroll.
    readonly property int speechSmallest: Math.round(20 / Math.sqrt(root.fontScale))
    readonly property int speechLargest: 40
    readonly property int promptSmallest: Math.round(14 / Math.sqrt(root.fontScale))
    readonly property int promptLargest: 28

    readonly property real fontScale: KitFont.scale

    // Spacing in steps of four
    readonly property int gapTiny: 4
    readonly property int gapSmall: 8
    readonly property int gap: 12
    readonly property int gapLarge: 16
    readonly property int gapHuge: 24

    readonly property int touch: 44
    readonly property int icon: 24
    readonly property int micDiameter: 76
    readonly property int roundButton: 52
    readonly property int radiusCard: 28
    readonly property int radiusSheet: 24
    readonly property int radiusSmall: 14
    readonly property int radiusBubble: 18
    readonly property int focusWidth: 3

    // The home
    readonly property int homeHeaderHeight: 80
    readonly property int tabHeight: 50
    readonly property int searchHeight: 60
    readonly property int rowHeight: 80
    readonly property int radiusField: 15
    readonly property int radiusInitials: 20
    /// The picture at the foot; wider it would be too high.
    readonly property int footWidth: 420

    // The chat
    readonly property int headerHeight: 104
    readonly property int bubbleWidth: 201
    readonly property real dimmedRow: 0.3
    /// Controls in a row that is wider are far from each other.
    readonly property int controlsWidth: 420

    /// Lines longer than this are tiring to read; wide screens centre their text in it.
    readonly property int readableWidth: 680

    /// Below this height a window is a phone's on its side.
    readonly property int low: 480
    /// From this width on a text has a tablet's room.
    readonly property int wide: 560

    // Motion
    readonly property int quick: 150
    readonly property int push: 300
    readonly property int modal: 400
    readonly property int breath: 700
    /// Before saying that there is nothing: it may be on its way.
    readonly property int patience: 700

    /// A picture that belongs to a view alone; those of controls come with their state.
    function image(name: string): url {
        return "qrc:/VynlexTranslationSDK/images/" + name + ".svg";
    }

    /// The font of `text`; `size` one of the type sizes above, `weight` a Font weight.
    function font(text: string, size: real, weight: int): font {
        // Reading the scale makes every binding follow it.
        return root.fontScale > 0 ? KitFont.fitting(text, size, weight) : undefined;
    }

    /// Room for one line of any script at `size`, in points.
    function lineHeight(size: real): real {
        return Math.ceil(size * root.fontScale * 1.6);
    }

    /// The largest size at which `text` has room; `smallest` when there is none.
    function fittingSize(text: string, width: real, height: real, smallest: int, largest: int, weight: int): int {
        return root.fontScale > 0 ? KitFont.largestFitting(text, width, height, smallest, largest, weight) : smallest;
    }
}
