import QtQuick
import VynlexTranslationSDK

Window {
    required property var config // a VLTranslationConfig

    width: 390
    height: 844
    visible: true

    Component.onCompleted: console.info("Ready")
}
