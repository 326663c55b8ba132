// Argument lists by the compiler's own built-ins: a va_list is a char* in this ABI.
#pragma once
#define _INC_VADEFS
#include <_mingw.h>
#ifndef _VA_LIST_DEFINED
#define _VA_LIST_DEFINED
typedef __builtin_va_list va_list;
#endif
#define _ADDRESSOF(value) __builtin_addressof(value)
#define _crt_va_start(list, last) __builtin_va_start(list, last)
#define _crt_va_arg(list, type) __builtin_va_arg(list, type)
#define _crt_va_end(list) __builtin_va_end(list)
#define _crt_va_copy(to, from) __builtin_va_copy(to, from)
