#pragma once

#include "platform/contacts/Ebook.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/prctl.h>

#include <csignal>

#include "tests/fakes/Patience.h"

namespace vynlex {

/// Evolution Data Server with empty folders, on a session bus of the test's own that can start nothing else. The bus
/// takes it along when it ends.
class EvolutionServer {
public:
    static constexpr const char *registry = "org.gnome.evolution.dataserver.Sources5";
    static constexpr const char *addressBooks = "org.gnome.evolution.dataserver.AddressBook10";

    static bool isInstalled() { return !serviceFile(registry).isEmpty() && !serviceFile(addressBooks).isEmpty(); }

    ~EvolutionServer() { endBus(); }

    /// False when the bus does not come up. Sets the environment by which it is found. Starts no service yet.
    bool start()
    {
        for (const char *variable : {"HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            qputenv(variable, m_folder.path().toUtf8());
        qputenv("GSETTINGS_BACKEND", "memory"); // else it looks for a service that keeps settings
        qputenv("DBUS_SESSION_BUS_ADDRESS", address().toUtf8());
        QDir(m_folder.path()).mkdir("services");
        for (const char *service : {registry, addressBooks})
            QFile::copy(serviceFile(service), m_folder.filePath(QStringLiteral("services/%1.service").arg(service)));
        QFile configuration(m_folder.filePath("bus.conf"));
        const QString text =
            QStringLiteral(
                "<busconfig><type>session</type><listen>%1</listen><servicedir>%2</servicedir>"
                "<policy context='default'><allow send_destination='*'/><allow own='*'/><allow eavesdrop='true'/>"
                "</policy></busconfig>")
                .arg(address(), m_folder.filePath("services"));
        if (!configuration.open(QIODevice::WriteOnly) || configuration.write(text.toUtf8()) < 0)
            return false;
        configuration.close();
        m_daemon.setStandardErrorFile(QProcess::nullDevice());
        m_daemon.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); }); // also when the test crashes
        m_daemon.start("dbus-daemon", {"--nofork", "--nopidfile", "--config-file=" + configuration.fileName()});
        return m_daemon.waitForStarted() && eventually([this] {
                   QDBusConnection::disconnectFromBus(busName()); // one that failed would be given again
                   return QDBusConnection::connectToBus(address(), busName()).isConnected();
               });
    }

    void endBus()
    {
        QDBusConnection::disconnectFromBus(busName());
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

    /// 0 when it does not run.
    [[nodiscard]] static pid_t processOf(const char *service)
    {
        return static_cast<pid_t>(QDBusConnection(busName()).interface()->servicePid(service).value());
    }

    /// Sends a signal to the process of a service, which is started before: it ends by itself when nobody uses it.
    static void send(const char *service, int signal)
    {
        QDBusConnection(busName()).interface()->startService(service);
        const pid_t process = processOf(service);
        QVERIFY(process > 0);
        kill(process, signal);
        if (signal == SIGKILL)
            TRY_VERIFY(processOf(service) != process); // the bus has noticed
    }

    /// Adds cards to the address book that is there from the start. What was complained of; empty if nothing.
    static QString add(const QList<QByteArray> &cards)
    {
        GErrorSlot error;
        const GObjectPointer<ESourceRegistry> sources(e_source_registry_new_sync(nullptr, error));
        if (!sources)
            return error.text();
        const GObjectPointer<ESource> source(e_source_registry_ref_builtin_address_book(sources.get()));
        const GObjectPointer<EClient> client(
            e_book_client_connect_sync(source.get(), static_cast<guint32>(-1), nullptr, error));
        if (!client)
            return error.text();
        GSList *contacts = nullptr;
        for (const QByteArray &card : cards)
            contacts = g_slist_prepend(contacts, e_contact_new_from_vcard(card.constData()));
        const bool added = e_book_client_add_contacts_sync(E_BOOK_CLIENT(client.get()), contacts,
                                                           E_BOOK_OPERATION_FLAG_NONE, nullptr, nullptr, error);
        g_slist_free_full(contacts, g_object_unref);
        return added ? QString() : error.text();
    }

    /// Adds an address book of a kind that the server does not know. It is noticed when the server starts.
    void addBrokenBook()
    {
        QFile source(m_folder.filePath("evolution/sources/broken.source"));
        QVERIFY(source.open(QIODevice::WriteOnly));
        source.write("[Data Source]\nDisplayName=Broken\nEnabled=true\nParent=local-stub\n"
                     "[Address Book]\nBackendName=unknown\n");
    }

private:
    [[nodiscard]] QString address() const { return "unix:path=" + m_folder.filePath("bus"); }
    static QString busName() { return QStringLiteral("evolution"); }
    static QString serviceFile(const char *service)
    {
        return QStandardPaths::locate(QStandardPaths::GenericDataLocation,
                                      QStringLiteral("dbus-1/services/%1.service").arg(service));
    }

    QTemporaryDir m_folder;
    QProcess m_daemon;
};

} // namespace vynlex
