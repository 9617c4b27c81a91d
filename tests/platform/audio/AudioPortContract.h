#pragma once

#include <QTest>

#include <atomic>
#include <functional>
#include <memory>

#include "platform/audio/AudioEngine.h"
#include "platform/audio/AudioPlayer.h"
#include "platform/dispatch/Guarded.h"
#include "tests/fakes/Patience.h"

/// What every adapter of a port promises, run over the fakes and over what ships.
namespace vynlex::contract {

/// Samples of 16 bits that are never zero, and never the same for a while, so that a lost, repeated or inserted one
/// shows.
inline QByteArray ramp(int count, int first = 0)
{
    QByteArray bytes;
    for (int i = first; i < first + count; ++i) {
        const auto sample = static_cast<std::int16_t>(i % 30011 + 1);
        bytes.append(reinterpret_cast<const char *>(&sample), sizeof sample);
    }
    return bytes;
}

/// An engine, and what makes its microphone deliver: `speak` runs in turn with the event loop until enough was heard.
struct Microphone {
    std::unique_ptr<AudioEngine> engine;
    std::function<void()> speak;
};

struct Heard {
    std::atomic<int> buffers = 0;
    std::atomic<int> wrong = 0;
    std::atomic<bool> onTestThread = false;

    AudioEngine::Tap tap(int frames, const AudioFormat &format)
    {
        return [this, frames, format, testThread = QThread::currentThread()](const PcmBuffer &buffer) {
            ++buffers;
            if (buffer.frameLength() != frames || buffer.format != format)
                ++wrong;
            if (QThread::currentThread() == testThread)
                onTestThread = true;
        };
    }
};

template<typename Condition> bool speakUntil(const Microphone &microphone, Condition condition)
{
    return eventually([&] {
        if (microphone.speak)
            microphone.speak();
        return condition();
    });
}

inline void engineKeepsItsPromises(const std::function<Microphone()> &make)
{
    Microphone microphone = make();
    AudioEngine &engine = *microphone.engine;
    Heard heard;
    Heard later;

    engine.removeTap(); // nothing there
    engine.stop();
    const AudioFormat format = engine.inputFormat();
    QVERIFY(format.sampleRateHz >= 8000);
    engine.installTap(1000, heard.tap(1000, format));
    engine.prepare();
    QVERIFY(engine.start());
    QVERIFY(engine.start()); // is running
    QVERIFY(speakUntil(microphone, [&] { return heard.buffers >= 3; }));

    // What is silent stays silent, and what comes after it is heard: so nothing is on its way any more.
    engine.removeTap();
    const int atRemoval = heard.buffers;
    engine.installTap(333, later.tap(333, format));
    QVERIFY(speakUntil(microphone, [&] { return later.buffers >= 3; }));
    QCOMPARE(heard.buffers.load(), atRemoval);

    engine.stop();
    const int atStop = later.buffers;
    engine.stop();
    if (microphone.speak)
        microphone.speak();
    QCOMPARE(later.buffers.load(), atStop);
    QVERIFY(engine.start());
    QVERIFY(speakUntil(microphone, [&] { return later.buffers > atStop; }));

    QCOMPARE(heard.wrong + later.wrong, 0);
    QVERIFY(!heard.onTestThread && !later.onTestThread);
    microphone.engine.reset(); // while it runs
    const int atEnd = later.buffers;
    if (microphone.speak)
        microphone.speak();
    QCOMPARE(later.buffers.load(), atEnd);
}

inline void aTapMayRemoveItselfAndStopTheEngine(const std::function<Microphone()> &make)
{
    const Microphone microphone = make();
    AudioEngine &engine = *microphone.engine;
    std::atomic<int> calls = 0;
    engine.installTap(100, [&](const PcmBuffer &) {
        engine.removeTap();
        engine.stop();
        ++calls;
    });
    QVERIFY(engine.start());
    QVERIFY(speakUntil(microphone, [&] { return calls == 1; }));
    engine.installTap(100, [&](const PcmBuffer &) { calls += 100; });
    QVERIFY(engine.start());
    QVERIFY(speakUntil(microphone, [&] { return calls > 100; }));
    engine.stop();
    QCOMPARE(calls % 100, 1);
}

/// How often `ended` has run, and with what.
struct Ends {
    Guarded<QStringList> all; ///< "" for success

    AudioPlayer::Ended callback()
    {
        return [this](const tl::expected<void, QString> &result) {
            all.with([&](QStringList &list) { list << (result ? QString("") : result.error()); });
        };
    }
    QStringList copy() { return all.copy(); }
};

/// `hearAll` lets the loudspeaker play what it has; it may be empty.
inline void playerKeepsItsPromises(const std::function<std::unique_ptr<AudioPlayer>()> &make,
                                   const std::function<void()> &hearAll)
{
    const AudioFormat format{16000, 1, AudioFormat::SampleType::Int16};
    const auto play = [&](Ends &ends) {
        auto player = make();
        [&] {
            const auto started = player->start(format);
            QVERIFY2(started, qPrintable(started ? QString() : started.error()));
        }();
        player->write(QByteArray(3200, '\x11'));
        player->write(QByteArray(3200, '\x22'));
        player->finish(ends.callback());
        return player;
    };

    Ends stopped;
    auto first = play(stopped);
    first->stop();
    first->stop();
    Ends destroyed;
    auto second = play(destroyed);
    second.reset();
    Ends heard;
    const auto third = play(heard);
    if (hearAll)
        hearAll();
    TRY_COMPARE(heard.copy(), QStringList{""});
    QCOMPARE(stopped.copy(), QStringList());
    QCOMPARE(destroyed.copy(), QStringList());
    third->stop(); // after the end
    QCOMPARE(heard.copy().size(), 1);

    auto unused = make();
    unused->stop();
    unused.reset();
}

} // namespace vynlex::contract
