import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Screens

/// The messages, oldest first. Whoever sees the newest one goes on seeing the newest; whoever reads older ones keeps the place and
/// is offered the way down. For the keyboard it is one stop, with up and down inside.
FocusScope {
    id: root

    required property ChatController controller

    /// Points that the window's edges take from the rows.
    property real leftInset: 0
    property real rightInset: 0

    function showNewest() {
        list.following = true;
        list.unseen = false;
        list.follow();
    }

    Accessible.role: Accessible.List
    Accessible.name: qsTr("Messages")
    Accessible.ignored: !root.enabled

    ListView {
        id: list

        /// The newest message is in sight and is to stay there.
        property bool following: true
        /// A message came that has not been in sight yet.
        property bool unseen: false

        readonly property real room: list.width - root.leftInset - root.rightInset
        readonly property real sideMargin: Theme.gapLarge + Math.max(0, (list.room - Theme.readableWidth) / 2)
        readonly property bool atEnd: list.contentY + list.height >= list.originY + list.contentHeight - Theme.gapHuge

        function moved() {
            list.following = list.atEnd;
            list.unseen = list.unseen && !list.atEnd;
        }
        /// From within the list's own changes: it is laying its rows out then, and what it is told is lost.
        function followLater() {
            Qt.callLater(list.follow); // qmllint disable type
        }
        function follow() {
            if (!list.following)
                return;
            list.forceLayout();
            list.positionViewAtEnd();
            if (!list.activeFocus)
                list.currentIndex = list.count - 1;
        }
        function keepRowInSight() {
            if (!list.activeFocus || !list.currentItem)
                return;
            list.positionViewAtIndex(list.currentIndex, ListView.Contain);
            list.moved();
        }

        anchors.fill: parent
        anchors.bottomMargin: arrival.visible ? arrival.height + 2 * Theme.gapSmall : 0
        focus: true
        clip: true
        reuseItems: true
        boundsBehavior: Flickable.StopAtBounds
        highlightFollowsCurrentItem: false
        keyNavigationEnabled: true
        model: root.controller.chatTableView // qmllint disable type

        header: Item {
            height: Theme.gapSmall
        }
        footer: Item {
            height: Theme.gapSmall
        }
        delegate: ChatCell {
            id: cell

            // qmllint disable unqualified
            width: list.width
            inset: list.sideMargin + (cell.incoming ? root.leftInset : root.rightInset)
            current: cell.ListView.isCurrentItem
            // Out of use, but not gone: assistive tools would still see it.
            ListView.onPooled: cell.visible = false
            ListView.onReused: cell.visible = true
            onPlayPressed: {
                list.currentIndex = cell.index; // the others are out of reach while it plays
                root.controller.didPressPlayButton(cell.index);
            }
            onSelected: root.controller.didSelectRow(cell.index)
            // An assistive tool goes to any row; the list follows.
            onActiveFocusChanged: {
                if (cell.activeFocus)
                    list.currentIndex = cell.index;
            }
            // qmllint enable unqualified
        }

        onContentYChanged: {
            if (list.moving)
                list.moved();
        }
        onMovementEnded: {
            const lowest = list.indexAt(1, list.contentY + list.height - Theme.touch);
            if (!list.activeFocus && lowest >= 0)
                list.currentIndex = lowest; // the keyboard enters where the finger went
        }
        onCurrentIndexChanged: list.keepRowInSight()
        onActiveFocusChanged: list.keepRowInSight()
        onHeightChanged: list.followLater()
    }

    ReadingOrder {
        cells: list.contentItem
    }
    Connections {
        target: root.controller.chatTableView // qmllint disable type

        function onRowsInserted() {
            list.unseen = !list.following;
            list.followLater();
        }
        function onModelReset() {
            list.following = true;
            list.unseen = false;
            list.followLater();
        }
    }

    ScrollMark {
        x: root.width - root.rightInset - Theme.gapSmall
        flickable: list
    }

    Chip {
        id: arrival

        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: Theme.gapSmall
        visible: list.unseen
        name: qsTr("New message, show it")
        text: qsTr("New message")
        largestWidth: root.width - root.leftInset - root.rightInset - 2 * Theme.gapLarge
        ground: Theme.surface
        edge: Theme.primary
        onPressed: {
            root.showNewest();
            list.currentIndex = list.count - 1;
            list.forceActiveFocus(Qt.OtherFocusReason);
        }
    }

    EmptyNote {
        anchors.centerIn: parent
        width: Math.min(parent.width - root.leftInset - root.rightInset - 2 * Theme.gapHuge, 320)
        // While one is recorded there is no such button.
        shown: list.count === 0 && root.controller.panelState === ChatController.Idle
        picture: Theme.image("audioWave")
        pictureWidth: 119
        pictureHeight: 32
        text: qsTr("Press Voice Chat to record a message.")
    }
}
