#pragma once

#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>

#include <chrono>
#include <memory>
#include <tl/expected.hpp>
#include <vector>

namespace examples {

/// How a process reaches a running sandbox.
struct SandboxAddress {
    quint16 proxyPort = 0;
    QString authorityFile; ///< The certificate authority, PEM.
};

/// Sets the application proxy and adds the sandbox's certificate authority to the default TLS configuration, so that
/// the kit's production addresses lead to the sandbox. An error is one clear line. Main thread.
tl::expected<void, QString> useSandbox(const SandboxAddress &address);

/// A running confera-sandbox.
///
/// Main thread. The sandbox ends with this object, and by itself when the process dies.
class SandboxProcess {
public:
    /// The program of this build.
    static QString defaultProgram();

    /// Starts the program, waits for its start-up line (30 s at most), and has this process use it. It keeps its data
    /// in `dataFolder`; unless one is given, in the user's own, from one start to the next. An error is one clear line.
    static tl::expected<std::unique_ptr<SandboxProcess>, QString> start(const QString &program,
                                                                        const QString &dataFolder = {});
    ~SandboxProcess();
    SandboxProcess(const SandboxProcess &) = delete;
    SandboxProcess &operator=(const SandboxProcess &) = delete;

    /// Keys and region that a sandbox started without any accepts.
    static vynlex::VLTranslationConfig configuration();

    /// One of the backend's open sockets, seen from there.
    struct Socket {
        QString userId; ///< empty: nobody has logged in
        qint64 pushed = 0;
        qint64 acknowledged = 0;
        qint64 problems = 0; ///< the client's mistakes
    };
    /// None when the sandbox does not answer.
    [[nodiscard]] std::vector<Socket> sockets() const;

    /// For other processes.
    [[nodiscard]] const SandboxAddress &address() const { return m_address; }

    // What is to happen to the next request to a path ("/translate", or "/contacts/*" for all below). An error is one
    // clear line.
    tl::expected<void, QString> delayNext(const QString &path, std::chrono::milliseconds delay) const;
    tl::expected<void, QString> answerNext(const QString &path, int httpStatus, const QByteArray &body = {}) const;

    /// Switches faults on, beside those that are on, in the words of the control port. An error is one clear line.
    tl::expected<void, QString> addFaults(const QJsonArray &faults) const;
    void clearFaults() const;

    /// Ends it as a crash would. What it has answered is on its disk.
    void kill();
    /// After `kill`: the same data at the same ports.
    tl::expected<void, QString> restart();
    /// While it is frozen its connections stand and nothing comes out of them, as when the network is gone.
    void setFrozen(bool frozen) const;

private:
    SandboxProcess() = default;
    tl::expected<void, QString> playOnce(QJsonObject fault) const;
    /// The answer's body, empty when there is none; waits 5 s at most.
    QByteArray control(const QByteArray &requestLine, const QByteArray &body = {}) const;
    tl::expected<void, QString> launch(const QStringList &arguments);
    tl::expected<void, QString> readStartUpLine();

    QProcess m_process;
    QString m_program;
    QStringList m_arguments;
    SandboxAddress m_address;
    quint16 m_tlsPort = 0;
    quint16 m_controlPort = 0;
};

} // namespace examples
