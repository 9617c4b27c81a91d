#include "sandbox/speech/SpeechUpgrade.h"

#include <boost/beast/core/string.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <array>
#include <charconv>

#include "sandbox/server/HttpSession.h"
#include "sandbox/server/Target.h"
#include "sandbox/speech/SpeechMessage.h"

namespace sandbox {
namespace {

using boost::beast::iequals;

constexpr std::array<std::string_view, 7> locales = {"en-US", "en-IN", "hi-IN", "gu-IN", "mr-IN", "bn-IN", "te-IN"};
constexpr int longestSilenceMs = 600'000;

HttpResponse refusal(unsigned status, std::string_view message)
{
    boost::json::object error;
    error["code"] = std::to_string(status);
    error["message"] = message;
    boost::json::object body;
    body["error"] = std::move(error);
    return jsonResponse(status, boost::json::serialize(body));
}

std::string headerOrParameter(const HttpRequest &request, const Target &target, std::string_view name)
{
    const auto header = request.find(name);
    if (header != request.end())
        return std::string(header->value());
    const std::string *const parameter = target.first(name);
    return parameter ? *parameter : std::string();
}

std::optional<std::chrono::milliseconds> milliseconds(const std::string &text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || value <= 0 || value > longestSilenceMs)
        return std::nullopt;
    return std::chrono::milliseconds(value);
}

} // namespace

std::optional<RecognitionMode> recognitionModeNamed(std::string_view name)
{
    if (iequals(name, "dictation"))
        return RecognitionMode::Dictation;
    if (iequals(name, "conversation"))
        return RecognitionMode::Conversation;
    if (iequals(name, "interactive"))
        return RecognitionMode::Interactive;
    return std::nullopt;
}

std::optional<HttpResponse> refusalOf(const HttpRequest &request, const Subscription &subscription)
{
    const auto target = Target::parse(request.target());
    if (!target)
        return refusal(400, "The request target cannot be read.");
    if (!subscription.acceptsKey(headerOrParameter(request, *target, "Ocp-Apim-Subscription-Key")))
        return refusal(401, "The subscription key is missing or wrong.");
    if (!isIdentifier(headerOrParameter(request, *target, "X-ConnectionId")))
        return refusal(400, "X-ConnectionId is missing or not 32 hexadecimal digits.");
    return std::nullopt;
}

std::optional<HttpResponse> recognitionRefusalOf(const HttpRequest &request, const Subscription &subscription)
{
    if (auto refused = refusalOf(request, subscription))
        return refused;
    const auto target = Target::parse(request.target());
    const std::string *const language = target->first("language");
    if (!language)
        return refusal(400, "The language parameter is missing.");
    if (std::ranges::none_of(locales, [&](std::string_view locale) { return iequals(*language, locale); }))
        return refusal(400, "There is no recognition of the language " + *language + ".");
    const std::string *const format = target->first("format");
    if (format && !iequals(*format, "simple") && !iequals(*format, "detailed"))
        return refusal(400, "The format parameter is neither simple nor detailed.");
    const std::string *const silence = target->first("initialSilenceTimeoutMs");
    if (silence && !milliseconds(*silence))
        return refusal(400, "The initialSilenceTimeoutMs parameter is not a number of milliseconds from 1 to 600000.");
    return std::nullopt;
}

RecognitionParameters recognitionParametersOf(const HttpRequest &request)
{
    const Target target = *Target::parse(request.target());
    RecognitionParameters parameters;
    for (const std::string_view mode : {"dictation", "conversation", "interactive"}) {
        if (target.path.starts_with("/speech/recognition/" + std::string(mode) + "/"))
            parameters.mode = recognitionModeNamed(mode);
    }
    const std::string &language = *target.first("language");
    parameters.locale =
        *std::ranges::find_if(locales, [&](std::string_view locale) { return iequals(language, locale); });
    const std::string *const format = target.first("format");
    parameters.detailed = format && iequals(*format, "detailed");
    if (const std::string *const silence = target.first("initialSilenceTimeoutMs"))
        parameters.initialSilence = milliseconds(*silence);
    return parameters;
}

} // namespace sandbox
