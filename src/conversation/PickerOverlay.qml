import QtQuick
import VynlexTranslationSDK.Ui
import VynlexTranslationSDK.Conversation

/// The language picker over a screen, while there is one. It takes the keys, and gives them back to who had them.
Loader {
    id: root

    /// Null while there is no picker.
    required property LanguageSelectionController sheet
    required property ScreenWindow window
    /// The screen below. It gets the keys that none of its controls had.
    required property Item screen

    /// Where the keys were before the picker took them.
    property Item opener: null

    // Set, not bound: the sheet's view must never see its controller become null.
    onSheetChanged: {
        if (root.sheet) {
            root.opener = root.Window.activeFocusItem;
            root.setSource("LanguageSelectionView.qml", {
                controller: root.sheet,
                window: root.window
            });
        } else {
            root.source = "";
            (root.opener ?? root.screen).forceActiveFocus(Qt.OtherFocusReason);
        }
    }
}
