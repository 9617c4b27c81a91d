#include "sandbox/translation/TranslatorError.h"

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include <string_view>

#include "sandbox/server/HttpSession.h"

namespace sandbox {

namespace {

std::string_view message(TranslatorError error)
{
    switch (error) {
    case TranslatorError::InputInvalid:
        return "One of the request inputs is not valid.";
    case TranslatorError::TextMissing:
        return "An input text is missing or invalid.";
    case TranslatorError::ElementInvalid:
        return "One of the elements in the array of input text is not valid.";
    case TranslatorError::ApiVersionInvalid:
        return "The API version parameter is missing or invalid.";
    case TranslatorError::SourceLanguageInvalid:
        return "The source language is not valid.";
    case TranslatorError::TargetLanguageInvalid:
        return "The target language is not valid.";
    case TranslatorError::TextTooLong:
        return "The input text is too long.";
    case TranslatorError::TextTypeInvalid:
        return "The value is not valid for TextType.";
    case TranslatorError::TooManyElements:
        return "The array of input text has too many elements.";
    case TranslatorError::BodyNotJson:
        return "The body of the request is not valid JSON.";
    case TranslatorError::RequestTooLarge:
        return "The maximum request size has been exceeded.";
    case TranslatorError::NotAuthorized:
        return "The request is not authorized because credentials are missing or invalid.";
    case TranslatorError::MethodNotSupported:
        return "The request method is not supported for the requested resource.";
    case TranslatorError::ContentTypeInvalid:
        return "The Content-Type header is missing or invalid.";
    }
    return "";
}

} // namespace

HttpResponse errorAnswer(TranslatorError error)
{
    const int code = static_cast<int>(error);
    boost::json::object detail;
    detail["code"] = code;
    detail["message"] = message(error);
    boost::json::object body;
    body["error"] = std::move(detail);
    return jsonResponse(static_cast<unsigned>(code / 1000), boost::json::serialize(body));
}

} // namespace sandbox
