// What ucrtbase.dll exports and MinGW-w64 does not declare of the functions that take a locale.
#pragma once
#include_next <locale.h>
#include <stdlib.h>
#ifdef __cplusplus
extern "C"
{
#endif
    float __cdecl _strtof_l(char const*, char**, _locale_t);
    int __cdecl ___mb_cur_max_l_func(_locale_t);
#ifdef __cplusplus
}
#endif
// A long double is a double in this ABI.
static __inline long double _strtold_l(char const* text, char** end, _locale_t locale)
{
    return _strtod_l(text, end, locale);
}
