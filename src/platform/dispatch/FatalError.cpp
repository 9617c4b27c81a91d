#include "platform/dispatch/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace vynlex {

void fatalError(const QString &message)
{
    std::fprintf(stderr, "Fatal error: %s\n", message.toUtf8().constData());
    std::fflush(stderr);
    std::abort();
}

} // namespace vynlex
