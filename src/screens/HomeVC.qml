import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Conversation
import VynlexTranslationSDK.Screens

/// The first screen: people in two tabs over one table, a search through them, and at the foot the way to the conversation
/// translator. On a phone that lies on its side the table stands beside the rest.
Rectangle {
    id: root

    required property HomeController controller
    required property ScreenWindow window

    color: Theme.surface
    Accessible.role: Accessible.Pane
    Accessible.name: root.controller.headerTitleLabel.text
    Accessible.ignored: !root.enabled

    // First the search, then the keyboard.
    Keys.onEscapePressed: event => {
        if (search.text.length > 0)
            root.controller.searchBarTextDidChange("");
        else if (search.editing)
            root.controller.searchBarCancelButtonClicked();
        else
            event.accepted = false;
    }

    Connections {
        target: root.controller // qmllint disable type

        function onSearchBarResignsFirstResponder() {
            search.resignFirstResponder();
        }
        function onDismissKeyboard() {
            search.endEditing();
        }
    }

    Item {
        id: face

        readonly property bool lying: face.height < Theme.low && face.width > Theme.wide
        readonly property real room: face.width - root.window.safeAreaLeft - root.window.safeAreaRight
        /// Tabs, search and picture stand below each other in this column.
        readonly property real columnWidth: (face.lying ? Math.min(320, face.room * 0.42) : Math.min(face.room, Theme.readableWidth)) - 2 * Theme.gapLarge
        readonly property real columnX: root.window.safeAreaLeft + (face.lying ? Theme.gapLarge : (face.room - face.columnWidth) / 2)

        /// Points between the right edge and what stands there, header and rows alike.
        readonly property real rightInset: face.lying ? root.window.safeAreaRight + Theme.gapLarge : face.width - face.columnX - face.columnWidth

        // Behind the picker nothing can be reached, by finger or keyboard.
        enabled: !picker.sheet
        anchors.fill: parent

        // Below the controls, so that it has only what none of them takes. A handler would see their taps as well.
        MouseArea {
            anchors.fill: parent
            onClicked: root.controller.dismissKeyboard()
        }

        Rectangle {
            id: header

            width: face.width
            height: Math.max(face.lying ? 0 : Theme.homeHeaderHeight, root.window.safeAreaTop + Theme.touch + 2 * Theme.gapTiny)
            color: Theme.primary

            Item {
                anchors.fill: parent
                anchors.topMargin: root.window.safeAreaTop
                anchors.leftMargin: Math.max(root.window.safeAreaLeft + 30, face.columnX)
                anchors.rightMargin: face.rightInset - (translate.width - translate.diameter) / 2

                Text {
                    anchors.left: parent.left
                    anchors.right: notification.left
                    height: parent.height
                    text: root.controller.headerTitleLabel.text
                    textFormat: Text.PlainText
                    elide: Text.ElideRight
                    verticalAlignment: Text.AlignVCenter
                    fontSizeMode: Text.HorizontalFit // rather smaller than cut
                    minimumPixelSize: Theme.body
                    color: root.controller.headerTitleLabel.textColor
                    font: Theme.font(root.controller.headerTitleLabel.text, Theme.body, Font.Bold)
                    Accessible.role: Accessible.Heading
                    Accessible.name: root.controller.headerTitleLabel.text
                    Accessible.ignored: !face.enabled
                }
                RoundButton {
                    id: notification

                    anchors.right: translate.left
                    anchors.rightMargin: Theme.gapTiny
                    anchors.verticalCenter: parent.verticalCenter
                    name: qsTr("Notifications")
                    diameter: 36
                    pictureSize: 20
                    ground: Theme.primaryLight
                    picture: root.controller.notificationButton.currentImage
                }
                RoundButton {
                    id: translate

                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    name: qsTr("Choose your language")
                    diameter: 36
                    pictureSize: 20
                    ground: Theme.primaryLight
                    picture: root.controller.translateButton.currentImage
                    onPressed: root.controller.didPressLanguageButtonTapped()
                }
            }
        }

        // The capsule's blue is its rim: the title of a tab that is not active is blue as well.
        Rectangle {
            id: tabs

            x: face.columnX
            y: header.height + (face.lying ? Theme.gapSmall : 20)
            width: face.columnWidth
            height: Theme.tabHeight
            radius: height / 2
            color: Theme.primary
            Accessible.role: Accessible.PageTabList
            Accessible.name: qsTr("People")
            Accessible.ignored: !face.enabled

            Rectangle {
                anchors.fill: parent
                anchors.margins: 2
                radius: height / 2
                color: Theme.surface
            }
            TabButton {
                id: contacts

                width: parent.width / 2
                height: parent.height
                button: root.controller.contactsButton
                active: root.controller.isContactsActive
                KeyNavigation.right: recents
                onPressed: root.controller.contactsButtonTapped()
            }
            TabButton {
                id: recents

                x: parent.width / 2
                width: parent.width / 2
                height: parent.height
                button: root.controller.recentsButton
                active: root.controller.isRecentsActive
                onPressed: root.controller.recentsButtonTapped()
            }
        }

        CustomSearchBar {
            id: search

            x: face.columnX
            y: tabs.y + tabs.height + (face.lying ? 0 : 10)
            width: face.columnWidth
            text: root.controller.searchBarText
            placeholder: qsTr("Search")
            KeyNavigation.down: people
            onEdited: text => root.controller.searchBarTextDidChange(text)
            onSearchPressed: root.controller.searchBarSearchButtonClicked()
        }

        PeopleList {
            id: people

            x: face.lying ? face.columnX + face.columnWidth : 0
            y: face.lying ? header.height : search.y + search.height + Theme.gapLarge
            width: face.width - x
            height: Math.max(0, (face.lying ? face.height : foot.y - Theme.gap) - y)
            leftInset: face.lying ? Theme.gapLarge : face.columnX
            rightInset: face.rightInset
            bottomInset: face.lying ? root.window.safeAreaBottom : 0
            controller: root.controller
        }

        Rectangle {
            y: people.y + people.height
            width: face.width
            height: 1
            visible: !face.lying
            color: Theme.hairline
        }
        Tappable {
            id: foot

            /// The picture's own.
            readonly property real radius: foot.height * 24 / 112

            x: face.columnX + (face.columnWidth - foot.width) / 2
            y: face.height - root.window.safeAreaBottom - Theme.gap - foot.height
            width: Math.min(face.columnWidth, Theme.footWidth)
            height: Math.round(foot.width * picture.implicitHeight / picture.implicitWidth)
            name: qsTr("Translate a conversation")
            focusRadius: foot.radius
            focusOutset: 3
            onPressed: root.controller.translateLanguageButtonTapped()

            Image {
                id: picture

                anchors.fill: parent
                sourceSize.width: foot.width
                source: root.controller.transitionImageView
                fillMode: Image.PreserveAspectFit
                Accessible.ignored: true
            }
            Rectangle {
                anchors.fill: parent
                radius: foot.radius
                color: Theme.pressedShade
                visible: foot.down
            }
        }

        ActivityIndicator {
            anchors.centerIn: parent
            running: root.controller.activityIndicatorAnimating
        }
    }

    PickerOverlay {
        id: picker

        anchors.fill: parent
        sheet: root.controller.languageSelectionView
        window: root.window
        screen: root
    }
}
