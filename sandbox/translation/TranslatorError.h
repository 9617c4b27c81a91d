#pragma once

#include "sandbox/server/Router.h"

namespace sandbox {

/// The translator's error codes, as documented for its version 3.0: the HTTP status and three digits more.
enum class TranslatorError {
    InputInvalid = 400000,
    TextMissing = 400005,
    ElementInvalid = 400020,
    ApiVersionInvalid = 400021,
    SourceLanguageInvalid = 400035,
    TargetLanguageInvalid = 400036,
    TextTooLong = 400050,
    TextTypeInvalid = 400071,
    TooManyElements = 400072,
    BodyNotJson = 400074,
    RequestTooLarge = 400077,
    NotAuthorized = 401000,
    MethodNotSupported = 405000,
    ContentTypeInvalid = 415000,
};

/// The service's answer: {"error":{"code":401000,"message":"..."}} with the HTTP status of the code.
[[nodiscard]] HttpResponse errorAnswer(TranslatorError error);

} // namespace sandbox
