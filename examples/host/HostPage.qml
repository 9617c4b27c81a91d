import QtQuick
import VynlexTranslationSDK

/// The host's own page: what a meeting application shows its user, with the one button that opens the kit. On a wide and low
/// window the two cards stand beside each other.
Rectangle {
    id: root

    required property string userName
    required property string webToken
    required property var config // a VLTranslationConfig
    /// Of all text; 1 is the design's size.
    required property real textScale

    readonly property string givenName: root.userName.split(" ")[0]
    readonly property bool lying: root.width > root.height && root.width > 600
    readonly property real margin: root.width < 360 ? 16 : 24

    color: "#F4F5FA"

    VLTranslationView {
        id: translation
    }

    Flickable {
        id: scroll

        anchors.fill: parent
        contentWidth: root.width
        contentHeight: page.height
        boundsBehavior: Flickable.StopAtBounds
        interactive: scroll.contentHeight > scroll.height

        Item {
            id: page

            x: (root.width - page.width) / 2
            width: Math.min(root.width, root.lying ? 960 : 620)
            height: cards.y + cards.height + root.margin

            Item {
                id: bar

                x: root.margin
                y: root.lying ? 12 : 20
                width: page.width - 2 * root.margin
                height: 44

                Rectangle {
                    id: mark

                    anchors.verticalCenter: parent.verticalCenter
                    width: 36
                    height: 36
                    radius: 11
                    color: "#14204A"

                    Rectangle {
                        x: 8
                        y: 9
                        width: 13
                        height: 18
                        radius: 4
                        color: "#FFFFFF"
                    }
                    Rectangle {
                        x: 23
                        y: 13
                        width: 6
                        height: 10
                        radius: 2
                        color: "#7FA2FF"
                    }
                }
                HostText {
                    anchors.left: mark.right
                    anchors.leftMargin: 10
                    anchors.verticalCenter: parent.verticalCenter
                    text: qsTr("Confera")
                    size: 20
                    scaled: root.textScale
                    weight: Font.Bold
                }
                Rectangle {
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    width: 40
                    height: 40
                    radius: 20
                    color: "#DCE4FF"

                    HostText {
                        anchors.centerIn: parent
                        text: root.userName.split(" ").map(word => word.charAt(0)).join("")
                        size: 15
                        weight: Font.DemiBold
                        color: "#1B3A9C"
                    }
                }
            }

            HostText {
                id: greeting

                x: root.margin
                y: bar.y + bar.height + (root.lying ? 8 : 24)
                width: page.width - 2 * root.margin
                text: root.givenName.length > 0 ? qsTr("Hello, %1").arg(root.givenName) : qsTr("Hello")
                size: 30
                scaled: root.textScale
                weight: Font.Bold
            }
            HostText {
                id: signedIn

                x: root.margin
                y: greeting.y + greeting.height + 2
                width: greeting.width
                text: root.userName.length > 0 ? qsTr("Signed in as %1").arg(root.userName) : qsTr("Nobody is signed in")
                size: 15
                scaled: root.textScale
                color: "#5A6480"
            }

            Item {
                id: cards

                readonly property real half: (page.width - 3 * root.margin) / 2

                x: root.margin
                y: signedIn.y + signedIn.height + (root.lying ? 14 : 24)
                width: page.width - 2 * root.margin
                height: Math.max(today.y + today.height, speak.y + speak.height)

                Rectangle {
                    id: speak

                    width: root.lying ? cards.half : cards.width
                    height: offer.height + 40
                    radius: 24
                    gradient: Gradient {
                        GradientStop {
                            position: 0
                            color: "#14204A"
                        }
                        GradientStop {
                            position: 1
                            color: "#22398A"
                        }
                    }

                    Column {
                        id: offer

                        x: 20
                        y: 20
                        width: speak.width - 40
                        spacing: 8

                        HostText {
                            width: parent.width
                            text: qsTr("Speak with anyone")
                            size: 20
                            scaled: root.textScale
                            weight: Font.Bold
                            color: "#FFFFFF"
                        }
                        HostText {
                            width: parent.width
                            text: qsTr("Six languages, face to face or as voice messages to your contacts.")
                            size: 15
                            scaled: root.textScale
                            color: "#D5DEFF"
                        }
                        Item {
                            width: 1
                            height: 4
                        }
                        HostButton {
                            width: parent.width
                            text: qsTr("Open VynTranslate")
                            scaled: root.textScale
                            onPressed: translation.setUpTranslationScreen(root.webToken, root.config)
                        }
                    }
                }

                Column {
                    id: today

                    x: root.lying ? cards.half + root.margin : 0
                    y: root.lying ? 0 : speak.height + 24
                    width: root.lying ? cards.half : cards.width
                    spacing: root.lying ? 8 : 10

                    HostText {
                        text: qsTr("Today")
                        size: 17
                        scaled: root.textScale
                        weight: Font.Bold
                    }
                    HostMeeting {
                        width: parent.width
                        time: "10:30"
                        title: qsTr("Design review")
                        people: qsTr("Rohan Mehta and 4 others")
                        scaled: root.textScale
                        compact: root.lying
                    }
                    HostMeeting {
                        width: parent.width
                        time: "14:00"
                        title: qsTr("Festival arrangements")
                        people: qsTr("Meera Iyer and 2 others")
                        scaled: root.textScale
                        compact: root.lying
                    }
                    HostMeeting {
                        width: parent.width
                        time: "17:15"
                        title: qsTr("Site visit")
                        people: qsTr("Vikram Shah")
                        scaled: root.textScale
                        compact: root.lying
                    }
                }
            }
        }
    }
}
