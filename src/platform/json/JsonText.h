#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <tl/expected.hpp>

namespace vynlex {

/// The value of a whole JSON text (UTF-8): an object, an array, or a text, number or word on its own, which
/// QJsonDocument does not take. The error is the parser's own words. Any thread.
tl::expected<QJsonValue, QString> parseJson(const QByteArray &text);

} // namespace vynlex
