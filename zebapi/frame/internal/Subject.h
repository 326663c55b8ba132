// Texts of objects for the context of an exception.
#pragma once

#include "zebapi/frame/Exception.h"

namespace zeb
{

/// A property tag as "PR_SUBJECT 0x0037001F", or without a name if it has none.
CStringA TagText(ULONG tag);

/// Throws a failure about a property.
[[noreturn]] void ThrowTag(LONG result, ULONG tag, const char* file = ZEB_FILE, int line = ZEB_LINE,
                           const char* operation = ZEB_CALLER);

/// Throws a failure about an index beyond the count: "row 7 of 3".
/// @param what a row, a value; static text
[[noreturn]] void ThrowIndex(LONG result, const char* what, LONG index, ULONG count, const char* file = ZEB_FILE,
                             int line = ZEB_LINE, const char* operation = ZEB_CALLER);

// Texts of objects, for the functions below.

/// An entry identifier in hexadecimal, truncated after 32 bytes: "entry 00000000ABCD (46 bytes)".
CStringA EntryText(const SBinary& entryID);
/// "1 message", "3 messages".
/// @param one the singular; static text
CStringA CountText(ULONG count, const char* one);
/// "'Projects'"; a null name is an empty one. A wide name is shown in the ANSI code page.
CStringA NameText(const char* name);
CStringA NameText(const WCHAR* name);
/// "bookmark 7".
/// @param what static text
CStringA NumberText(const char* what, ULONG number);
/// Rows in either direction: "3 rows", "-1 rows".
CStringA RowsText(LONG count);
/// One property by its tag, several by their count.
CStringA TagsText(const SPropTagArray* tags);
CStringA ValuesText(ULONG count, const SPropValue* values);

/// ThrowIfFailed with the object of the call. @param thing returns its text; called only for a failure
template <class Object, class Thing>
void ThrowIfFailedAbout(Thing&& thing, HRESULT result, const Object& object, const char* file = ZEB_FILE,
                        int line = ZEB_LINE, const char* operation = ZEB_CALLER)
{
    if (result < 0)
    {
        About(std::forward<Thing>(thing), [&] { ThrowIfFailed(result, object, file, line, operation); });
    }
}

/// Throws a failure about an object.
template <class Thing>
[[noreturn]] void ThrowAbout(Thing&& thing, LONG result, const char* file = ZEB_FILE, int line = ZEB_LINE,
                             const char* operation = ZEB_CALLER)
{
    for (;;)
    {
        About(thing, [&] { CZebException::Throw(result, file, line, operation); });
    }
}

/// Runs `body`; a CZebException that leaves it is about the property.
template <class Body>
auto AboutTag(ULONG tag, Body&& body) -> decltype(body())
{
    return About([tag] { return TagText(tag); }, std::forward<Body>(body));
}

/// Runs `body`; a CZebException that leaves it is about the name, which may be null.
template <class Char, class Body>
auto AboutName(const Char* name, Body&& body) -> decltype(body())
{
    return About([name] { return NameText(name); }, std::forward<Body>(body));
}

} // namespace zeb
