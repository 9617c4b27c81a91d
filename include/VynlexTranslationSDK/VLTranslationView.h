#pragma once

#include <VynlexTranslationSDK/VLTranslationConfig.h>
#include <VynlexTranslationSDK/VynlexExport.h>

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace vynlex {

/// The host's handle on the kit: an item that shows nothing itself and from which the kit's screens are opened, over
/// all that the window shows.
///
/// Main thread. From QML it is `VLTranslationView` of the module `VynlexTranslationSDK`, and that engine draws the
/// kit's screens; for a view that is made in C++ the kit has an engine of its own. Screens that are shown stay when the
/// view goes; they go with the window. The user leaves them with Escape or the device's back key on the first screen.
class VYNLEX_EXPORT VLTranslationView : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    /// Without a size; it needs none.
    explicit VLTranslationView(QQuickItem *parent = nullptr);
    /// `frame`: place and size within `parent`, in points.
    explicit VLTranslationView(const QRectF &frame, QQuickItem *parent = nullptr);
    ~VLTranslationView() override;

    /// Keeps `config` for the life of the process in place of an earlier one, exchanges the signed-in user's `webToken`
    /// for the backend's, and opens the kit's first screen. Returns at once; the screen comes on the next turn of the
    /// event loop, in this item's window, or without one in the focused window. When there is no window then, nothing
    /// is shown.
    ///
    /// Neither is checked. With a refused token the screen stays empty, with a wrong key speech and translation fail;
    /// the host is not told. Each call opens the kit once more, above what is shown.
    Q_INVOKABLE virtual void setUpTranslationScreen(const QString &webToken, const vynlex::VLTranslationConfig &config);

private:
    struct Q_DECL_HIDDEN Core;
    std::unique_ptr<Core> m_core;
};

} // namespace vynlex
