#include "sandbox/backend/ApiError.h"

#include <boost/json/array.hpp>

#include <utility>

namespace sandbox {

namespace json = boost::json;

ApiError ApiError::badRequest(std::string text)
{
    return {400, "BAD_REQUEST", std::move(text), {}};
}

ApiError ApiError::invalidQuery(std::string text)
{
    return {400, "VALIDATION_ERROR", std::move(text), {}};
}

ApiError ApiError::invalidBody(FieldErrors fields)
{
    return {400, "VALIDATION_ERROR", "", std::move(fields)};
}

ApiError ApiError::unauthorized()
{
    return {401, "UNAUTHORIZED", "You are not signed in.", {}};
}

ApiError ApiError::tokenExpired()
{
    return {401, "TOKEN_EXPIRED", "Your session has expired.", {}};
}

ApiError ApiError::forbidden(std::string text)
{
    return {403, "FORBIDDEN", std::move(text), {}};
}

ApiError ApiError::notFound(std::string text)
{
    return {404, "NOT_FOUND", std::move(text), {}};
}

ApiError ApiError::methodNotAllowed()
{
    return {405, "METHOD_NOT_ALLOWED", "The method is not supported here.", {}};
}

ApiError ApiError::tooLarge(std::string text)
{
    return {413, "TOO_LARGE", std::move(text), {}};
}

ApiError ApiError::unsupportedMediaType()
{
    return {415, "UNSUPPORTED_MEDIA_TYPE", "The Content-Type must be application/json.", {}};
}

ApiError ApiError::waiting()
{
    return {467, "WAITING_ROOM", "Your request to join was rejected.", {}};
}

json::object ApiError::body() const
{
    json::object body;
    body["message"] = code;
    if (fields.empty()) {
        body["errors"] = text;
        return body;
    }
    json::array array;
    for (const auto &field : fields) {
        json::object one;
        // A client shows the message by itself.
        one["message"] = (field.path.empty() ? "the body" : field.path) + " " + field.message;
        one["path"] = field.path;
        array.push_back(std::move(one));
    }
    body["errorsArray"] = std::move(array);
    return body;
}

} // namespace sandbox
