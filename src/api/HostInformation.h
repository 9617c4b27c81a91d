#pragma once

#include <QString>

namespace vynlex {

/// The application that embeds the kit, as it introduces itself to the backend. What is not known is "Unknown".
struct HostInformation {
    QString executableName;
    QString version;
    QString identifier; ///< "example.confera.demo"
    QString buildNumber;
    QString operatingSystem; ///< Name and "major.minor.patch" of the running system: "iOS 17.4.1", "debian 12.0.0"

    /// From QCoreApplication: `applicationName` (else the last piece of the first argument), `applicationVersion`,
    /// `organizationDomain` turned around with the name behind it, and the dynamic property "VynlexBuildNumber" of the
    /// application object.
    static HostInformation current();

    [[nodiscard]] QString userAgent() const;
};

} // namespace vynlex
