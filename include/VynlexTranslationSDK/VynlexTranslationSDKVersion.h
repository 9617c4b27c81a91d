#pragma once

#include <VynlexTranslationSDK/VynlexExport.h>

/// The version of the library that is loaded, as two symbols that any language and tool can look up by name.
extern "C" {
/// The project's version: major and minor.
extern VYNLEX_EXPORT const double VynlexTranslationSDKVersionNumber;
/// A line for `what` and its like, with a line feed and a zero at its end.
extern VYNLEX_EXPORT const char VynlexTranslationSDKVersionString[];
}
