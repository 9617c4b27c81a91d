#pragma once

#include <QAudioDevice>
#include <QAudioFormat>

#include <algorithm>

#include "platform/audio/AudioFormat.h"

namespace vynlex {

inline QAudioFormat toQt(const AudioFormat &format)
{
    QAudioFormat qt;
    qt.setSampleRate(static_cast<int>(format.sampleRateHz));
    qt.setChannelCount(format.channelCount);
    qt.setSampleFormat(format.sampleType == AudioFormat::SampleType::Int16 ? QAudioFormat::Int16 : QAudioFormat::Float);
    return qt;
}

/// What the kit asks of the device; a rate of 0 without one.
inline AudioFormat inputFormatOf(const QAudioDevice &device)
{
    if (device.isNull())
        return {};
    const QAudioFormat preferred = device.preferredFormat();
    return {static_cast<double>(std::clamp(preferred.sampleRate(), 8000, 192000)),
            std::clamp(preferred.channelCount(), 1, 2),
            preferred.sampleFormat() == QAudioFormat::Float ? AudioFormat::SampleType::Float32
                                                            : AudioFormat::SampleType::Int16};
}

} // namespace vynlex
