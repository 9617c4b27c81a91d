import QtQuick
import VynlexTranslationSDK

Window {
    id: root

    required property string webToken
    required property var config // a VLTranslationConfig

    width: 390
    height: 844
    visible: true

    VLTranslationView {
        id: translation

        Component.onCompleted: translation.setUpTranslationScreen(root.webToken, root.config)
    }
}
