#pragma once

#include <QString>
#include <QUrl>

namespace vynlex {

/// The kit's own resources, compiled into its library; never the host's.
class ResourceBundle {
public:
    /// Where an image can be loaded from, or an empty address when the bundle has none of this name. Nothing is
    /// reported then: the control shows no image.
    [[nodiscard]] static QUrl image(const QString &name);
};

} // namespace vynlex
