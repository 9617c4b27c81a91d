#pragma once

#include <VynlexTranslationSDK/VLTranslationConfig.h>

#include <QProcess>
#include <QString>

#include <chrono>
#include <memory>
#include <tl/expected.hpp>
#include <vector>

namespace examples {

/// A running confera-sandbox that the application's proxy and trust settings lead to.
///
/// Main thread. The sandbox ends with this object, and by itself when the process dies.
class SandboxProcess {
public:
    /// The program of this build.
    static QString defaultProgram();

    /// Starts the program, waits for its start-up line (30 s at most), sets the application proxy and adds the
    /// sandbox's certificate authority to the default TLS configuration. An error is one clear line.
    static tl::expected<std::unique_ptr<SandboxProcess>, QString> start(const QString &program);
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

    /// Makes the next translation take that long, so that a picture can be taken of the wait.
    void delayNextTranslation(std::chrono::milliseconds delay) const;

private:
    SandboxProcess() = default;
    /// The answer's body, empty when there is none; waits 5 s at most.
    QByteArray control(const QByteArray &requestLine, const QByteArray &body = {}) const;
    tl::expected<void, QString> readStartUpLine();

    QProcess m_process;
    quint16 m_controlPort = 0;
};

} // namespace examples
