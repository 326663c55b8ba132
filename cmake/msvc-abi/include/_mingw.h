// MinGW-w64's own file under this name, read as by a compiler that is not MSVC's: what it puts in the place of
// MSVC's attributes comes after declarators, where clang does not take it, and it leaves the definition of a class's
// __uuidof to the compiler, for which the classes here are not marked.
#pragma once
#pragma push_macro("_MSC_VER")
#undef _MSC_VER
#include_next <_mingw.h>
#pragma pop_macro("_MSC_VER")
// Defined as nothing there for compilers that do not know GCC's attributes; clang does in every mode.
#undef __attribute__
