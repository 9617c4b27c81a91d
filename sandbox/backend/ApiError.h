#pragma once

#include <boost/json/object.hpp>

#include <string>
#include <vector>

namespace sandbox {

/// What is wrong with one value of a body.
struct FieldError {
    std::string path; ///< as in contacts[2].phoneNo; empty for the body itself
    std::string message;
};
using FieldErrors = std::vector<FieldError>;

/// A refusal of the backend.
struct ApiError {
    unsigned status = 0;
    std::string code;
    std::string text;   ///< for people
    FieldErrors fields; ///< of a body; then without text

    static ApiError badRequest(std::string text);
    static ApiError invalidQuery(std::string text);
    static ApiError invalidBody(FieldErrors fields);
    static ApiError unauthorized();
    static ApiError tokenExpired();
    static ApiError forbidden(std::string text);
    static ApiError notFound(std::string text);
    static ApiError methodNotAllowed();
    static ApiError tooLarge(std::string text);
    static ApiError unsupportedMediaType();
    /// Status 467, of the backend's own: the caller's account waits for admission.
    static ApiError waiting();

    /// {"message":code,"errors":text}, or {"message":code,"errorsArray":[{"message":...,"path":...}]}
    [[nodiscard]] boost::json::object body() const;
};

} // namespace sandbox
