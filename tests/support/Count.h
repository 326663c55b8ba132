// What a test counts beside its verdict.
#pragma once

#include <cstdio>

namespace zeb::test
{

/// Prints a number for scripts/run-tests.py, which adds up those of one name over all programs of a target.
inline void PrintCount(const char* name, long number)
{
    std::printf("counted %s: %ld\n", name, number);
}

} // namespace zeb::test
