// The runtime's handlers of operator new; MinGW-w64's file under this name leads to <new>, which leads back here.
#pragma once
#include <vcruntime_new.h>
#ifdef __cplusplus
namespace std
{
typedef void(__cdecl* new_handler)();
} // namespace std
extern "C++" std::new_handler __cdecl set_new_handler(std::new_handler) noexcept;
#endif
typedef int(__cdecl* _PNH)(size_t);
