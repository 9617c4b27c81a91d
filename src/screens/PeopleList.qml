import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Screens

/// The table of people. For the keyboard it is one row: up and down go to the others, left and right to its other button.
FocusScope {
    id: root

    required property HomeController controller

    /// Points between the list's edges and what is in its rows.
    property real leftInset: Theme.gapLarge
    property real rightInset: Theme.gapLarge
    /// Points at the foot that rows only scroll through.
    property real bottomInset: 0

    Accessible.role: Accessible.List
    Accessible.name: root.controller.isRecentsActive ? root.controller.recentsButton.title : root.controller.contactsButton.title
    Accessible.ignored: !root.enabled

    ListView {
        id: list

        /// Which button of a row the keyboard used last.
        property bool onVoice: false

        /// One for all: a place in the list is then a product, however long it is. Names in large type need a second line.
        readonly property real rowHeight: Math.round(Theme.rowHeight * Math.max(1, (list.stacked ? 1.25 : 0.85) * Theme.fontScale))
        /// Beside initials and buttons there is no room for names of this size.
        readonly property bool stacked: list.width - root.leftInset - root.rightInset - 166 < 110 * Theme.fontScale

        function keepRowInSight() {
            if (list.activeFocus && list.currentItem)
                list.positionViewAtIndex(list.currentIndex, ListView.Contain);
        }

        anchors.fill: parent
        bottomMargin: root.bottomInset
        focus: true
        clip: true
        reuseItems: true
        boundsBehavior: Flickable.StopAtBounds
        highlightFollowsCurrentItem: false
        keyNavigationEnabled: true
        model: root.controller.tableView // qmllint disable type

        delegate: UserCell {
            id: cell

            // qmllint disable unqualified
            width: list.width
            height: list.rowHeight
            leftInset: root.leftInset
            rightInset: root.rightInset
            current: cell.ListView.isCurrentItem
            voiceFirst: list.onVoice
            stacked: list.stacked
            // Out of use, but not gone: assistive tools would still see it.
            ListView.onPooled: cell.visible = false
            ListView.onReused: cell.visible = true
            onCallFocused: list.onVoice = false
            onVoiceFocused: list.onVoice = true
            // An assistive tool goes to any row; the list follows.
            onActiveFocusChanged: {
                if (cell.activeFocus)
                    list.currentIndex = cell.index;
            }
            onCallPressed: root.controller.callButtonTapped(cell.index)
            onVoicePressed: root.controller.voiceButtonTapped(cell.index)
            // qmllint enable unqualified
        }

        TapHandler {
            onTapped: root.controller.dismissKeyboard()
        }

        onDragStarted: root.controller.dismissKeyboard()
        onMovementEnded: {
            if (!list.activeFocus) // the keyboard enters where the finger went
                list.currentIndex = list.indexAt(1, list.contentY + list.rowHeight / 2);
        }
        onCurrentIndexChanged: list.keepRowInSight()
        onActiveFocusChanged: list.keepRowInSight()
    }

    ReadingOrder {
        cells: list.contentItem
    }
    Connections {
        target: root.controller.tableView // qmllint disable type

        function onModelReset() {
            list.currentIndex = 0;
        }
    }

    ScrollMark {
        x: root.width - root.rightInset + Theme.gapSmall
        flickable: list
    }

    EmptyNote {
        readonly property bool searching: root.controller.searchBarText.length > 0

        anchors.verticalCenter: parent.verticalCenter
        x: root.leftInset + (root.width - root.leftInset - root.rightInset - width) / 2
        width: Math.min(root.width - root.leftInset - root.rightInset, 320)
        shown: list.count === 0 && !root.controller.activityIndicatorAnimating
        picture: Theme.image(searching ? "magnifier" : root.controller.isRecentsActive ? "call_home" : "person")
        text: searching ? qsTr("Nobody found for “%1”").arg(root.controller.searchBarText) : root.controller.isRecentsActive ? qsTr("No recent calls yet") : qsTr("No contacts with a phone number")
    }
}
