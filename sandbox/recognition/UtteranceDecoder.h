#pragma once

#include "sandbox/recognition/RecogniserModels.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

struct ps_decoder_s;

namespace sandbox {

/// PocketSphinx with one language's grammar and a free phone loop. One thread at a time.
class UtteranceDecoder {
public:
    /// `grammar` outlives the decoder. Throws std::runtime_error when the model does not load.
    UtteranceDecoder(const Grammar &grammar, const std::filesystem::path &acousticModel);

    struct Decoding {
        const Grammar::Sentence *sentence;
        /// How well the sentence explains the sound, compared with any sequence of sounds: the mean difference of the
        /// acoustic scores a frame, plus the worst word's. 0 is perfect, the more negative the worse.
        double score;
        double meanDifference;
        double worstWord;
    };

    /// The sentence of the grammar nearest to a whole utterance of 16 kHz mono sound; nothing when none fits at all.
    [[nodiscard]] std::optional<Decoding> decode(std::span<const std::int16_t> samples);

    /// The words heard so far in the beginning of an utterance, lower case; may be empty.
    [[nodiscard]] std::string beginning(std::span<const std::int16_t> samples);

private:
    struct Deleter {
        void operator()(ps_decoder_s *decoder) const;
    };
    struct Stretch {
        std::string name;
        int firstFrame;
        int lastFrame;
        double acousticScore;
    };

    void start(const char *search, std::span<const std::int16_t> samples);
    [[nodiscard]] std::vector<Stretch> segmentation() const;
    [[nodiscard]] const Grammar::Word *word(const std::string &token) const;

    const Grammar &m_grammar;
    std::unique_ptr<ps_decoder_s, Deleter> m_decoder;
};

} // namespace sandbox
