#include <QString>

#include "tests/fuzz/Property.h"

// The linker sends every call of vynlex::fatalError here (--wrap, see CMakeLists.txt), so that an input that ends the
// process deliberately does not end the run. Nothing of the kit stands in the way of an exception there.
extern "C" [[noreturn]] void __wrap__ZN6vynlex10fatalErrorERK7QString(const QString &) // NOLINT: the linker's name
{
    throw vynlex::fuzz::DeliberateEnd();
}
