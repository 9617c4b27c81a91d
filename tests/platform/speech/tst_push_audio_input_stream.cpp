#include <QtTest>

#include <mutex>
#include <thread>

#include "platform/speech/PushAudioInputStream.h"

using namespace vynlex;

class TestPushAudioInputStream : public QObject {
    Q_OBJECT

private slots:
    void whatWasWrittenBeforeReachesALateReader()
    {
        auto stream = PushAudioInputStream::create();
        PushAudioInputStream copy = stream;
        stream.write("ab");
        copy.write("cd");
        stream.close();
        copy.write("after the end");
        copy.close();
        QVERIFY(copy.isClosed());

        QByteArray heard;
        int closed = 0;
        stream.setReader([&](const QByteArray &pcm) { heard += pcm; }, [&] { ++closed; });
        QCOMPARE(heard, "abcd");
        QCOMPARE(closed, 1);
    }

    void theReaderMayLetGoFromWithinACall()
    {
        auto stream = PushAudioInputStream::create();
        int calls = 0;
        stream.setReader(
            [&](const QByteArray &) {
                ++calls;
                stream.setReader({}, {});
            },
            [] { QFAIL("the reader had let go"); });
        stream.write("ab");
        stream.write("cd");
        stream.close();
        QCOMPARE(calls, 1);

        QByteArray heard;
        stream.setReader([&](const QByteArray &pcm) { heard += pcm; }, [] {});
        QCOMPARE(heard, "cd");
    }

    void nothingIsLostOrMixedWhileAReaderTakesOver()
    {
        auto stream = PushAudioInputStream::create();
        std::thread writer([stream]() mutable {
            for (int i = 0; i < 20'000; ++i)
                stream.write(QByteArray::number(i) + '\n');
            stream.close();
        });
        std::mutex mutex;
        QByteArray heard;
        bool closed = false;
        for (int i = 0; i < 100; ++i) {
            stream.setReader(
                [&](const QByteArray &pcm) {
                    const std::lock_guard lock(mutex);
                    heard += pcm;
                },
                [&] { closed = true; });
            stream.setReader({}, {});
        }
        writer.join();
        stream.setReader([&](const QByteArray &pcm) { heard += pcm; }, [&] { closed = true; });
        QVERIFY(closed);

        QByteArray expected;
        for (int i = 0; i < 20'000; ++i)
            expected += QByteArray::number(i) + '\n';
        QVERIFY(heard == expected);
    }
};

QTEST_GUILESS_MAIN(TestPushAudioInputStream)
#include "tst_push_audio_input_stream.moc"
