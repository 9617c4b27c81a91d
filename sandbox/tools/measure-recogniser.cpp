// Measures the recogniser on synthetic voices that it does not speak with itself: how often the right sentence comes
// back, how often a sentence outside the book is taken for one in it, and what a second of sound costs.

#include "sandbox/phrasebook/Phrasebook.h"
#include "sandbox/recognition/EndPointer.h"
#include "sandbox/recognition/RecogniserModels.h"
#include "sandbox/recognition/StreamingRecogniser.h"
#include "sandbox/recognition/UtteranceDecoder.h"
#include "sandbox/synthesis/EspeakEngine.h"
#include "sandbox/synthesis/Resampler.h"
#include "sandbox/synthesis/VoiceBank.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <random>
#include <span>
#include <sstream>
#include <stdexcept>

namespace {

using namespace sandbox;
using Samples = std::vector<std::int16_t>;

enum class Noise { None, White, Pink };

/// One way to record a sentence.
struct Condition {
    const char *name;
    const char *variant;
    int wordsPerMinute;
    int pitch;
    int sourceRateHz;
    Noise noise; ///< 20 dB below the speech
    double gain;
};

/// The sandbox's own voice, as the demo plays it.
constexpr Condition ownVoice{"own voice", "+f3", 155, 50, 48000, Noise::None, 1};

constexpr Condition conditions[] = {
    {"default man", "", 165, 50, 44100, Noise::None, 1},
    {"male 3, slow", "+m3", 140, 50, 48000, Noise::None, 1},
    {"female 2, fast", "+f2", 190, 50, 48000, Noise::None, 1},
    {"female 4, high", "+f4", 160, 70, 44100, Noise::None, 1},
    {"male 7, low", "+m7", 160, 30, 44100, Noise::None, 1},
    {"female 5, white noise", "+f5", 165, 55, 48000, Noise::White, 1},
    {"male 1, pink noise", "+m1", 170, 45, 44100, Noise::Pink, 1},
    {"Annie, quiet", "+Annie", 155, 50, 48000, Noise::None, 0.06},
    {"female 1, white noise", "+f1", 175, 60, 44100, Noise::White, 1},
    {"Michael", "+Michael", 150, 55, 48000, Noise::None, 1},
};

struct Outcome {
    bool heard = false; ///< one utterance that the grammar could explain
    bool right = false;
    double mean = 0;
    double worst = 0;
    double score = 0;
    std::string text;
};

/// The part of the command line after a name, or the default.
std::string option(int argc, char **argv, const std::string &name, const std::string &otherwise)
{
    for (int i = 1; i + 1 < argc; ++i)
        if (argv[i] == name)
            return argv[i + 1];
    return otherwise;
}

bool hasFlag(int argc, char **argv, const std::string &name)
{
    return std::any_of(argv + 1, argv + argc, [&](const char *argument) { return argument == name; });
}

Samples resampled(const Samples &input, int from, int to)
{
    Resampler resampler(from, to);
    auto output = resampler.process(input);
    const auto tail = resampler.finish();
    output.insert(output.end(), tail.begin(), tail.end());
    return output;
}

void addNoise(Samples &samples, Noise kind, std::mt19937 &random)
{
    double power = 0;
    for (const double s : samples)
        power += s * s;
    const double level = std::sqrt(power / static_cast<double>(samples.size())) / 10;
    std::normal_distribution<double> white(0, 1);
    // Pink from white by Paul Kellet's three poles; scaled to the power of one.
    double a = 0;
    double b = 0;
    double c = 0;
    for (auto &s : samples) {
        const double w = white(random);
        a = 0.99765 * a + w * 0.0990460;
        b = 0.96300 * b + w * 0.2965164;
        c = 0.57000 * c + w * 1.0526913;
        const double n = kind == Noise::White ? w : (a + b + c + w * 0.1848) * 0.52;
        s = static_cast<std::int16_t>(std::clamp(std::lround(s + n * level), -32768L, 32767L));
    }
}

/// As it reaches the recogniser: 16 kHz, half a second of the room before and one after.
Samples recorded(const std::string &text, const std::string &language, const Condition &condition, std::mt19937 &random)
{
    auto &engine = EspeakEngine::instance();
    Samples native;
    const std::string voice = (language == "en" ? "en-us" : language) + condition.variant;
    engine.speak(text, {voice, condition.wordsPerMinute, condition.pitch}, false, [&](auto piece) {
        native.insert(native.end(), piece.begin(), piece.end());
        return true;
    });
    auto source = resampled(native, engine.sampleRateHz(), condition.sourceRateHz);
    for (auto &s : source)
        s = static_cast<std::int16_t>(s * condition.gain);
    source.insert(source.begin(), static_cast<std::size_t>(condition.sourceRateHz / 2), 0);
    source.insert(source.end(), static_cast<std::size_t>(condition.sourceRateHz), 0);
    if (condition.noise != Noise::None)
        addNoise(source, condition.noise, random);
    return resampled(source, condition.sourceRateHz, EndPointer::sampleRateHz);
}

Outcome listen(UtteranceDecoder &decoder, const Samples &samples, const std::string &expected)
{
    Outcome outcome;
    EndPointer endPointer;
    int utterances = 0;
    for (std::size_t at = 0; at + EndPointer::frameSamples <= samples.size(); at += EndPointer::frameSamples) {
        const std::span<const std::int16_t, EndPointer::frameSamples> frame(samples.data() + at,
                                                                            EndPointer::frameSamples);
        if (endPointer.push(frame) != EndPointer::Event::Ended)
            continue;
        ++utterances;
        if (const auto decoding = decoder.decode(endPointer.clip().samples))
            outcome = {true,
                       decoding->sentence->text == expected,
                       decoding->meanDifference,
                       decoding->worstWord,
                       decoding->score,
                       decoding->sentence->text};
        else
            outcome = {};
    }
    outcome.right = outcome.right && utterances == 1;
    return outcome;
}

double cpuSeconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

std::vector<std::string> outsideSentences(const std::string &language)
{
    std::ifstream in(SANDBOX_OUTSIDE_FILE);
    std::vector<std::string> sentences;
    std::size_t column = 0;
    int lineNumber = 0;
    for (std::string line; std::getline(in, line); ++lineNumber) {
        std::istringstream fields(line);
        std::size_t i = 0;
        for (std::string field; std::getline(fields, field, '\t'); ++i) {
            if (lineNumber == 0 && field == language)
                column = i;
            else if (lineNumber > 0 && i == column)
                sentences.push_back(field);
        }
    }
    return sentences;
}

/// Sentences of the book with one word exchanged for one of another sentence.
std::vector<std::string> nearSentences(const Phrasebook &book, const std::string &language, std::mt19937 &random)
{
    std::vector<std::vector<std::string>> sentences;
    std::vector<std::string> words;
    for (const auto &phrase : book.phrases()) {
        std::istringstream text(phrase.text.at(language));
        auto &sentence = sentences.emplace_back();
        for (std::string word; text >> word;) {
            sentence.push_back(word);
            words.push_back(word);
        }
    }
    std::vector<std::string> result;
    for (auto sentence : sentences) {
        if (sentence.size() < 2)
            continue;
        sentence[random() % sentence.size()] = words[random() % words.size()];
        std::string text;
        for (const auto &word : sentence)
            text += (text.empty() ? "" : " ") + word;
        if (!book.find(text, language))
            result.push_back(text);
    }
    return result;
}

} // namespace

