#include "sandbox/recognition/UtteranceDecoder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include <pocketsphinx.h>
#include <sphinxbase/err.h>

namespace sandbox {
namespace {

constexpr char grammarSearch[] = "sentences";
constexpr char phoneSearch[] = "phones";
constexpr char pauseWord[] = "pause";

std::string token(std::size_t word)
{
    return "w" + std::to_string(word);
}

std::string jsgf(const Grammar &grammar)
{
    const std::string optionalPause = std::string("[") + pauseWord + "] ";
    std::string text = "#JSGF V1.0;\ngrammar book;\npublic <sentence> = ";
    for (const auto &sentence : grammar.sentences) {
        text += &sentence == &grammar.sentences.front() ? "" : " | ";
        text += optionalPause;
        for (std::size_t i = 0; i < sentence.words.size(); ++i) {
            if (std::find(sentence.pauses.begin(), sentence.pauses.end(), i) != sentence.pauses.end())
                text += optionalPause;
            text += token(sentence.words[i]) + " ";
        }
        text += optionalPause;
    }
    return text + ";\n";
}

/// Frames of 10 ms that a sentence lasts at most: slow speech has about 12 a phone. A noise or a whistle is heard as
/// one drawn-out word, and a long sentence outside the book often as a short one of it.
int longestFor(std::size_t phones)
{
    return 40 + 16 * static_cast<int>(phones);
}

std::size_t phoneCount(const Pronunciation &pronunciation)
{
    return 1 + static_cast<std::size_t>(std::count(pronunciation.begin(), pronunciation.end(), ' '));
}

/// A louder copy with a little noise: the model's features of digital silence are meaningless. The noise is the same
/// every time, so that the same sound gives the same answer.
std::vector<std::int16_t> prepared(std::span<const std::int16_t> samples)
{
    constexpr double targetPeak = 16000;
    constexpr double mostGain = 30;
    int peak = 1;
    for (const int s : samples)
        peak = std::max(peak, std::abs(s));
    const double gain = std::min(targetPeak / peak, mostGain);
    std::uint32_t state = 1;
    std::vector<std::int16_t> result;
    result.reserve(samples.size());
    for (const double s : samples) {
        state = state * 1664525U + 1013904223U;
        const int dither = static_cast<int>(state >> 29U) - 4;
        result.push_back(static_cast<std::int16_t>(std::lround(s * gain) + dither));
    }
    return result;
}

} // namespace

void UtteranceDecoder::Deleter::operator()(ps_decoder_s *decoder) const
{
    ps_free(decoder);
}

UtteranceDecoder::UtteranceDecoder(const Grammar &grammar, const std::filesystem::path &acousticModel)
    : m_grammar(grammar)
{
    // Its log is for its own developers.
    static const bool quiet = [] {
        err_set_logfp(nullptr);
        return true;
    }();
    (void)quiet;

    const std::unique_ptr<cmd_ln_t, int (*)(cmd_ln_t *)> config(
        cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", acousticModel.c_str(), "-beam", "1e-80", "-wbeam", "1e-60",
                    "-pbeam", "1e-80", "-remove_silence", "no", "-remove_noise", "no", "-fsgusefiller", "no",
                    "-allphone_ci", "yes", nullptr),
        cmd_ln_free_r);
    if (config)
        m_decoder.reset(ps_init(config.get()));
    if (!m_decoder)
        throw std::runtime_error("PocketSphinx does not load the acoustic model " + acousticModel.string());

    ps_add_word(m_decoder.get(), pauseWord, "SIL", FALSE);
    for (std::size_t i = 0; i < grammar.words.size(); ++i) {
        const auto &pronunciations = grammar.words[i].pronunciations;
        for (std::size_t k = 0; k < pronunciations.size(); ++k) {
            const auto name = k == 0 ? token(i) : token(i) + "(" + std::to_string(k + 1) + ")";
            if (ps_add_word(m_decoder.get(), name.c_str(), pronunciations[k].c_str(), FALSE) < 0)
                throw std::runtime_error("PocketSphinx does not accept the pronunciation " + pronunciations[k]);
        }
    }
    if (ps_set_jsgf_string(m_decoder.get(), grammarSearch, jsgf(grammar).c_str()) != 0 ||
        ps_set_allphone_file(m_decoder.get(), phoneSearch, nullptr) != 0)
        throw std::runtime_error("PocketSphinx does not accept the grammar");
}

