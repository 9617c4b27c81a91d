#pragma once

#include <QtGlobal>

/// Marks what hosts may call; all else stays inside the library. Building the kit and using it need the same mark on
/// every platform that the kit runs on.
#define VYNLEX_EXPORT Q_DECL_EXPORT
