#include "translation/SpeachToTextViewModel.h"

#include <cmath>
#include <limits>

#include "api/VLApiManager.h"
#include "language/LanguageTranslation.h"
#include "platform/audio/AudioConverter.h"
#include "platform/device/Platform.h"
#include "platform/dispatch/Console.h"
#include "platform/dispatch/FatalError.h"
#include "platform/dispatch/MainQueue.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

const AudioFormat targetFormat{static_cast<double>(SpeachToTextViewModel::sampleRate), 1,
                               AudioFormat::SampleType::Int16};

/// Everything that the conversion of one listening needs; used on the conversion queue only.
struct Conversion {
    std::unique_ptr<AudioConverter> converter;
    PushAudioInputStream stream;

    void push(const PcmBuffer &input)
    {
        const double rate = input.format.sampleRateHz;
        const double duration = rate > 0 ? static_cast<double>(input.frameLength()) / rate : 0;
        const double capacity = std::trunc(targetFormat.sampleRateHz * duration);
        if (!(capacity >= 0 && capacity <= std::numeric_limits<std::uint32_t>::max()))
            fatalError(u"A microphone buffer of %1 s cannot be converted."_s.arg(duration));
        if (capacity == 0) {
            consoleLine(u"Failed to create new pcm buffer"_s);
            return;
        }
        const auto converted = converter->convert(input, static_cast<qsizetype>(capacity));
        if (!converted) {
            consoleLine(converted.error());
            return;
        }
        stream.write(converted->data);
    }
};

} // namespace

std::int64_t wholeDuration(Ticks ticks)
{
    constexpr std::int64_t timeScale = 1000; // units per second
    constexpr std::int64_t longest = std::numeric_limits<std::int64_t>::max() / timeScale;
    const auto seconds =
        ticks.count(); // The service's tick count is taken for seconds, deliberately: owners get ticks.
    if (seconds > longest || seconds < -longest)
        fatalError(u"The service reported a duration of %1 ticks, which is no time."_s.arg(seconds));
    return seconds;
}

std::shared_ptr<SpeachToTextViewModel> SpeachToTextViewModel::create()
{
    return std::make_shared<SpeachToTextViewModel>(VLApiManager::shared(), LanguageTranslation::shared());
}

SpeachToTextViewModel::SpeachToTextViewModel(const VLApiManager &apiManager, const LanguageTranslation &languages)
    : m_sub(apiManager.translatedConfig ? apiManager.translatedConfig->speechKey() : QString())
    , m_region(apiManager.translatedConfig ? apiManager.translatedConfig->speechRegion() : QString())
    , m_languages(languages)
    , m_audioEngine(Platform::current()->makeAudioEngine())
{
}

SpeachToTextViewModel::~SpeachToTextViewModel() = default;

void SpeachToTextViewModel::startSpeechRecognition(bool isSpeaker, ResultHandler onResult)
{
    auto config = SpeechConfig::fromSubscription(m_sub, m_region);
    if (!config)
        fatalError("No speech configuration can be made: "_L1 + config.error());
    config->setSpeechRecognitionLanguage(m_languages.recognitionLocale(isSpeaker ? Side::Speaker : Side::Listener));
    // A result of an earlier listening that is already on its way to the main queue has nothing to say any more.
    const ResultHandler onLatestResult = [weak = weak_from_this(), start = ++m_startCount,
                                          onResult = std::move(onResult)](const QString &text, std::int64_t duration) {
        const auto self = weak.lock();
        if (self && self->m_startCount == start)
            onResult(text, duration);
    };
    m_controlQueue.async([weak = weak_from_this(), config = *config, onLatestResult] {
        if (const auto self = weak.lock())
            self->start(config, onLatestResult);
    });
}

void SpeachToTextViewModel::stopSpeechRecognition()
{
    if (m_startCount == 0)
        fatalError(u"Speech recognition was stopped before it was ever started."_s);
    m_controlQueue.async([weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->stop();
    });
}

void SpeachToTextViewModel::start(SpeechConfig config, const ResultHandler &onResult)
{
    const PushAudioInputStream stream = PushAudioInputStream::create();
    m_pushStream = stream;
    const auto made = Platform::current()->speechService->makeRecognizer(config, AudioConfig::fromStreamInput(stream));
    if (!made)
        fatalError("No speech recognizer can be made: "_L1 + made.error());
    m_reco = *made;

    m_reco->recognized = [onResult](const SpeechRecognitionResult &result) {
        consoleLine("Final recognition result: "_L1 + (result.text.isEmpty() ? u"(no result)"_s : result.text));
        MainQueue::async(
            [onResult, text = result.text, duration = result.duration] { onResult(text, wholeDuration(duration)); });
    };
    m_reco->canceled = [](const CancellationDetails &details) {
        consoleLine("Recognition canceled: "_L1 +
                    (details.errorDetails.isEmpty() ? u"(no result)"_s : details.errorDetails));
    };
    // After the recogniser was made, deliberately: the configuration is a handle, read when recognition starts.
    config.enableDictation();

    // A failure is said and the microphone started regardless, deliberately: stopping works the same either way.
    if (const auto started = m_reco->startContinuousRecognition(); !started)
        consoleLine("Error starting continuous recognition: "_L1 + started.error());

    captureAudio(stream);
}

void SpeachToTextViewModel::captureAudio(const PushAudioInputStream &stream)
{
    auto converter = AudioConverter::create(m_audioEngine->inputFormat(), targetFormat);
    if (!converter)
        return; // No microphone, or one of a format without a filter: recognition waits in silence, deliberately.

    const auto conversion = std::make_shared<Conversion>(Conversion{std::move(*converter), stream});
    m_audioEngine->removeTap();
    m_audioEngine->installTap(static_cast<int>(bufferSize), [this, conversion](const PcmBuffer &buffer) {
        // `this` is safe: the engine is ours, and no tap runs after it is gone.
        m_conversionQueue.async([conversion, buffer] { conversion->push(buffer); });
    });
    m_audioEngine->prepare();
    if (const auto started = m_audioEngine->start(); !started)
        consoleLine(started.error());
}

void SpeachToTextViewModel::stop()
{
    m_audioEngine->stop();
    m_audioEngine->removeTap();
    // Behind what the microphone has heard and nobody has converted yet.
    m_conversionQueue.async([stream = *m_pushStream]() mutable { stream.close(); });
}

} // namespace vynlex
