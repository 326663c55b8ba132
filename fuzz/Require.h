// Checks a property that must hold for every input.
#pragma once

#include <cstdio>
#include <cstdlib>

inline void Require(bool holds, const char* what)
{
    if (!holds)
    {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}
