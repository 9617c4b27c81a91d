#pragma once

#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

#include "tests/fakes/Patience.h"

namespace vynlex {

/// A private sound server with one loudspeaker, which can be listened to, and one microphone, which can be spoken into:
/// both mono, 16 bits. Ends with the object.
class PulseServer {
public:
    static constexpr int speakerRateHz = 16000;
    static constexpr int microphoneRateHz = 48000;

    ~PulseServer()
    {
        end();
        for (const int pipe : {m_microphone, m_speaker})
            if (pipe >= 0)
                close(pipe);
    }

    /// False when it does not come up. Sets the environment by which clients find it.
    bool start()
    {
        QFile script(m_folder.filePath("setup.pa"));
        if (!script.open(QIODevice::WriteOnly))
            return false;
        const QString setup = QStringLiteral(
            "load-module module-pipe-sink sink_name=speaker file=%1/speaker format=s16le rate=%2 channels=1 "
            "use_system_clock_for_timing=yes\n"
            "load-module module-pipe-source source_name=microphone file=%1/microphone format=s16le rate=%3 channels=1\n"
            "set-default-sink speaker\n"
            "set-default-source microphone\n"
            "load-module module-native-protocol-unix auth-anonymous=1 socket=%1/native\n"); // last: all is there
        script.write(setup.arg(m_folder.path()).arg(speakerRateHz).arg(microphoneRateHz).toUtf8());
        script.close();
        // Nothing of the user's is read or written.
        for (const char *name :
             {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH"})
            qputenv(name, m_folder.path().toUtf8());
        qputenv("PULSE_SERVER", socketName().toUtf8().prepend("unix:"));

        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start("pulseaudio", {"-n", "-F", script.fileName(), "--exit-idle-time=-1", "--daemonize=no",
                                       "--use-pid-file=no", "--disable-shm=yes", "--high-priority=no"});
        if (!m_process.waitForStarted())
            return false;
        const bool up = eventually([this] {
            QLocalSocket socket;
            socket.connectToServer(socketName());
            return socket.waitForConnected(100);
        });
        // Opened for both directions, so that the pipe never ends.
        m_microphone = open(m_folder.filePath("microphone").toUtf8().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        m_speaker = open(m_folder.filePath("speaker").toUtf8().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        return up && m_microphone >= 0 && fcntl(m_speaker, F_SETPIPE_SZ, 1 << 20) > 0;
    }

    void end()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    /// What the room says into the microphone. False when it is full.
    bool speak(const QByteArray &pcm)
    {
        return ::write(m_microphone, pcm.constData(), static_cast<std::size_t>(pcm.size())) == pcm.size();
    }

    /// What the loudspeaker has played since the last call, silence included. It keeps half a minute.
    QByteArray listen()
    {
        QByteArray all;
        QByteArray block(65536, Qt::Uninitialized);
        for (ssize_t count = 0; (count = ::read(m_speaker, block.data(), static_cast<std::size_t>(block.size()))) > 0;)
            all += block.left(count);
        return all;
    }

    [[nodiscard]] QByteArray log() { return m_process.readAll(); }

private:
    [[nodiscard]] QString socketName() const { return m_folder.filePath("native"); }

    QTemporaryDir m_folder;
    QProcess m_process;
    int m_microphone = -1;
    int m_speaker = -1;
};

} // namespace vynlex
