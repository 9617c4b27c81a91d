#include "api/HostInformation.h"

#include <QCoreApplication>
#include <QOperatingSystemVersion>
#include <QSysInfo>
#include <QVariant>
#include <QVersionNumber>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

/// On one line, since it goes into a header.
QString known(const QString &text)
{
    const QString line = text.simplified();
    return line.isEmpty() ? u"Unknown"_s : line;
}

QString nameOfExecutable()
{
    QString name = QCoreApplication::applicationName();
    if (!name.isEmpty() || !QCoreApplication::instance())
        return name;
    return QCoreApplication::arguments().value(0).section(u'/', -1);
}

QString reversedIdentifier()
{
    QStringList pieces = QCoreApplication::organizationDomain().split(u'.', Qt::SkipEmptyParts);
    if (pieces.isEmpty())
        return {};
    std::ranges::reverse(pieces);
    return pieces.join(u'.') + u'.' + nameOfExecutable();
}

QString runningSystem()
{
    const auto system = QOperatingSystemVersion::current(); // knows neither names nor versions of Linux systems
    const bool isKnown = !system.name().isEmpty() && system.majorVersion() >= 0;
    const auto version = isKnown ? QVersionNumber(system.majorVersion(), system.minorVersion(), system.microVersion())
                                 : QVersionNumber::fromString(QSysInfo::productVersion());
    const auto piece = [&](qsizetype index) { return std::max(0, version.segmentAt(index)); };
    return u"%1 %2.%3.%4"_s.arg(isKnown ? system.name() : QSysInfo::productType())
        .arg(piece(0))
        .arg(piece(1))
        .arg(piece(2));
}

} // namespace

HostInformation HostInformation::current()
{
    const QObject *const application = QCoreApplication::instance();
    return {
        .executableName = known(nameOfExecutable()),
        .version = known(QCoreApplication::applicationVersion()),
        .identifier = known(reversedIdentifier()),
        .buildNumber = known(application ? application->property("VynlexBuildNumber").toString() : QString()),
        .operatingSystem = runningSystem(),
    };
}

QString HostInformation::userAgent() const
{
    constexpr double libraryVersion = 1.0;
    return executableName + u'/' + version + " ("_L1 + identifier + "; build:"_L1 + buildNumber + "; "_L1 +
           operatingSystem + ") ConferaNetwork/"_L1 + QString::number(libraryVersion, 'f', 1);
}

} // namespace vynlex
