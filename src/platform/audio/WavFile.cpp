#include "platform/audio/WavFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

namespace vynlex {
namespace {

constexpr qint64 maximumFileBytes = qint64(512) << 20;
constexpr std::uint32_t unknownSize = 0x7FFFF000;

constexpr std::uint16_t integerPcm = 1;
constexpr std::uint16_t floatingPoint = 3;
constexpr std::uint16_t extensible = 0xFFFE;

using SampleType = AudioFormat::SampleType;

/// Reads on the caller's word that the bytes are there.
template<typename Number> Number numberAt(QByteArrayView bytes, qsizetype offset)
{
    return qFromLittleEndian<Number>(bytes.data() + offset);
}

struct Encoding {
    std::uint16_t code = 0;
    std::uint16_t channels = 0;
    std::uint32_t rateHz = 0;
    std::uint16_t bits = 0;
};

/// Nothing when the chunk is too short.
std::optional<Encoding> encodingOf(QByteArrayView chunk)
{
    if (chunk.size() < 16)
        return std::nullopt;
    Encoding encoding{numberAt<std::uint16_t>(chunk, 0), numberAt<std::uint16_t>(chunk, 2),
                      numberAt<std::uint32_t>(chunk, 4), numberAt<std::uint16_t>(chunk, 14)};
    if (encoding.code == extensible) {
        if (chunk.size() < 26)
            return std::nullopt;
        encoding.code = numberAt<std::uint16_t>(chunk, 24); // the first two bytes of the sub-format's GUID
    }
    return encoding;
}

bool isPcm(const Encoding &encoding)
{
    if (encoding.code == integerPcm)
        return encoding.bits == 8 || encoding.bits == 16 || encoding.bits == 24 || encoding.bits == 32;
    return encoding.code == floatingPoint && (encoding.bits == 32 || encoding.bits == 64);
}

template<typename Out, typename Decode> QByteArray decoded(QByteArrayView data, qsizetype sampleBytes, Decode decode)
{
    const qsizetype count = data.size() / sampleBytes;
    QByteArray out(count * static_cast<qsizetype>(sizeof(Out)), Qt::Uninitialized);
    for (qsizetype i = 0; i < count; ++i) {
        const Out sample = decode(data.sliced(i * sampleBytes, sampleBytes));
        std::memcpy(out.data() + i * static_cast<qsizetype>(sizeof(Out)), &sample, sizeof(Out));
    }
    return out;
}

PcmBuffer soundOf(const Encoding &encoding, QByteArrayView data)
{
    const bool narrow = encoding.bits <= 16;
    const AudioFormat format{static_cast<double>(encoding.rateHz), encoding.channels,
                             narrow ? SampleType::Int16 : SampleType::Float32};
    switch (encoding.bits) {
    case 8: // the only unsigned width
        return {format, decoded<std::int16_t>(data, 1, [](QByteArrayView sample) {
                    return static_cast<std::int16_t>((static_cast<unsigned char>(sample[0]) - 128) * 256);
                })};
    case 16:
        return {format, decoded<std::int16_t>(data, 2,
                                              [](QByteArrayView sample) { return numberAt<std::int16_t>(sample, 0); })};
    case 24:
        return {format, decoded<float>(data, 3, [](QByteArrayView sample) {
                    const int high = numberAt<std::int16_t>(sample, 1);
                    return static_cast<float>(high * 256 + static_cast<unsigned char>(sample[0])) / 8388608.0F;
                })};
    case 32:
        if (encoding.code == floatingPoint) {
            return {format, decoded<float>(data, 4, [](QByteArrayView sample) { return numberAt<float>(sample, 0); })};
        }
        return {format, decoded<float>(data, 4, [](QByteArrayView sample) {
                    return static_cast<float>(numberAt<std::int32_t>(sample, 0)) / 2147483648.0F;
                })};
    default:
        return {format, decoded<float>(data, 8, [](QByteArrayView sample) {
                    // Clamped first: a double beyond the range of float has no float.
                    return static_cast<float>(std::clamp(numberAt<double>(sample, 0), -1e6, 1e6));
                })};
    }
}

} // namespace

tl::expected<PcmBuffer, QString> WavFile::parse(const QByteArray &contents, const QString &name)
{
    const auto failure = [&](const QString &what) { return tl::unexpected(name + QLatin1Char(' ') + what); };
    if (contents.isEmpty())
        return failure(QStringLiteral("is empty."));
    const QByteArrayView bytes(contents);
    if (!bytes.startsWith("RIFF") || (bytes.size() >= 12 && bytes.sliced(8, 4) != QByteArrayView("WAVE")))
        return failure(QStringLiteral("is not a WAV file."));

    std::optional<Encoding> encoding;
    for (qsizetype offset = 12; bytes.size() - offset >= 8;) {
        const QByteArrayView id = bytes.sliced(offset, 4);
        const auto announced = numberAt<std::uint32_t>(bytes, offset + 4);
        const qsizetype available = bytes.size() - offset - 8;
        const qsizetype size = std::min<qsizetype>(announced, available);
        const QByteArrayView chunk = bytes.sliced(offset + 8, size);
        if (id == QByteArrayView("fmt ")) {
            encoding = encodingOf(chunk);
            if (!encoding)
                return failure(QStringLiteral("is truncated: its header is not complete."));
            if (!isPcm(*encoding))
                return failure(
                    QStringLiteral("is not PCM (format %1, %2 bits).").arg(encoding->code).arg(encoding->bits));
            if (encoding->rateHz < 8000 || encoding->rateHz > 192000)
                return failure(QStringLiteral("has %1 Hz; 8000 to 192000 are possible.").arg(encoding->rateHz));
            if (encoding->channels < 1 || encoding->channels > 2)
                return failure(QStringLiteral("has %1 channels; 1 or 2 are possible.").arg(encoding->channels));
        } else if (id == QByteArrayView("data")) {
            if (!encoding)
                return failure(QStringLiteral("is not a WAV file: its sound comes before its format."));
            if (available < announced && announced < unknownSize) {
                return failure(
                    QStringLiteral("is truncated: %1 of %2 bytes of sound are there.").arg(available).arg(announced));
            }
            const qsizetype frameBytes = encoding->channels * (encoding->bits / 8);
            if (size < frameBytes)
                return failure(QStringLiteral("holds no sound."));
            return soundOf(*encoding, chunk.first(size - size % frameBytes));
        }
        offset += 8 + size + (size & 1); // chunks begin at even offsets
    }
    return failure(QStringLiteral("is truncated: it ends before its sound."));
}

tl::expected<PcmBuffer, QString> WavFile::read(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return tl::unexpected(QStringLiteral("%1 is not there.").arg(path));
    if (!info.isFile()) // a pipe would block
        return tl::unexpected(QStringLiteral("%1 is not a file.").arg(path));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tl::unexpected(QStringLiteral("%1 cannot be read: %2").arg(path, file.errorString()));
    if (file.size() > maximumFileBytes)
        return tl::unexpected(QStringLiteral("%1 is longer than 512 MiB.").arg(path));
    return parse(file.readAll(), path);
}

QByteArray WavFile::compose(const PcmBuffer &sound)
{
    const bool integer = sound.format.sampleType == SampleType::Int16;
    const auto channels = static_cast<std::uint16_t>(sound.format.channelCount);
    const auto rateHz = static_cast<std::uint32_t>(sound.format.sampleRateHz);
    const auto frameBytes = static_cast<std::uint16_t>(sound.format.bytesPerFrame());
    const auto dataBytes = static_cast<std::uint32_t>(sound.data.size());

    QByteArray file;
    file.reserve(44 + sound.data.size());
    const auto put = [&](auto number) {
        const auto little = qToLittleEndian(number);
        file.append(reinterpret_cast<const char *>(&little), sizeof little);
    };
    file += "RIFF";
    put(36 + dataBytes);
    file += "WAVEfmt ";
    put(std::uint32_t(16));
    put(integer ? integerPcm : floatingPoint);
    put(channels);
    put(rateHz);
    put(rateHz * frameBytes);
    put(frameBytes);
    put(static_cast<std::uint16_t>(integer ? 16 : 32));
    file += "data";
    put(dataBytes);
    file += sound.data;
    return file;
}

tl::expected<void, QString> WavFile::write(const QString &path, const PcmBuffer &sound)
{
    QSaveFile file(path);
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly) || file.write(compose(sound)) < 0 || !file.commit())
        return tl::unexpected(QStringLiteral("%1 cannot be written: %2").arg(path, file.errorString()));
    return {};
}

} // namespace vynlex
