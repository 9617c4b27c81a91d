#pragma once

#include <memory>

#include "platform/ui/NavigationController.h"

namespace vynlex {

/// The container that the kit's screens stand in. The presentation alone keeps it.
///
/// Main thread, held by `shared_ptr`.
class VynTranslationNavigationBar : public NavigationController,
                                    public std::enable_shared_from_this<VynTranslationNavigationBar> {
    Q_OBJECT
    QML_ANONYMOUS

public:
    using NavigationController::NavigationController;

    /// Presents this container over the top-most screen that there is on the next turn of the main queue. It is pushed
    /// in from the right if the top-most screen that there is now stands in a window.
    void presentOverTopScreen();
};

} // namespace vynlex
