#include "language/LanguageOption.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

const std::array<LanguageEntry, allLanguageOptions.size()> &catalogue()
{
    // clang-format off
    static const std::array<LanguageEntry, allLanguageOptions.size()> entries = {{
        {LanguageOption::english,  u"English"_s, u"en"_s, u"en-US"_s, u"en-US-AriaNeural"_s,     u"Press mic to begin conversation"_s},
        {LanguageOption::hindi,    u"हिंदी"_s,     u"hi"_s, u"hi-IN"_s, u"hi-IN-SwaraNeural"_s,    u"बातचीत शुरू करने के लिए माइक दबाएं"_s},
        {LanguageOption::gujarati, u"ગુજરાતી"_s,  u"gu"_s, u"gu-IN"_s, u"gu-IN-DhwaniNeural"_s,   u"વાતચીત શરૂ કરવા માટે માઇક દબાવો"_s},
        {LanguageOption::marathi,  u"मराठी"_s,    u"mr"_s, u"mr-IN"_s, u"mr-IN-AarohiNeural"_s,   u"संभाषण सुरू करण्यासाठी माइक दाबा"_s},
        {LanguageOption::bengali,  u"বাংলা"_s,    u"bn"_s, u"bn-IN"_s, u"bn-IN-TanishaaNeural"_s, u"কথোপকথন শুরু করতে মাইক টিপুন"_s},
        {LanguageOption::telugu,   u"తెలుగు"_s,   u"te"_s, u"te-IN"_s, u"te-IN-ShrutiNeural"_s,   u"సంభాషణను ప్రారంభించడానికి మైక్ నొక్కండి"_s},
    }};
    // clang-format on
    return entries;
}

} // namespace

const LanguageEntry &languageEntry(LanguageOption option)
{
    return catalogue().at(static_cast<std::size_t>(option));
}

const QString &rawValue(LanguageOption option)
{
    return languageEntry(option).displayName;
}

std::optional<LanguageOption> languageFromRawValue(QStringView rawValue)
{
    const auto &entries = catalogue();
    const auto found = std::ranges::find(entries, rawValue, &LanguageEntry::displayName);
    return found == entries.end() ? std::nullopt : std::optional(found->option);
}

} // namespace vynlex
