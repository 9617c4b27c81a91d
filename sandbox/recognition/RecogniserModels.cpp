#include "sandbox/recognition/RecogniserModels.h"

#include "sandbox/phrasebook/Utf8.h"
#include "sandbox/recognition/UtteranceDecoder.h"
#include "sandbox/synthesis/EspeakEngine.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace sandbox {
namespace {

constexpr std::size_t pronunciationsPerWord = 8;

/// Where one right sentence in twenty of strange voices is refused. Found with sandbox/tools/measure-recogniser.
double acceptanceThreshold(const std::string &language)
{
    static const std::map<std::string, double, std::less<>> thresholds{{"en", -101}, {"hi", -88}, {"gu", -87},
                                                                       {"mr", -85},  {"bn", -82}, {"te", -88}};
    return thresholds.at(language);
}

/// A word of a sentence as one says it: lower case, without the punctuation at its ends.
std::string spokenForm(const std::string &written)
{
    static const std::vector<std::string> marks{".", ",", "?", "!", "।", "॥"};
    std::string word = written;
    for (bool again = true; again;) {
        again = false;
        for (const auto &mark : marks) {
            if (word.ends_with(mark)) {
                word.erase(word.size() - mark.size());
                again = true;
            }
        }
    }
    for (char &c : word)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return word;
}

/// The lines of the CMU dictionary for some words: "word PHONES" and "word(2) PHONES".
std::map<std::string, std::vector<Pronunciation>> lookUp(const std::filesystem::path &dictionary,
                                                         const std::vector<Grammar::Word> &words)
{
    std::ifstream in(dictionary);
    if (!in)
        throw std::runtime_error("cannot read the dictionary " + dictionary.string());
    std::map<std::string, std::vector<Pronunciation>> found;
    for (const auto &word : words)
        found[word.spoken];
    for (std::string line; std::getline(in, line);) {
        const auto space = line.find(' ');
        if (space == std::string::npos)
            continue;
        const auto entry = found.find(line.substr(0, std::min(space, line.find('('))));
        if (entry != found.end())
            entry->second.push_back(line.substr(space + 1));
    }
    return found;
}

void append(std::vector<Pronunciation> &pronunciations, const std::vector<Pronunciation> &more)
{
    for (const auto &pronunciation : more)
        if (pronunciations.size() < pronunciationsPerWord &&
            std::find(pronunciations.begin(), pronunciations.end(), pronunciation) == pronunciations.end())
            pronunciations.push_back(pronunciation);
}

} // namespace

std::filesystem::path RecogniserModels::defaultAcousticModel()
{
    return SANDBOX_POCKETSPHINX_MODELS "/en-us/en-us";
}

std::filesystem::path RecogniserModels::defaultDictionary()
{
    return SANDBOX_POCKETSPHINX_MODELS "/en-us/cmudict-en-us.dict";
}

std::shared_ptr<RecogniserModels> RecogniserModels::load()
{
    return load(Files{});
}

std::shared_ptr<RecogniserModels> RecogniserModels::load(const Files &files)
{
    return std::shared_ptr<RecogniserModels>(new RecogniserModels(files));
}

RecogniserModels::RecogniserModels(const Files &files)
    : m_files(files)
    , m_book(Phrasebook::load(files.phrasebook))
    , m_phones(PhoneMap::load(files.phones))
{
    if (!std::filesystem::exists(files.acousticModel / "mdef"))
        throw std::runtime_error("no acoustic model in " + files.acousticModel.string());
}

RecogniserModels::~RecogniserModels() = default;

std::string RecogniserModels::languageOf(std::string_view locale)
{
    const auto language = locale.substr(0, locale.find('-'));
    if (std::find(phrasebookLanguages.begin(), phrasebookLanguages.end(), language) == phrasebookLanguages.end())
        throw std::invalid_argument("no recognition of '" + std::string(locale) + "'");
    return std::string(language);
}

const Grammar &RecogniserModels::grammar(const std::string &language)
{
    const std::lock_guard lock(m_mutex);
    auto &grammar = m_grammars[language];
    if (!grammar)
        grammar = std::make_unique<const Grammar>(makeGrammar(language));
    return *grammar;
}

std::unique_ptr<UtteranceDecoder> RecogniserModels::takeDecoder(const std::string &language)
{
    const auto &sentences = grammar(language);
    {
        const std::lock_guard lock(m_mutex);
        auto &idle = m_idle[language];
        if (!idle.empty()) {
            auto decoder = std::move(idle.back());
            idle.pop_back();
            return decoder;
        }
    }
    return std::make_unique<UtteranceDecoder>(sentences, m_files.acousticModel);
}

void RecogniserModels::giveBack(const std::string &language, std::unique_ptr<UtteranceDecoder> decoder)
{
    const std::lock_guard lock(m_mutex);
    m_idle[language].push_back(std::move(decoder));
}

Grammar RecogniserModels::makeGrammar(const std::string &language) const
{
    Grammar grammar;
    grammar.acceptanceThreshold = acceptanceThreshold(language);
    std::map<std::string, std::size_t> places;
    for (const auto &phrase : m_book.phrases()) {
        Grammar::Sentence sentence{phrase.text.at(language), {}, {}};
        std::istringstream words(sentence.text);
        for (std::string written; words >> written;) {
            const auto spoken = spokenForm(written);
            const auto [place, isNew] = places.try_emplace(spoken, grammar.words.size());
            if (isNew)
                grammar.words.push_back({spoken, {}});
            sentence.words.push_back(place->second);
            if (written.ends_with(','))
                sentence.pauses.push_back(sentence.words.size());
        }
        grammar.sentences.push_back(std::move(sentence));
    }

    auto &engine = EspeakEngine::instance();
    if (language == "en") {
        // The dictionary knows how Americans say a word; espeak-ng's two accents add how others do.
        const auto known = lookUp(m_files.dictionary, grammar.words);
        for (auto &word : grammar.words) {
            append(word.pronunciations, known.at(word.spoken));
            for (const char *accent : {"en-us", "en"})
                append(word.pronunciations, m_phones.pronunciations(engine.ipa(word.spoken, accent), language, 2));
        }
    } else {
        for (auto &word : grammar.words)
            word.pronunciations =
                m_phones.pronunciations(engine.ipa(word.spoken, language), language, pronunciationsPerWord);
    }
    for (const auto &word : grammar.words)
        if (word.pronunciations.empty())
            throw std::runtime_error("no pronunciation for '" + word.spoken + "' (" + language + ")");
    return grammar;
}

} // namespace sandbox
