#pragma once

#include <QString>

#include <tl/expected.hpp>
#include <vector>

#include "api/DirectoryRecords.h"

/// The entries of an address book in a file, one for each number. An error is one clear line.
tl::expected<std::vector<vynlex::User>, QString> readAddressBook(const QString &file);
