#include "sandbox/synthesis/VoiceBank.h"

#include "sandbox/synthesis/EspeakEngine.h"
#include "sandbox/synthesis/Resampler.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace sandbox {
namespace {

struct Voice {
    std::string_view name;
    Manner manner;
};

/// espeak-ng's default voice is a man's; the variant behind the plus sign makes it a woman's.
const std::vector<Voice> &voices()
{
    static const std::vector<Voice> table{
        {"en-US-AriaNeural", {"en-us+f3", 155, 50}},  {"en-IN-NeerjaNeural", {"en+f2", 150, 55}},
        {"en-IN-PrabhatNeural", {"en+m3", 150, 45}},  {"hi-IN-SwaraNeural", {"hi+f3", 155, 50}},
        {"gu-IN-DhwaniNeural", {"gu+f3", 155, 50}},   {"mr-IN-AarohiNeural", {"mr+f3", 155, 50}},
        {"bn-IN-TanishaaNeural", {"bn+f3", 155, 50}}, {"te-IN-ShrutiNeural", {"te+f3", 155, 50}},
    };
    return table;
}

const Voice *find(std::string_view name)
{
    const auto found =
        std::find_if(voices().begin(), voices().end(), [name](const Voice &v) { return v.name == name; });
    return found == voices().end() ? nullptr : &*found;
}

bool startsWithSpace(std::string_view text)
{
    return !text.empty() &&
           (text.front() == ' ' || text.front() == '\n' || text.front() == '\r' || text.front() == '\t');
}

/// Takes the first sentence off the front of `rest`: up to a full stop, question or exclamation mark or danda that
/// white space follows. A text without any is one sentence up to a bound, cut at white space, so that the engine is not
/// held for long.
std::string_view takeSentence(std::string_view &rest)
{
    static constexpr std::string_view ends[] = {".", "?", "!", "।", "॥", "\n"};
    constexpr std::size_t longest = 600;
    std::size_t cut = rest.size();
    for (std::size_t i = 0; i < rest.size(); ++i) {
        const auto tail = rest.substr(i);
        const auto *end = std::find_if(std::begin(ends), std::end(ends), [&](auto e) { return tail.starts_with(e); });
        if (end != std::end(ends) && startsWithSpace(tail.substr(end->size()))) {
            cut = i + end->size();
            break;
        }
        if (i >= longest && startsWithSpace(tail)) {
            cut = i;
            break;
        }
    }
    const auto sentence = rest.substr(0, cut);
    rest.remove_prefix(cut);
    while (startsWithSpace(rest))
        rest.remove_prefix(1);
    return sentence;
}

} // namespace

VoiceBank::VoiceBank()
{
    (void)EspeakEngine::instance();
}

bool VoiceBank::has(std::string_view voiceName) const
{
    return find(voiceName) != nullptr;
}

void VoiceBank::speak(std::string_view text, std::string_view voiceName, int sampleRateHz, const Sink &sink)
{
    const auto *voice = find(voiceName);
    if (!voice)
        throw std::invalid_argument("no voice '" + std::string(voiceName) + "'");

    auto &engine = EspeakEngine::instance();
    Resampler resampler(engine.sampleRateHz(), sampleRateHz);
    // The engine makes a sentence in a few milliseconds; a slow listener then holds up nobody but itself.
    for (auto rest = text; !rest.empty();) {
        const auto sentence = takeSentence(rest);
        std::vector<std::vector<std::int16_t>> pieces;
        engine.speak(sentence, voice->manner, !rest.empty(), [&](std::span<const std::int16_t> piece) {
            pieces.push_back(resampler.process(piece));
            return true;
        });
        for (const auto &piece : pieces)
            if (!piece.empty() && !sink(piece))
                return;
    }
    if (const auto tail = resampler.finish(); !tail.empty())
        sink(tail);
}

} // namespace sandbox
