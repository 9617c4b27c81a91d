#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include "platform/audio/WavFile.h"
#include "tests/fakes/Rows.h"
#include "tests/fakes/Suite.h"

using namespace vynlex;

using SampleType = AudioFormat::SampleType;

namespace {

template<typename Number> QByteArray little(Number number)
{
    const auto swapped = qToLittleEndian(number);
    return {reinterpret_cast<const char *>(&swapped), sizeof swapped};
}

QByteArray chunk(const char *id, const QByteArray &contents)
{
    return QByteArray(id) + little(quint32(contents.size())) + contents + QByteArray(contents.size() & 1, '\0');
}

QByteArray formatChunk(int code, int channels, int rateHz, int bits)
{
    const int frameBytes = channels * bits / 8;
    return chunk("fmt ", little(quint16(code)) + little(quint16(channels)) + little(quint32(rateHz)) +
                             little(quint32(rateHz * frameBytes)) + little(quint16(frameBytes)) +
                             little(quint16(bits)));
}

QByteArray riff(const QByteArray &chunks)
{
    return "RIFF" + little(quint32(4 + chunks.size())) + "WAVE" + chunks;
}

float floatAt(const QByteArray &data, qsizetype index)
{
    return qFromLittleEndian<float>(data.constData() + 4 * index);
}

} // namespace

class TestWavFile : public QObject {
    Q_OBJECT

private slots:
    void whatIsWrittenIsRead_data()
    {
        addRows<double, int, bool>({
            {"speech", 16000.0, 1, false},
            {"float", 192000.0, 2, true},
        });
    }
    void whatIsWrittenIsRead()
    {
        const auto [rateHz, channels, isFloat] = currentRow<double, int, bool>();
        const QTemporaryDir folder;
        const QString path = folder.filePath("sound.wav");
        const AudioFormat format{rateHz, channels, isFloat ? SampleType::Float32 : SampleType::Int16};
        const PcmBuffer sound{format, QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08", 8).repeated(100)};
        QVERIFY(WavFile::write(path, sound));
        QVERIFY(WavFile::write(path, sound)); // replaces
        const auto read = WavFile::read(path);
        QVERIFY2(read, qPrintable(read ? QString() : read.error()));
        QVERIFY(read->format == format);
        QCOMPARE(read->data, sound.data);
    }

    /// The samples of every file: a quarter and minus a half of full scale.
    void everyWidthIsRead_data()
    {
        addRows<int, int, QByteArray>({
            {"8 bits", 1, 8, QByteArray("\xa0\x40", 2)},
            {"16 bits", 1, 16, little(qint16(8192)) + little(qint16(-16384))},
            {"24 bits", 1, 24, QByteArray("\0\0\x20\0\0\xc0", 6)},
            {"32 bits", 1, 32, little(qint32(1 << 29)) + little(qint32(-(1 << 30)))},
            {"float", 3, 32, little(0.25F) + little(-0.5F)},
            {"double", 3, 64, little(0.25) + little(-0.5)},
        });
    }
    void everyWidthIsRead()
    {
        const auto [code, bits, data] = currentRow<int, int, QByteArray>();
        const QByteArray extensible = formatChunk(0xFFFE, 1, 48000, bits).mid(8) + little(quint16(22)) +
                                      little(quint16(bits)) + little(quint32(4)) + little(quint16(code)) +
                                      QByteArray(14, '\x55');
        for (const QByteArray &header : {formatChunk(code, 1, 48000, bits), chunk("fmt ", extensible)}) {
            // Chunks that nobody knows are skipped, those of odd length with the byte that follows them.
            const auto sound = WavFile::parse(
                riff(chunk("LIST", "odd") + header + chunk("fact", "1234") + chunk("data", data)), "a.wav");
            QVERIFY2(sound, qPrintable(sound ? QString() : sound.error()));
            QCOMPARE(sound->frameLength(), 2);
            if (sound->format.sampleType == SampleType::Int16) {
                QCOMPARE(sound->data, little(qint16(8192)) + little(qint16(-16384)));
            } else {
                QCOMPARE(floatAt(sound->data, 0), 0.25F);
                QCOMPARE(floatAt(sound->data, 1), -0.5F);
            }
        }
    }

    void aSizeThatTheWriterDidNotKnowMeansTheRest()
    {
        const QByteArray file = riff(formatChunk(1, 1, 22050, 16)) + "data" + little(quint32(0x7FFFF000)) + "abcde";
        QCOMPARE(WavFile::parse(file, "a.wav").value().data, "abcd");
    }

    void whatCannotBeUsedIsNamedInOneSentence_data()
    {
        const QByteArray good = formatChunk(1, 1, 16000, 16);
        addRows<QByteArray, QString>({
            {"empty", {}, "a.wav is empty."},
            {"text", "Hello, world, this is not sound", "a.wav is not a WAV file."},
            {"cut in its format", riff("fmt " + little(quint32(16)) + "abc"),
             "a.wav is truncated: its header is not complete."},
            {"no data", riff(good), "a.wav is truncated: it ends before its sound."},
            {"cut in its sound", riff(good) + "data" + little(quint32(1000)) + QByteArray(600, 'x'),
             "a.wav is truncated: 600 of 1000 bytes of sound are there."},
            {"no sound", riff(good + chunk("data", "")), "a.wav holds no sound."},
            {"MP3", riff(formatChunk(0x55, 1, 16000, 16)), "a.wav is not PCM (format 85, 16 bits)."},
            {"slow", riff(formatChunk(1, 1, 4000, 16)), "a.wav has 4000 Hz; 8000 to 192000 are possible."},
            {"six channels", riff(formatChunk(1, 6, 48000, 16)), "a.wav has 6 channels; 1 or 2 are possible."},
        });
    }
    void whatCannotBeUsedIsNamedInOneSentence()
    {
        const auto [contents, sentence] = currentRow<QByteArray, QString>();
        const auto sound = WavFile::parse(contents, "a.wav");
        QVERIFY(!sound);
        QCOMPARE(sound.error(), sentence);
    }

    void aPlaceWithoutAFileIsNamed()
    {
        const QTemporaryDir folder;
        const QString missing = folder.filePath("no.wav");
        QCOMPARE(WavFile::read(missing).error(), missing + " is not there.");
        QCOMPARE(WavFile::read(folder.path()).error(), folder.path() + " is not a file.");
        const auto written = WavFile::write(folder.filePath("no/no.wav"), {{16000, 1, SampleType::Int16}, "ab"});
        QVERIFY(written.error().startsWith(folder.filePath("no/no.wav") + " cannot be written: "));
    }
};

template struct vynlex::InSuite<TestWavFile>;

#include "tst_wav_file.moc"
