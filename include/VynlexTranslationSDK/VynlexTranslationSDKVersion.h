#pragma once

#include <VynlexTranslationSDK/VynlexExport.h>

// Two symbols that any language and any tool can look up by name.
extern "C" {
/// The version of the library that is loaded: 1.0.
extern VYNLEX_EXPORT const double VynlexTranslationSDKVersionNumber;
/// The line that tools like `what` search for, with a line feed and a zero at its end.
extern VYNLEX_EXPORT const char VynlexTranslationSDKVersionString[];
}
