#pragma once

#include <cstdio>
#include <cstdlib>

namespace lumora {

// A broken invariant of the program itself (never bad input): report and stop deliberately
// rather than run on into undefined behaviour.
[[noreturn]] inline void fatal(const char* what) {
    std::fprintf(stderr, "lumora: fatal programming error: %s\n", what);
    std::abort();
}

inline void check(bool condition, const char* what) {
    if (!condition) fatal(what);
}

}  // namespace lumora
