// libFuzzer calls the target that VYNLEX_FUZZ_TARGET names.

#include <QCoreApplication>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "tests/fuzz/FuzzTargets.h"

namespace {

const vynlex::fuzz::Target *target = nullptr;

}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static const QCoreApplication application(*argc, *argv);
    using vynlex::fuzz::targets;
    const QByteArray name = qgetenv("VYNLEX_FUZZ_TARGET");
    const auto *const found =
        std::find_if(targets.begin(), targets.end(), [&](const auto &known) { return name == known.name; });
    if (found == targets.end()) {
        std::fprintf(stderr, "VYNLEX_FUZZ_TARGET must name one of:");
        for (const auto &known : targets)
            std::fprintf(stderr, " %s", known.name);
        std::fputc('\n', stderr);
        std::exit(2);
    }
    target = &*found;
    // The kit's console lines would be all that is to be seen.
    if (!std::freopen("/dev/null", "w", stdout))
        std::exit(2);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    target->run(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    return 0;
}
