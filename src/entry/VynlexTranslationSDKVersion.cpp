#include <VynlexTranslationSDK/VynlexTranslationSDKVersion.h>

// Tools search binaries for "@(#)". "VynTranslate-1" is the project's name towards them, not its version.
const double VynlexTranslationSDKVersionNumber = 1.0;
const char VynlexTranslationSDKVersionString[] = "@(#)PROGRAM:VynlexTranslationSDK  PROJECT:VynTranslate-1\n";
