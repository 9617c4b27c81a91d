#pragma once

#include <QString>

#include <vector>

#include "api/DirectoryRecords.h"

namespace vynlex {

/// The characters 0 to 9 of a phone number, without all others.
[[nodiscard]] QString digitsOf(const QString &number);

/// The first contact whose number is the same as `number` or null.
///
/// Numbers are the same when their digits are, "+91" (India) taken away before wherever it stands. What has no digits
/// is no number and the same as none.
[[nodiscard]] const Contact *contactWithNumber(const std::vector<Contact> &contacts, const QString &number);

} // namespace vynlex
