#pragma once

#include <QMap>
#include <QNetworkProxyFactory>
#include <QTcpServer>
#include <QTemporaryDir>

#include <memory>
#include <optional>

#include "SandboxProcess.h"
#include "platform/audio/PcmBuffer.h"
#include "platform/audio/WavMicrophone.h"
#include "tests/fakes/CapturedConsole.h"
#include "tests/fakes/FakeContactStore.h"

namespace vynlex {
class VLNetworkClient;
}

namespace faults {

/// The world of one process: a sandbox, the ways to it, and the shipped adapters of the kit, on devices whose
/// microphone and loudspeaker are files.
///
/// Main thread, one per process. What the kit writes to standard output is collected.
class Laboratory {
public:
    /// Ends the process with one clear line when the sandbox does not start.
    Laboratory();
    ~Laboratory();

    examples::SandboxProcess &sandbox() { return *m_sandbox; }
    /// Nothing gets through while it is gone. Takes down the links of a process that has a network of its own, of which
    /// the kit is told as of any; elsewhere the sandbox stands still, and nobody is told.
    void setNetworkGone(bool gone);
    /// After it was killed.
    void restartSandbox();

    /// What somebody says into a microphone, and the words.
    [[nodiscard]] const vynlex::PcmBuffer &recording() const { return m_recording; }
    static QString sentence();

    /// The number of lines so far that begin like this.
    [[nodiscard]] qsizetype linesWith(const QString &beginning) const;
    void forgetLines();

    /// Where the backend keeps everything.
    [[nodiscard]] QString databaseFile() const { return m_folder.filePath(QStringLiteral("sandbox/backend.sqlite")); }

    /// The microphone that the next screen listens with, and where the next API manager counts its requests under way.
    void useNext(const vynlex::WavMicrophone &microphone, std::shared_ptr<int> requests);

    /// Where the connections to a host end up, other than with the sandbox.
    enum class WayOut { NobodyListens, ProxyRefuses, UntrustedCertificate };
    void lead(const QString &host, WayOut wayOut);
    void leadEverythingToTheSandbox();

private:
    class Ways;

    void installPlatform();
    void installWays();
    vynlex::PcmBuffer record();
    quint16 portOf(WayOut wayOut);

    QTemporaryDir m_folder;
    std::unique_ptr<vynlex::CapturedConsole> m_console = std::make_unique<vynlex::CapturedConsole>();
    bool m_hasCable = false; ///< The private network has a way into the world, to the kernel's mind.
    std::unique_ptr<vynlex::VLNetworkClient> m_listener; ///< To whether the network can be reached.
    bool m_isReachable = false;
    std::unique_ptr<examples::SandboxProcess> m_sandbox;
    std::unique_ptr<examples::SandboxProcess> m_impostor; ///< One whose authority nobody trusts.
    std::shared_ptr<QMap<QString, quint16>> m_ways;       ///< Proxies of hosts; the sandbox's is that of "".
    QTcpServer m_refusingProxy;
    vynlex::WavMicrophone m_nextMicrophone{vynlex::WavMicrophone::Pace::AsFastAsAccepted};
    std::shared_ptr<int> m_nextRequests = std::make_shared<int>();
    vynlex::PcmBuffer m_recording;
};

} // namespace faults
