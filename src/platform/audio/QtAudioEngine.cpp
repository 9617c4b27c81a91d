#include "platform/audio/QtAudioEngine.h"

#include <QAudioSource>
#include <QIODevice>
#include <QMediaDevices>
#include <QTimer>

#include <memory>
#include <utility>

#include "platform/audio/AudioThread.h"
#include "platform/audio/QtFormat.h"
#include "platform/audio/TapSlot.h"
#include "platform/dispatch/Console.h"
#include "platform/dispatch/Guarded.h"

namespace vynlex {
namespace {

/// One run of the microphone. Lives on the audio thread.
class Recording {
public:
    Recording(const QAudioDevice &device, const AudioFormat &format)
        : m_source(device, toQt(format))
    {
        m_watchdog.setSingleShot(true);
        m_watchdog.setInterval(QtAudioEngine::watchdogMs);
        QObject::connect(&m_watchdog, &QTimer::timeout,
                         [] { consoleLine(QStringLiteral("The microphone is silent.")); });
    }

    ~Recording()
    {
        m_source.disconnect();
        m_source.stop();
    }

    Recording(const Recording &) = delete;
    Recording &operator=(const Recording &) = delete;

    /// `heard` gets what comes, in pieces of any size.
    bool start(std::function<void(const QByteArray &)> heard)
    {
        // With no server nothing is signalled: the error is there right after the call, or never.
        QIODevice *const device = m_source.start();
        if (!device || m_source.error() != QAudio::NoError)
            return false;
        QObject::connect(device, &QIODevice::readyRead, &m_watchdog, [this, device, heard = std::move(heard)] {
            const QByteArray data = device->readAll();
            if (data.isEmpty())
                return;
            m_watchdog.start();
            heard(data);
        });
        m_watchdog.start();
        return true;
    }

private:
    QAudioSource m_source;
    QTimer m_watchdog;
};

} // namespace

struct QtAudioEngine::Capture {
    TapSlot slot;
    Guarded<bool> running;
    std::unique_ptr<Recording> recording; ///< The audio thread's.

    tl::expected<void, QString> open()
    {
        const QAudioDevice device = QMediaDevices::defaultAudioInput();
        if (device.isNull())
            return tl::unexpected(QStringLiteral("There is no microphone."));
        const AudioFormat format = inputFormatOf(device);
        recording = std::make_unique<Recording>(device, format);
        const TapSlot::Session session = slot.open(format);
        if (recording->start([this, session](const QByteArray &data) { slot.feed(session, data); }))
            return {};
        recording.reset();
        slot.close();
        return tl::unexpected(QStringLiteral("The microphone cannot be opened."));
    }
};

QtAudioEngine::QtAudioEngine()
    : m_capture(std::make_shared<Capture>())
{
}

QtAudioEngine::~QtAudioEngine()
{
    QtAudioEngine::stop();
    QtAudioEngine::removeTap();
}

AudioFormat QtAudioEngine::inputFormat() const
{
    const auto format = std::make_shared<Guarded<AudioFormat>>();
    AudioThread::sync([format] { format->set(inputFormatOf(QMediaDevices::defaultAudioInput())); });
    return format->copy();
}

void QtAudioEngine::installTap(int bufferFrames, Tap tap)
{
    m_capture->slot.install(bufferFrames, std::move(tap));
}

void QtAudioEngine::removeTap()
{
    m_capture->slot.remove();
}

void QtAudioEngine::prepare() {}

tl::expected<void, QString> QtAudioEngine::start()
{
    if (m_capture->running.exchange(true))
        return {};
    using Result = tl::expected<void, QString>;
    const auto result = std::make_shared<Guarded<Result>>();
    const bool answered = AudioThread::sync([capture = m_capture, result] { result->set(capture->open()); });
    Result opened = answered ? result->copy() : tl::unexpected(QStringLiteral("The sound server does not answer."));
    if (!opened)
        stop();
    return opened;
}

void QtAudioEngine::stop()
{
    m_capture->running.set(false);
    m_capture->slot.close();
    AudioThread::async([capture = m_capture] { capture->recording.reset(); });
}

} // namespace vynlex
