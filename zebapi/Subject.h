// What failures are about, for the context of an exception.
#pragma once

#include "zebapi/Exception.h"

namespace zeb
{

/// A property tag as "PR_SUBJECT 0x0037001F", or without a name where it has none.
CStringA TagText(ULONG tag);

/// Throws a failure that is about a property.
[[noreturn]] void ThrowTag(LONG result, ULONG tag, const char* file, int line,
                           const char* operation = ZEB_CALLER);

/// Throws a failure that is about an index beyond the count: "row 7 of 3".
/// @param what a row, a value; static text
[[noreturn]] void ThrowIndex(LONG result, const char* what, LONG index, ULONG count, const char* file,
                             int line, const char* operation = ZEB_CALLER);

/// Runs `body`; a CZebException that leaves it is about the property.
template <class Body>
auto AboutTag(ULONG tag, Body&& body) -> decltype(body())
{
    return About([tag] { return TagText(tag); }, std::forward<Body>(body));
}

/// Runs `body`; a CZebException that leaves it is about the name, which may be null.
template <class Body>
auto AboutName(const char* name, Body&& body) -> decltype(body())
{
    return About([name] { return CStringA("'") + (name != nullptr ? name : "") + "'"; },
                 std::forward<Body>(body));
}

} // namespace zeb