std::optional<UtteranceDecoder::Decoding> UtteranceDecoder::decode(std::span<const std::int16_t> samples)
{
    const auto sound = prepared(samples);
    start(grammarSearch, sound);
    ps_end_utt(m_decoder.get());
    const auto words = ps_get_hyp(m_decoder.get(), nullptr) ? segmentation() : std::vector<Stretch>{};

    std::vector<std::size_t> heard;
    std::size_t phones = 0;
    int allFrames = 0;
    for (const auto &stretch : words) {
        allFrames += stretch.lastFrame - stretch.firstFrame + 1;
        if (const auto *known = word(stretch.name)) {
            heard.push_back(static_cast<std::size_t>(known - m_grammar.words.data()));
            phones += phoneCount(known->pronunciations.front());
        }
    }
    const auto sentence = std::find_if(m_grammar.sentences.begin(), m_grammar.sentences.end(),
                                       [&heard](const auto &s) { return s.words == heard; });
    if (sentence == m_grammar.sentences.end() || allFrames > longestFor(phones))
        return std::nullopt;

    start(phoneSearch, sound);
    ps_end_utt(m_decoder.get());
    std::vector<double> loopUpTo{0}; // score of all frames before
    for (const auto &phone : segmentation()) {
        const int frames = phone.lastFrame - phone.firstFrame + 1;
        for (int i = 0; i < frames; ++i)
            loopUpTo.push_back(loopUpTo.back() + phone.acousticScore / frames);
    }
    const auto loop = [&](int first, int last) {
        const auto at = [&](int frame) {
            return loopUpTo[std::min(static_cast<std::size_t>(std::max(frame, 0)), loopUpTo.size() - 1)];
        };
        return at(last + 1) - at(first);
    };

    double total = 0;
    double worst = 0;
    int frames = 0;
    for (const auto &stretch : words) {
        const double difference = stretch.acousticScore - loop(stretch.firstFrame, stretch.lastFrame);
        const int length = stretch.lastFrame - stretch.firstFrame + 1;
        total += difference;
        frames += length;
        if (word(stretch.name) && length > 0)
            worst = std::min(worst, difference / length);
    }
    const double mean = frames > 0 ? total / frames : 0;
    return Decoding{&*sentence, mean + worst, mean, worst};
}

std::string UtteranceDecoder::beginning(std::span<const std::int16_t> samples)
{
    start(grammarSearch, prepared(samples));
    // Before the end of the utterance is declared, the best path need not be a whole sentence.
    const char *hypothesis = ps_get_hyp(m_decoder.get(), nullptr);
    std::istringstream tokens(hypothesis ? hypothesis : "");
    std::string text;
    for (std::string name; tokens >> name;)
        if (const auto *known = word(name))
            text += (text.empty() ? "" : " ") + known->spoken;
    ps_end_utt(m_decoder.get());
    return text;
}

void UtteranceDecoder::start(const char *search, std::span<const std::int16_t> samples)
{
    ps_set_search(m_decoder.get(), search);
    // A stream of its own: noise statistics and frame numbers would go on from the utterance before.
    // As one whole, so that the cepstral mean that is taken off is this utterance's own.
    if (ps_start_stream(m_decoder.get()) < 0 || ps_start_utt(m_decoder.get()) < 0 ||
        ps_process_raw(m_decoder.get(), samples.data(), samples.size(), FALSE, TRUE) < 0)
        throw std::runtime_error("PocketSphinx failed to decode");
}

std::vector<UtteranceDecoder::Stretch> UtteranceDecoder::segmentation() const
{
    std::vector<Stretch> stretches;
    for (auto *segment = ps_seg_iter(m_decoder.get()); segment; segment = ps_seg_next(segment)) {
        Stretch stretch{ps_seg_word(segment), 0, 0, 0};
        ps_seg_frames(segment, &stretch.firstFrame, &stretch.lastFrame);
        int32 acoustic = 0;
        int32 language = 0;
        int32 backOff = 0;
        ps_seg_prob(segment, &acoustic, &language, &backOff);
        stretch.acousticScore = acoustic;
        stretches.push_back(std::move(stretch));
    }
    return stretches;
}

const Grammar::Word *UtteranceDecoder::word(const std::string &name) const
{
    if (name.size() < 2 || name[0] != 'w')
        return nullptr;
    const auto index = std::strtoul(name.c_str() + 1, nullptr, 10); // stops before an alternative's "(2)"
    return index < m_grammar.words.size() ? &m_grammar.words[index] : nullptr;
}

} // namespace sandbox
