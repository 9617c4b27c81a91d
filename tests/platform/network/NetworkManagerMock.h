#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QFile>
#include <QObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "tests/fakes/Patience.h"

namespace vynlex {

class MockDevice final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.NetworkManager.Device")
    Q_PROPERTY(uint DeviceType MEMBER type)
public:
    uint type = 0;
};

class MockConnection final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.NetworkManager.Connection.Active")
    Q_PROPERTY(QList<QDBusObjectPath> Devices MEMBER devices)
public:
    QList<QDBusObjectPath> devices;
};

class MockManager final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.NetworkManager")
    Q_PROPERTY(uint State MEMBER state)
    Q_PROPERTY(QDBusObjectPath PrimaryConnection MEMBER primaryConnection)
public:
    uint state = 20;
    QDBusObjectPath primaryConnection{QStringLiteral("/")};
};

/// As much of NetworkManager as tells of the network, on a system bus of the test's own. The test's event loop answers.
class NetworkManagerMock {
public:
    // The numbers of its D-Bus interface.
    enum State : uint { Disconnected = 20, Connecting = 40, Local = 50, Site = 60, Global = 70 };
    enum Device : uint { Ethernet = 1, Wifi = 2, Modem = 8 };

    ~NetworkManagerMock()
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("mock"));
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    /// False when the bus does not come up. Sets the environment by which it is found.
    bool start()
    {
        const QString address = QStringLiteral("unix:path=") + m_folder.filePath(QStringLiteral("bus"));
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                        QStringLiteral("--address=") + address});
        const QString socket = m_folder.filePath(QStringLiteral("bus"));
        if (!m_daemon.waitForStarted() || !eventually([&] { return QFile::exists(socket); }))
            return false;
        auto bus = QDBusConnection::connectToBus(address, QStringLiteral("mock"));
        const auto properties = QDBusConnection::ExportAllProperties;
        bool exported = bus.registerObject(QStringLiteral("/org/freedesktop/NetworkManager"), &m_manager, properties);
        for (const Device type : {Ethernet, Wifi, Modem}) {
            auto *const device = new MockDevice;
            device->setParent(&m_manager);
            device->type = type;
            auto *const connection = new MockConnection;
            connection->setParent(&m_manager);
            connection->devices = {QDBusObjectPath(QStringLiteral("/device/%1").arg(type))};
            exported = exported && bus.registerObject(connection->devices.first().path(), device, properties) &&
                       bus.registerObject(connectionPath(type), connection, properties);
        }
        return exported && bus.registerService(QStringLiteral("org.freedesktop.NetworkManager"));
    }

    /// Tells of both at once, as NetworkManager does.
    void set(State state, Device primary = Ethernet)
    {
        m_manager.state = state;
        m_manager.primaryConnection = QDBusObjectPath(state < Local ? QStringLiteral("/") : connectionPath(primary));
        auto signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/NetworkManager"),
                                                 QStringLiteral("org.freedesktop.DBus.Properties"),
                                                 QStringLiteral("PropertiesChanged"));
        const QVariantMap changed{
            {QStringLiteral("State"), m_manager.state},
            {QStringLiteral("PrimaryConnection"), QVariant::fromValue(m_manager.primaryConnection)}};
        signal << QStringLiteral("org.freedesktop.NetworkManager") << changed << QStringList();
        QDBusConnection(QStringLiteral("mock")).send(signal);
    }

private:
    static QString connectionPath(Device type) { return QStringLiteral("/connection/%1").arg(type); }

    QTemporaryDir m_folder;
    QProcess m_daemon;
    MockManager m_manager;
};

} // namespace vynlex
