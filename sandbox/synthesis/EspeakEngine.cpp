#include "sandbox/synthesis/EspeakEngine.h"

#include <stdexcept>

#include <espeak-ng/speak_lib.h>

namespace sandbox {
namespace {

constexpr int pieceMs = 60;

/// Where the engine's callback, which carries no context before the first event, delivers. Guarded by the mutex.
const EspeakEngine::Sink *currentSink = nullptr;

int deliver(short *wav, int count, espeak_EVENT *)
{
    if (!wav || count <= 0)
        return 0;
    return (*currentSink)({wav, static_cast<std::size_t>(count)}) ? 0 : 1;
}

} // namespace

EspeakEngine &EspeakEngine::instance()
{
    static EspeakEngine engine;
    return engine;
}

EspeakEngine::EspeakEngine()
    : m_sampleRateHz(espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, pieceMs, nullptr, espeakINITIALIZE_DONT_EXIT))
{
    if (m_sampleRateHz <= 0)
        throw std::runtime_error("espeak-ng does not start: is its data (espeak-ng-data) installed?");
    espeak_SetSynthCallback(deliver);
}

void EspeakEngine::select(const std::string &voice)
{
    if (voice == m_voice)
        return;
    m_voice.clear();
    if (espeak_SetVoiceByName(voice.c_str()) != EE_OK)
        throw std::invalid_argument("espeak-ng has no voice '" + voice + "'");
    m_voice = voice;
}

void EspeakEngine::speak(std::string_view text, const Manner &manner, bool endPause, const Sink &sink)
{
    const std::string zeroTerminated(text);
    const std::lock_guard lock(m_mutex);
    select(manner.voice);
    espeak_SetParameter(espeakRATE, manner.wordsPerMinute, 0);
    espeak_SetParameter(espeakPITCH, manner.pitch, 0);
    currentSink = &sink;
    const auto status = espeak_Synth(zeroTerminated.c_str(), zeroTerminated.size() + 1, 0, POS_CHARACTER, 0,
                                     espeakCHARS_UTF8 | (endPause ? espeakENDPAUSE : 0U), nullptr, nullptr);
    currentSink = nullptr;
    if (status != EE_OK)
        throw std::runtime_error("espeak-ng failed to speak");
}

std::string EspeakEngine::ipa(std::string_view text, const std::string &voice)
{
    constexpr int ipaMode = 0x02;
    const std::string zeroTerminated(text);
    const std::lock_guard lock(m_mutex);
    select(voice);
    std::string result;
    // One clause a call: the pointer moves on, and is null behind the last one.
    for (const void *rest = zeroTerminated.c_str(); rest;) {
        const char *clause = espeak_TextToPhonemes(&rest, espeakCHARS_UTF8, ipaMode);
        if (clause && *clause != '\0') {
            if (!result.empty())
                result += ' ';
            result += clause;
        }
    }
    return result;
}

} // namespace sandbox