int main(int argc, char **argv)
try {
    if (hasFlag(argc, argv, "--help")) {
        std::puts("measure-recogniser [--language CODE] [--every N] [--phase K] [--scores FILE] [--misses] "
                  "[--book-only] [--own-voice]\n"
                  "  --every N    each condition takes every Nth sentence (default 1), another Nth each\n"
                  "  --scores F   appends a line per clip: kind, language, condition, text, right, mean, worst word, "
                  "score, heard\n"
                  "  --misses     prints what was not recognised, and what was heard instead\n"
                  "  --book-only  leaves out the sentences outside the book\n"
                  "  --own-voice  speaks with the sandbox's own voices instead of others");
        return 0;
    }
    const auto only = option(argc, argv, "--language", "");
    const auto every = static_cast<std::size_t>(std::max(1, std::atoi(option(argc, argv, "--every", "1").c_str())));
    const auto phase = static_cast<std::size_t>(std::atoi(option(argc, argv, "--phase", "0").c_str()));
    const auto scoresFile = option(argc, argv, "--scores", "");
    const bool ownOnly = hasFlag(argc, argv, "--own-voice");
    const bool bookOnly = hasFlag(argc, argv, "--book-only");
    const bool misses = hasFlag(argc, argv, "--misses");
    std::ofstream scores;
    if (!scoresFile.empty())
        scores.open(scoresFile, std::ios::app);

    const auto models = RecogniserModels::load();
    for (const auto code : phrasebookLanguages) {
        const std::string language(code);
        if (!only.empty() && language != only)
            continue;
        const double threshold = models->grammar(language).acceptanceThreshold;
        auto decoder = models->takeDecoder(language);
        std::mt19937 random(1);
        double seconds = 0;
        double cpu = 0;
        const auto run = [&](const char *kind, const std::vector<std::string> &texts) {
            int clips = 0;
            int right = 0;
            int accepted = 0;
            int rightAndAccepted = 0;
            std::size_t offset = phase;
            for (const auto &condition : ownOnly ? std::span(&ownVoice, 1) : std::span(conditions)) {
                for (std::size_t i = offset++ % every; i < texts.size(); i += every) {
                    const auto samples = recorded(texts[i], language, condition, random);
                    const double before = cpuSeconds();
                    const auto outcome = listen(*decoder, samples, texts[i]);
                    cpu += cpuSeconds() - before;
                    seconds += static_cast<double>(samples.size()) / EndPointer::sampleRateHz;
                    ++clips;
                    const bool isAccepted = outcome.heard && outcome.score >= threshold;
                    right += outcome.right ? 1 : 0;
                    accepted += isAccepted ? 1 : 0;
                    rightAndAccepted += outcome.right && isAccepted ? 1 : 0;
                    if (misses && *kind == 'b' && !(outcome.right && isAccepted))
                        std::printf("  %s: %s -> %s (%.0f)\n", condition.name, texts[i].c_str(), outcome.text.c_str(),
                                    outcome.score);
                    if (scores)
                        scores << kind << '\t' << language << '\t' << condition.name << '\t' << texts[i] << '\t'
                               << outcome.heard << '\t' << outcome.right << '\t' << outcome.mean << '\t'
                               << outcome.worst << '\t' << outcome.score << '\t' << outcome.text << '\n';
                }
            }
            std::printf("%s %-8s %5d clips, nearest sentence right %5.1f %%, accepted %5.1f %%, right and accepted "
                        "%5.1f %%\n",
                        language.c_str(), kind, clips, 100.0 * right / clips, 100.0 * accepted / clips,
                        100.0 * rightAndAccepted / clips);
            std::fflush(stdout);
        };
        std::vector<std::string> inside;
        for (const auto &phrase : models->book().phrases())
            inside.push_back(phrase.text.at(language));
        run("book", inside);
        if (!bookOnly) {
            run("unlike", outsideSentences(language));
            run("near", nearSentences(models->book(), language, random));
        }
        std::printf("%s cost %.3f s of CPU for a second of sound\n", language.c_str(), cpu / seconds);
    }
    return 0;
} catch (const std::exception &error) {
    std::fprintf(stderr, "measure-recogniser: %s\n", error.what());
    return 1;
}
