#include "sandbox/phrasebook/Phrasebook.h"

#include "sandbox/phrasebook/Utf8.h"

#include <algorithm>
#include <fstream>
#include <set>
#include <stdexcept>

namespace sandbox {
namespace {

std::vector<std::string> columns(const std::string &line)
{
    std::vector<std::string> fields;
    std::size_t start = 0;
    while (true) {
        const auto tab = line.find('\t', start);
        fields.push_back(line.substr(start, tab - start));
        if (tab == std::string::npos)
            return fields;
        start = tab + 1;
    }
}

std::vector<std::string> heading()
{
    std::vector<std::string> names{"id"};
    names.insert(names.end(), phrasebookLanguages.begin(), phrasebookLanguages.end());
    return names;
}

bool isIgnored(char32_t c)
{
    const bool asciiLetterOrDigit = (c >= U'0' && c <= U'9') || (c >= U'a' && c <= U'z') || (c >= U'A' && c <= U'Z');
    if (c < 0x80)
        return !asciiLetterOrDigit;
    return c == 0xA0 || c == 0xA1 || c == 0xBF || c == 0xAB || c == 0xBB // spaces, marks and quotes of Latin-1
           || (c >= 0x2000 && c <= 0x206F)                               // general punctuation with (zero width) spaces
           || c == 0x0964 || c == 0x0965                                 // danda, double danda
           || c == 0x3000 || c == 0x3002 || c == 0xFEFF;
}

/// The canonical decompositions that occur in the six languages.
std::u32string decomposed(char32_t c)
{
    struct Pair {
        char32_t composed;
        char32_t first;
        char32_t second;
    };
    static constexpr Pair pairs[] = {
        {0x0929, 0x0928, 0x093C}, {0x0931, 0x0930, 0x093C}, {0x0934, 0x0933, 0x093C}, {0x0958, 0x0915, 0x093C},
        {0x0959, 0x0916, 0x093C}, {0x095A, 0x0917, 0x093C}, {0x095B, 0x091C, 0x093C}, {0x095C, 0x0921, 0x093C},
        {0x095D, 0x0922, 0x093C}, {0x095E, 0x092B, 0x093C}, {0x095F, 0x092F, 0x093C}, {0x09CB, 0x09C7, 0x09BE},
        {0x09CC, 0x09C7, 0x09D7}, {0x09DC, 0x09A1, 0x09BC}, {0x09DD, 0x09A2, 0x09BC}, {0x09DF, 0x09AF, 0x09BC},
        {0x0C48, 0x0C46, 0x0C56},
    };
    const auto *found =
        std::find_if(std::begin(pairs), std::end(pairs), [c](const Pair &p) { return p.composed == c; });
    return found == std::end(pairs) ? std::u32string(1, c) : std::u32string{found->first, found->second};
}

} // namespace

Phrasebook Phrasebook::load(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read the phrasebook " + file.string());

    int lineNumber = 0;
    const auto fail = [&](const std::string &what) -> std::runtime_error {
        return std::runtime_error(file.string() + ":" + std::to_string(lineNumber) + ": " + what);
    };

    Phrasebook book;
    std::set<std::string, std::less<>> ids;
    for (std::string line; std::getline(in, line);) {
        ++lineNumber;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        const auto fields = columns(line);
        if (lineNumber == 1) {
            if (fields != heading())
                throw fail("the heading has to be id, en, hi, gu, mr, bn, te, separated by tabs");
            continue;
        }
        if (fields.size() != 1 + phrasebookLanguages.size())
            throw fail("expected 7 columns, found " + std::to_string(fields.size()));
        if (fields[0].empty() || !ids.insert(fields[0]).second)
            throw fail("the id '" + fields[0] + "' is empty or stands twice");

        Phrase phrase{fields[0], {}};
        for (std::size_t language = 0; language < phrasebookLanguages.size(); ++language) {
            const auto &text = fields[language + 1];
            const std::string code(phrasebookLanguages[language]);
            const auto key = normalised(text);
            if (key.empty())
                throw fail("no text for '" + code + "'");
            if (const auto *twin = book.find(text, code))
                throw fail("'" + phrase.id + "' reads like '" + twin->id + "' in '" + code + "'");
            book.m_byNormalisedText[key].push_back({book.m_phrases.size(), language});
            phrase.text.emplace(code, text);
        }
        book.m_phrases.push_back(std::move(phrase));
    }
    if (lineNumber == 0)
        throw fail("the phrasebook is empty");
    return book;
}

std::filesystem::path Phrasebook::defaultFile()
{
    return SANDBOX_PHRASEBOOK_FILE;
}

std::optional<Phrasebook::Match> Phrasebook::find(std::string_view text) const
{
    const auto found = m_byNormalisedText.find(normalised(text));
    if (found == m_byNormalisedText.end())
        return std::nullopt;
    const auto &place = found->second.front();
    return Match{&m_phrases[place.phrase], std::string(phrasebookLanguages[place.language])};
}

const Phrase *Phrasebook::find(std::string_view text, std::string_view language) const
{
    const auto found = m_byNormalisedText.find(normalised(text));
    if (found == m_byNormalisedText.end())
        return nullptr;
    for (const auto &place : found->second)
        if (phrasebookLanguages[place.language] == language)
            return &m_phrases[place.phrase];
    return nullptr;
}

std::string Phrasebook::normalised(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (const char32_t c : fromUtf8(text)) {
        if (isIgnored(c))
            continue;
        for (const char32_t part : decomposed(c))
            appendUtf8(result, part >= U'A' && part <= U'Z' ? part + (U'a' - U'A') : part);
    }
    return result;
}

} // namespace sandbox
