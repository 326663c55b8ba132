// ZEB_OVERLOADS(declaration, ...): the overloads of one name, declared in the order of their slots.
//
// In the Itanium C++ ABI (GCC) virtual operations take their slots in the order of declaration. In the MSVC ABI the
// overloads of one name are grouped at the position of the first, in reverse order of declaration. The arguments are in
// slot order; for the MSVC ABI the macro reverses them, so the slot order is the same in both ABIs. At most 18
// declarations; commas within parentheses do not separate them.
//
//     ZEB_OVERLOADS(
//         /// Appends the tags of an argument list.
//         virtual void Add(ULONG tag, va_list& args),
//         /// Appends the tags that follow.
//         virtual void Add(ULONG tag, ...));
#pragma once

// Selects the macro for the number of declarations: the arguments shift it to the last position.
/// Declares its arguments, the overloads of one name, in the order that the compiler needs for their slots.
#define ZEB_OVERLOADS(...)                                                                                             \
    ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_LAST(__VA_ARGS__, ZEB_OVERLOADS_18, ZEB_OVERLOADS_17, ZEB_OVERLOADS_16,         \
                                            ZEB_OVERLOADS_15, ZEB_OVERLOADS_14, ZEB_OVERLOADS_13, ZEB_OVERLOADS_12,    \
                                            ZEB_OVERLOADS_11, ZEB_OVERLOADS_10, ZEB_OVERLOADS_9, ZEB_OVERLOADS_8,      \
                                            ZEB_OVERLOADS_7, ZEB_OVERLOADS_6, ZEB_OVERLOADS_5, ZEB_OVERLOADS_4,        \
                                            ZEB_OVERLOADS_3, ZEB_OVERLOADS_2, ZEB_OVERLOADS_1)(__VA_ARGS__))
#define ZEB_OVERLOADS_LAST(d1, d2, d3, d4, d5, d6, d7, d8, d9, d10, d11, d12, d13, d14, d15, d16, d17, d18, name, ...) \
    name
// MSVC's traditional preprocessor passes __VA_ARGS__ on as one argument; another expansion splits it.
#define ZEB_OVERLOADS_EXPAND(...) __VA_ARGS__

#ifdef _MSC_VER
#define ZEB_OVERLOADS_PUT(first, others)                                                                               \
    others;                                                                                                            \
    first
#else
#define ZEB_OVERLOADS_PUT(first, others)                                                                               \
    first;                                                                                                             \
    others
#endif

#define ZEB_OVERLOADS_1(first) first
#define ZEB_OVERLOADS_2(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_1(__VA_ARGS__)))
#define ZEB_OVERLOADS_3(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_2(__VA_ARGS__)))
#define ZEB_OVERLOADS_4(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_3(__VA_ARGS__)))
#define ZEB_OVERLOADS_5(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_4(__VA_ARGS__)))
#define ZEB_OVERLOADS_6(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_5(__VA_ARGS__)))
#define ZEB_OVERLOADS_7(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_6(__VA_ARGS__)))
#define ZEB_OVERLOADS_8(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_7(__VA_ARGS__)))
#define ZEB_OVERLOADS_9(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_8(__VA_ARGS__)))
#define ZEB_OVERLOADS_10(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_9(__VA_ARGS__)))
#define ZEB_OVERLOADS_11(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_10(__VA_ARGS__)))
#define ZEB_OVERLOADS_12(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_11(__VA_ARGS__)))
#define ZEB_OVERLOADS_13(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_12(__VA_ARGS__)))
#define ZEB_OVERLOADS_14(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_13(__VA_ARGS__)))
#define ZEB_OVERLOADS_15(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_14(__VA_ARGS__)))
#define ZEB_OVERLOADS_16(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_15(__VA_ARGS__)))
#define ZEB_OVERLOADS_17(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_16(__VA_ARGS__)))
#define ZEB_OVERLOADS_18(first, ...) ZEB_OVERLOADS_PUT(first, ZEB_OVERLOADS_EXPAND(ZEB_OVERLOADS_17(__VA_ARGS__)))
