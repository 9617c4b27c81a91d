#pragma once

#include "platform/contacts/ContactStore.h"

// Of libebook.
struct _EVCard; // NOLINT: its name

namespace vynlex {

/// What the kit wants of a card: the first N, or else the first FN, whole, as the given name, because splitting a name
/// is guesswork; and every TEL that is not empty. Of a number in form of an address ("tel:+1-555;ext=5") the number
/// alone is taken.
AddressBookContact contactOf(_EVCard *card);

} // namespace vynlex
