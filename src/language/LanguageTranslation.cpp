#include "language/LanguageTranslation.h"

#include <algorithm>

#include "platform/device/Platform.h"
#include "platform/storage/UserDefaults.h"

using namespace Qt::StringLiterals;

namespace vynlex {
namespace {

struct SideSettings {
    QString key;
    LanguageOption fallback;
};

const SideSettings &settings(Side side)
{
    static const SideSettings speaker{u"SpeakerLanguage"_s, LanguageOption::english};
    static const SideSettings listener{u"ListenerLanguage"_s, LanguageOption::hindi};
    return side == Side::Speaker ? speaker : listener;
}

} // namespace

LanguageTranslation::LanguageTranslation(std::shared_ptr<UserDefaults> store)
    : m_store(std::move(store))
{
}

LanguageTranslation &LanguageTranslation::shared()
{
    static auto *const instance = new LanguageTranslation;
    return *instance;
}

LanguageOption LanguageTranslation::language(Side side) const
{
    return entry(side).option;
}
QString LanguageTranslation::displayName(Side side) const
{
    return entry(side).displayName;
}
QString LanguageTranslation::translatorCode(Side side) const
{
    return entry(side).translatorCode;
}
QString LanguageTranslation::recognitionLocale(Side side) const
{
    return entry(side).recognitionLocale;
}
QString LanguageTranslation::promptText(Side side) const
{
    return entry(side).promptText;
}
QString LanguageTranslation::voice(Side side) const
{
    return entry(side).synthesisVoice;
}

QString LanguageTranslation::voiceForLocale(QStringView locale)
{
    const auto found = std::ranges::find_if(
        allLanguageOptions, [&](LanguageOption option) { return languageEntry(option).recognitionLocale == locale; });
    return languageEntry(found == allLanguageOptions.end() ? LanguageOption::english : *found).synthesisVoice;
}

void LanguageTranslation::store(Side side, LanguageOption option)
{
    userDefaults()->setString(settings(side).key, rawValue(option));
}

std::shared_ptr<UserDefaults> LanguageTranslation::userDefaults() const
{
    return m_store ? m_store : Platform::current()->userDefaults;
}

const LanguageEntry &LanguageTranslation::entry(Side side) const
{
    const auto stored = userDefaults()->string(settings(side).key);
    const auto option = stored ? languageFromRawValue(*stored) : std::nullopt;
    return languageEntry(option.value_or(settings(side).fallback));
}

} // namespace vynlex
