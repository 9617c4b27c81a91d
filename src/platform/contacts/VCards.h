#pragma once

#include <QByteArray>

#include <vector>

#include "platform/contacts/ContactStore.h"

namespace vynlex {

/// The contacts of a text of vCards, versions 2.1, 3.0 and 4.0, in its order. A pure function; any bytes will do.
///
/// Cards that do not end, or stand in another card, are passed over; so are names and numbers of more than 8 KiB, and
/// those after the first 64 KiB of them in a card. Bytes that are no UTF-8 and have no character set of their own are
/// read as Windows-1252.
std::vector<AddressBookContact> contactsInVCards(const QByteArray &text);

} // namespace vynlex
