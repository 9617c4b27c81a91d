#pragma once

#include "sandbox/phrasebook/Phrasebook.h"
#include "sandbox/recognition/PhoneMap.h"

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

class UtteranceDecoder;

/// What the sentences of one language look like to the decoder.
struct Grammar {
    struct Word {
        std::string spoken; ///< lower case, without punctuation
        std::vector<Pronunciation> pronunciations;
    };
    struct Sentence {
        std::string text; ///< as in the book
        std::vector<std::size_t> words;
        std::vector<std::size_t> pauses; ///< places among `words` where punctuation allows a pause
    };
    std::vector<Word> words;
    std::vector<Sentence> sentences;
    /// A decoding with a score below this is not a sentence of the book.
    double acceptanceThreshold = 0;
};

/// Everything that recognisers share: the book, the grammars made from it, and idle decoders. Loaded once; any thread.
class RecogniserModels {
public:
    struct Files {
        std::filesystem::path phrasebook = Phrasebook::defaultFile();
        std::filesystem::path phones = PhoneMap::defaultFile();
        std::filesystem::path acousticModel = defaultAcousticModel(); ///< folder of PocketSphinx' "en-us"
        std::filesystem::path dictionary = defaultDictionary();       ///< CMU dictionary, English words
    };
    /// PocketSphinx' English models where its package puts them.
    static std::filesystem::path defaultAcousticModel();
    static std::filesystem::path defaultDictionary();

    /// Throws std::runtime_error when a file is not there or not of its form. Grammars are made on first use of their
    /// language, which takes about a tenth of a second.
    static std::shared_ptr<RecogniserModels> load();
    static std::shared_ptr<RecogniserModels> load(const Files &files);
    ~RecogniserModels();

    /// The book's language for a locale of the protocol ("hi" for "hi-IN"). Throws std::invalid_argument for others.
    static std::string languageOf(std::string_view locale);

    [[nodiscard]] const Phrasebook &book() const { return m_book; }
    const Grammar &grammar(const std::string &language);

    /// A decoder for `language` that nobody else uses. Give it back for the next; it costs about 20 MB.
    std::unique_ptr<UtteranceDecoder> takeDecoder(const std::string &language);
    void giveBack(const std::string &language, std::unique_ptr<UtteranceDecoder> decoder);

private:
    explicit RecogniserModels(const Files &files);
    [[nodiscard]] Grammar makeGrammar(const std::string &language) const;

    Files m_files;
    Phrasebook m_book;
    PhoneMap m_phones;
    std::mutex m_mutex;
    std::map<std::string, std::unique_ptr<const Grammar>> m_grammars;
    std::map<std::string, std::vector<std::unique_ptr<UtteranceDecoder>>> m_idle;
};

} // namespace sandbox
