#pragma once

#include <QByteArray>
#include <QString>

#include <tl/expected.hpp>

#include "platform/audio/PcmBuffer.h"

namespace vynlex {

/// WAV files (RIFF, little-endian): 8000 to 192000 Hz, 1 or 2 channels.
namespace WavFile {

/// Reads integers of 8, 16, 24 and 32 bits and floating point of 32 and 64 bits, with the plain or the extensible
/// header. Up to 16 bits become Int16 as they are, the rest Float32. A data size of 0x7FFFF000 or more, as programs
/// write it that do not know the end beforehand, stands for the rest of the file.
///
/// Fails with one sentence that names the file: it is not there, empty, longer than 512 MiB, no WAV file, truncated,
/// not PCM, of a rate or channel count out of range, or it holds no sound.
tl::expected<PcmBuffer, QString> read(const QString &path);

/// The same for a file's contents; `name` is for the sentence.
tl::expected<PcmBuffer, QString> parse(const QByteArray &contents, const QString &name);

/// The contents of a file: PCM of 16 bits, or floating point of 32.
QByteArray compose(const PcmBuffer &sound);

/// Replaces the file. Fails with a sentence that names it.
tl::expected<void, QString> write(const QString &path, const PcmBuffer &sound);

} // namespace WavFile
} // namespace vynlex
