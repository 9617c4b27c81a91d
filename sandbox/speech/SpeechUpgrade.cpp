#include "sandbox/speech/SpeechUpgrade.h"

#include <algorithm>
#include <array>

#include "sandbox/server/Target.h"
#include "sandbox/speech/SpeechMessage.h"

namespace sandbox {
namespace {

constexpr std::array<std::string_view, 7> locales = {"en-US", "en-IN", "hi-IN", "gu-IN", "mr-IN", "bn-IN", "te-IN"};

HttpResponse answer(const HttpRequest &request, boost::beast::http::status status, std::string text)
{
    HttpResponse response(status, request.version());
    response.set(boost::beast::http::field::content_type, "text/plain; charset=utf-8");
    response.body() = std::move(text);
    return response;
}

/// A header, or the parameter of the same name: browsers cannot set headers, and their clients copy them.
std::string headerOrParameter(const HttpRequest &request, const Target &target, std::string_view name)
{
    const auto header = request.find(name);
    if (header != request.end())
        return std::string(header->value());
    const std::string *const parameter = target.first(name);
    return parameter ? *parameter : std::string();
}

} // namespace

std::optional<HttpResponse> refusalOf(const HttpRequest &request, const Subscription &subscription)
{
    using boost::beast::http::status;
    const auto target = Target::parse(request.target());
    if (!target)
        return answer(request, status::bad_request, "The request target cannot be read.");
    const std::string_view host = request[boost::beast::http::field::host];
    const bool goodKey = subscription.acceptsKey(headerOrParameter(request, *target, "Ocp-Apim-Subscription-Key"));
    if (!goodKey || !subscription.acceptsRegion(host.substr(0, host.find('.'))))
        return answer(request, status::unauthorized, "The subscription key is missing or wrong.");
    if (!isIdentifier(headerOrParameter(request, *target, "X-ConnectionId")))
        return answer(request, status::bad_request, "X-ConnectionId is missing or no identifier.");
    return std::nullopt;
}

std::optional<HttpResponse> recognitionRefusalOf(const HttpRequest &request, const Subscription &subscription)
{
    using boost::beast::http::status;
    if (auto refusal = refusalOf(request, subscription))
        return refusal;
    const auto target = Target::parse(request.target());
    const std::string *const language = target->first("language");
    const auto isLanguage = [&](std::string_view locale) { return language && equalsIgnoringCase(*language, locale); };
    if (std::ranges::none_of(locales, isLanguage))
        return answer(request, status::bad_request, "The language parameter is missing or not supported.");
    const std::string *const format = target->first("format");
    if (format && *format != "simple" && *format != "detailed")
        return answer(request, status::bad_request, "The format parameter is neither simple nor detailed.");
    return std::nullopt;
}

RecognitionParameters recognitionParametersOf(const HttpRequest &request)
{
    const Target target = *Target::parse(request.target());
    RecognitionParameters parameters;
    if (target.path.find("/dictation/") != std::string::npos)
        parameters.mode = RecognitionParameters::Mode::Dictation;
    else if (target.path.find("/interactive/") != std::string::npos)
        parameters.mode = RecognitionParameters::Mode::Interactive;
    const std::string &language = *target.first("language");
    parameters.locale =
        *std::ranges::find_if(locales, [&](std::string_view locale) { return equalsIgnoringCase(language, locale); });
    if (parameters.locale == "en-IN")
        parameters.locale = "en-US"; // one English model serves both
    const std::string *const format = target.first("format");
    parameters.detailed = format && *format == "detailed";
    return parameters;
}

} // namespace sandbox
