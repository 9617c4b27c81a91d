#pragma once

#include "sandbox/phrasebook/Phrasebook.h"
#include "sandbox/server/Router.h"
#include "sandbox/server/Subscription.h"

namespace sandbox {

/// The text translator, version 3.0, "POST /translate", under its global host name and those of its geographies. `book`
/// must outlive the router.
void addTranslationRoutes(Router &router, const Phrasebook &book, Subscription subscription);

} // namespace sandbox
