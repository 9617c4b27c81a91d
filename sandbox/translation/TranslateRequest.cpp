#include "sandbox/translation/TranslateRequest.h"

#include <boost/beast/core/string.hpp>
#include <boost/json/parse.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

#include "sandbox/phrasebook/Phrasebook.h"
#include "sandbox/server/Target.h"

namespace sandbox {

namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace json = boost::json;

namespace {

bool isLanguage(std::string_view code)
{
    return std::any_of(phrasebookLanguages.begin(), phrasebookLanguages.end(),
                       [&](std::string_view known) { return beast::iequals(known, code); });
}

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

std::size_t characterCount(std::string_view utf8)
{
    return static_cast<std::size_t>(std::count_if(
        utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

std::string_view headerOrParameter(const HttpRequest &request, const Target &target, const char *header,
                                   const char *parameter)
{
    if (const auto field = request.find(header); field != request.end())
        return field->value();
    const std::string *value = target.first(parameter);
    return value ? std::string_view(*value) : std::string_view();
}

bool isJson(std::string_view contentType)
{
    std::string_view type = contentType.substr(0, contentType.find(';'));
    while (type.ends_with(' '))
        type.remove_suffix(1);
    return beast::iequals(type, "application/json");
}

tl::expected<std::vector<std::string>, TranslatorError> textsOf(const std::string &body)
{
    boost::system::error_code error;
    const json::value value = json::parse(body, error);
    if (error || !value.is_array())
        return tl::unexpected(TranslatorError::BodyNotJson);
    const json::array &elements = value.get_array();
    if (elements.empty())
        return tl::unexpected(TranslatorError::TextMissing);
    if (elements.size() > TranslateRequest::mostTexts)
        return tl::unexpected(TranslatorError::TooManyElements);

    std::vector<std::string> texts;
    for (const auto &element : elements) {
        if (!element.is_object())
            return tl::unexpected(TranslatorError::ElementInvalid);
        const json::object &object = element.get_object();
        const auto text = std::find_if(object.begin(), object.end(), [](const auto &member) {
            return beast::iequals(std::string_view(member.key()), "text");
        });
        if (text == object.end() || !text->value().is_string())
            return tl::unexpected(TranslatorError::ElementInvalid);
        texts.emplace_back(text->value().get_string());
        if (characterCount(texts.back()) > TranslateRequest::mostCharacters)
            return tl::unexpected(TranslatorError::TextTooLong);
    }
    return texts;
}

} // namespace

std::size_t TranslateRequest::meteredCharacters() const
{
    std::size_t characters = 0;
    for (const auto &text : texts)
        characters += characterCount(text);
    return characters * to.size();
}

tl::expected<TranslateRequest, TranslatorError> TranslateRequest::parse(const HttpRequest &request,
                                                                        const Subscription &subscription)
{
    const auto target = Target::parse(request.target());
    if (!target)
        return tl::unexpected(TranslatorError::InputInvalid);
    const auto key = headerOrParameter(request, *target, "Ocp-Apim-Subscription-Key", "Subscription-Key");
    const auto region = headerOrParameter(request, *target, "Ocp-Apim-Subscription-Region", "Subscription-Region");
    if (!subscription.acceptsKey(key) || !subscription.acceptsRegion(region))
        return tl::unexpected(TranslatorError::NotAuthorized);
    if (request.method() != http::verb::post)
        return tl::unexpected(TranslatorError::MethodNotSupported);
    if (!isJson(request[http::field::content_type]))
        return tl::unexpected(TranslatorError::ContentTypeInvalid);

    const std::string *version = target->first("api-version");
    if (!version || *version != "3.0")
        return tl::unexpected(TranslatorError::ApiVersionInvalid);

    TranslateRequest parsed;
    if (const std::string *from = target->first("from"); from && !from->empty()) {
        if (!isLanguage(*from))
            return tl::unexpected(TranslatorError::SourceLanguageInvalid);
        parsed.from = lowerCase(*from);
    }
    for (const auto &code : target->all("to")) {
        if (!isLanguage(code))
            return tl::unexpected(TranslatorError::TargetLanguageInvalid);
        parsed.to.push_back(lowerCase(code));
    }
    if (parsed.to.empty())
        return tl::unexpected(TranslatorError::TargetLanguageInvalid);
    const std::string *textType = target->first("textType");
    if (textType && !beast::iequals(*textType, "plain") && !beast::iequals(*textType, "html"))
        return tl::unexpected(TranslatorError::TextTypeInvalid);

    auto texts = textsOf(request.body());
    if (!texts)
        return tl::unexpected(texts.error());
    parsed.texts = std::move(*texts);
    if (parsed.meteredCharacters() > mostCharacters)
        return tl::unexpected(TranslatorError::RequestTooLarge);
    return parsed;
}

} // namespace sandbox
