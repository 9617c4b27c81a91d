#pragma once

#include <stdexcept>

namespace vynlex::fuzz {

/// A property does not hold.
struct Broken : std::logic_error {
    using std::logic_error::logic_error;
};

/// `what` says what must hold.
inline void require(bool holds, const char *what)
{
    if (!holds)
        throw Broken(what);
}

/// The kit wanted to end the process, which is no crash. Thrown in place of that: see DeliberateEnd.cpp.
struct DeliberateEnd {};

template<typename Decode> bool endsDeliberately(const Decode &decode)
{
    try {
        decode();
        return false;
    } catch (const DeliberateEnd &) {
        return true;
    }
}

} // namespace vynlex::fuzz
