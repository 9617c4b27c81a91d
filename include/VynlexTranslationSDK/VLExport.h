#pragma once

#include <QtGlobal>

#if defined(VYNLEX_STATIC)
#    define VYNLEX_EXPORT
#elif defined(VYNLEX_BUILDING)
#    define VYNLEX_EXPORT Q_DECL_EXPORT
#else
#    define VYNLEX_EXPORT Q_DECL_IMPORT
#endif
