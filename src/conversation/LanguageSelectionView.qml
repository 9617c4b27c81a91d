import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Conversation

/// The sheet on which one side chooses its language. It comes and goes with the spring of its controller, follows the finger while
/// it is dragged, and shows as many rows as the window has room for; the others scroll.
FocusScope {
    id: root

    required property LanguageSelectionController controller
    required property ScreenWindow window

    /// Not at rest yet: it comes, goes or springs back.
    readonly property bool moving: spring.running

    Accessible.role: Accessible.Dialog
    Accessible.name: root.controller.titleLabel.text
    Accessible.ignored: !root.enabled

    Keys.onEscapePressed: root.controller.didPressCloseButtonAction()

    Component.onCompleted: {
        root.forceActiveFocus(Qt.PopupFocusReason);
        if (root.controller.shown)
            sheet.enter();
    }

    Connections {
        target: root.controller

        function onShownChanged() {
            if (root.controller.shown)
                sheet.enter();
        }
        function onSheetOffsetChanged() {
            if (root.controller.dragging)
                sheet.follow(root.controller.sheetOffset);
            else
                sheet.springTo(root.controller.sheetOffset);
        }
    }

    Rectangle {
        id: dim

        anchors.fill: parent
        color: "black"
        opacity: 0

        // Set when there is something to fade from, so that the sheet never opens on a dark screen at once.
        states: State {
            name: "shown"
            when: root.controller.shown && sheet.entered
            PropertyChanges {
                dim.opacity: root.controller.backgroundAlpha
            }
        }
        transitions: Transition {
            NumberAnimation {
                property: "opacity"
                duration: root.controller.animationDuration
                easing.type: Easing.OutQuad
            }
        }

        MouseArea {
            anchors.fill: parent
            onClicked: root.controller.backgroundView.tap()
        }
    }

    Item {
        id: sheet

        property bool entered: false
        /// Points below the place where it rests; less than nothing while the spring overshoots.
        property real offset: root.height

        readonly property real header: 63

        function enter() {
            spring.stop();
            sheet.offset = root.controller.sheetHeight;
            sheet.entered = true;
            sheet.springTo(0);
        }
        function follow(offset: real) {
            spring.stop();
            sheet.offset = offset;
        }
        function springTo(offset: real) {
            spring.stop();
            spring.to = offset;
            spring.start();
        }

        x: Math.max(root.window.safeAreaLeft, (root.width - sheet.width) / 2)
        y: root.height - sheet.height + sheet.offset
        width: Math.min(root.width - root.window.safeAreaLeft - root.window.safeAreaRight, 560)
        height: Math.min(root.controller.sheetHeight, root.height - root.window.safeAreaTop - Theme.gapHuge)

        NumberAnimation {
            id: spring

            target: sheet
            property: "offset"
            duration: root.controller.animationDuration
            easing: root.controller.animationCurve
        }

        DragHandler {
            id: drag

            /// The last place, kept because a handler that ends has forgotten it.
            property real down: 0

            target: null
            xAxis.enabled: false
            onTranslationChanged: {
                if (!drag.active)
                    return;
                drag.down = drag.activeTranslation.y;
                root.controller.dragChanged(drag.down);
            }
            onActiveChanged: {
                if (!drag.active)
                    root.controller.dragEnded(drag.down);
                drag.down = 0;
            }
            onCanceled: root.controller.dragCancelled()
        }

        // Longer than the sheet: the spring must not show what is below it.
        Rectangle {
            width: sheet.width
            height: sheet.height + 80
            radius: Theme.radiusSheet
            color: Theme.surface

            // A tap beside the controls is not one on the dimmed screen below.
            MouseArea {
                anchors.fill: parent
            }
        }
        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            y: Theme.gapSmall
            width: 36
            height: 5
            radius: 2.5
            color: Theme.neutral
        }
        Text {
            anchors.left: parent.left
            anchors.leftMargin: Theme.gapHuge
            anchors.right: close.left
            anchors.verticalCenter: close.verticalCenter
            height: close.height
            text: root.controller.titleLabel.text
            textFormat: Text.PlainText
            elide: Text.ElideRight
            verticalAlignment: Text.AlignVCenter
            fontSizeMode: Text.Fit // rather smaller than cut
            minimumPixelSize: Theme.body
            color: Theme.ink
            font: Theme.font(root.controller.titleLabel.text, Theme.title, Font.DemiBold)
            Accessible.role: Accessible.Heading
            Accessible.name: root.controller.titleLabel.text
            Accessible.ignored: !root.enabled
        }
        RoundButton {
            id: close

            anchors.right: parent.right
            anchors.rightMargin: Theme.gapLarge
            y: Theme.gapLarge
            name: qsTr("Close")
            diameter: 36
            pictureSize: 20
            ground: Theme.background
            picture: root.controller.closeButton.currentImage
            onPressed: root.controller.didPressCloseButtonAction()
        }
        ListView {
            id: options

            y: sheet.header
            width: sheet.width
            height: sheet.height - sheet.header - Theme.gapSmall - root.window.safeAreaBottom
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            interactive: options.contentHeight > options.height
            model: root.controller.optionsTableView // qmllint disable type
            delegate: LanguageCell {
                required property int index

                width: options.width // qmllint disable unqualified
                height: 56
                onPressed: root.controller.didSelectRow(index) // qmllint disable unqualified
                // Who comes by keyboard sees where.
                onActiveFocusChanged: {
                    if (activeFocus)
                        ListView.view.positionViewAtIndex(index, ListView.Contain);
                }
            }
        }
        ScrollMark {
            x: sheet.width - Theme.gapSmall
            flickable: options
        }
    }
}
