#pragma once

#include <QJsonValue>
#include <QString>
#include <QVariant>

#include <concepts>
#include <map>
#include <optional>
#include <type_traits>

#include "api/VLAPIPath.h"
#include "api/VLHTTPMethod.h"
#include "platform/json/Record.h"

namespace vynlex {

/// One query item per entry, its value as `QVariant::toString` writes it. Sorted by key, and so they go out.
using VLQueryParameters = std::map<QString, QVariant>;

/// The body of a POST or PUT, as a JSON object.
using VLRequestParameters = std::map<QString, QJsonValue>;

/// What a request to the backend is: a record with these fields, in this order, and the record that is the answer.
template<typename Request>
concept VLAPIRequest = requires
{
    typename Request::ReturnDataType;
    requires JsonRecord<typename Request::ReturnDataType>;
    requires std::same_as<decltype(Request::path), VLAPIPath>;
    requires std::same_as<decltype(Request::method), VLHTTPMethod>;
    requires std::same_as<decltype(Request::queryParameters), std::optional<VLQueryParameters>>;
    requires std::same_as<decltype(Request::requestParameters), std::optional<VLRequestParameters>>;
    requires std::same_as<decltype(Request::response), std::type_identity<typename Request::ReturnDataType>>;
};

} // namespace vynlex
