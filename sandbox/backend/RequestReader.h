#pragma once

#include <boost/json/value.hpp>
#include <tl/expected.hpp>

#include <cstddef>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sandbox/backend/ApiError.h"

namespace sandbox {

/// Reads the parameters of a query strictly: what is left over is an error, as is what stands there twice.
class QueryReader {
public:
    using Query = std::vector<std::pair<std::string, std::string>>;
    explicit QueryReader(const Query &query);

    /// Without a fallback, the parameter is required.
    int integer(std::string_view name, int least, int most, std::optional<int> fallback = {});
    std::optional<std::string> text(std::string_view name);
    /// Separated by commas, at least one, each one of `allowed`. Required.
    std::vector<std::string> words(std::string_view name, const std::vector<std::string> &allowed);

    /// What is wrong first of all, once everything was read.
    [[nodiscard]] std::optional<ApiError> problem() const;

private:
    void complain(std::string_view name, const std::string &what);

    const Query &m_query;
    std::set<std::string, std::less<>> m_read;
    std::string m_problem;
};

/// Reads an object of a body strictly, and notes everything that is wrong in it. Where it returns no value it has
/// complained.
class ObjectReader {
public:
    static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

    /// All must outlive it. `path` is where the object stands in the body.
    ObjectReader(const boost::json::value &value, std::string path, FieldErrors &errors);
    /// Complains about what was not read.
    ~ObjectReader();
    ObjectReader(const ObjectReader &) = delete;
    ObjectReader &operator=(const ObjectReader &) = delete;

    /// `longest` counts characters.
    std::string text(std::string_view key, std::size_t longest = unlimited);
    std::vector<std::string> texts(std::string_view key, std::size_t fewest, std::size_t most);
    const boost::json::value *member(std::string_view key);
    /// The elements, none when it has complained.
    const boost::json::array &array(std::string_view key, std::size_t most = unlimited);

    [[nodiscard]] std::string pathOf(std::string_view key) const;
    [[nodiscard]] std::string pathOf(std::string_view key, std::size_t index) const;
    void complain(std::string path, std::string what);

private:
    const boost::json::object *m_object;
    std::string m_path;
    FieldErrors &m_errors;
    std::set<std::string, std::less<>> m_read;
};

/// BAD_REQUEST when the text is no JSON.
tl::expected<boost::json::value, ApiError> parseBody(const std::string &text);

} // namespace sandbox
