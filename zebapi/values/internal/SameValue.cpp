#include "zebapi/values/internal/SameValue.h"

#include "zebapi/values/internal/Received.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>

namespace zeb
{
namespace
{

/// Null text counts as empty.
template <class Char>
bool SameText(const Char* a, const Char* b)
{
    static const Char empty[1] = {0};
    using View = std::basic_string_view<Char>;
    return View(a == nullptr ? empty : a) == View(b == nullptr ? empty : b);
}

template <class Element, class Same = std::equal_to<Element>>
bool SameElements(const Element* a, ULONG countA, const Element* b, ULONG countB, Same same = Same())
{
    const ULONG count = CountOf(a, countA);
    return count == CountOf(b, countB) && std::equal(a, a + count, b, same);
}

template <class Char>
bool SameTexts(Char* const* a, ULONG countA, Char* const* b, ULONG countB)
{
    return SameElements(a, countA, b, countB, [](const Char* x, const Char* y) { return SameText(x, y); });
}

bool SameBytes(const SBinary& left, const SBinary& right)
{
    const SBinary a = Received(left);
    const SBinary b = Received(right);
    return a.cb == b.cb && (a.cb == 0 || std::memcmp(a.lpb, b.lpb, a.cb) == 0);
}

bool SameGuid(const GUID* a, const GUID* b)
{
    return a == b || (a != nullptr && b != nullptr && std::memcmp(a, b, sizeof(GUID)) == 0);
}

bool SameTime(const FILETIME& a, const FILETIME& b)
{
    return a.dwLowDateTime == b.dwLowDateTime && a.dwHighDateTime == b.dwHighDateTime;
}

/// Compares multi-valued types; false for the types that never compare equal.
bool SameArray(ULONG type, const SPropValue& a, const SPropValue& b)
{
    switch (type)
    {
    case PT_MV_I2:
        return SameElements(a.Value.MVi.lpi, a.Value.MVi.cValues, b.Value.MVi.lpi, b.Value.MVi.cValues);
    case PT_MV_LONG:
        return SameElements(a.Value.MVl.lpl, a.Value.MVl.cValues, b.Value.MVl.lpl, b.Value.MVl.cValues);
    case PT_MV_STRING8:
        return SameTexts(a.Value.MVszA.lppszA, a.Value.MVszA.cValues, b.Value.MVszA.lppszA, b.Value.MVszA.cValues);
    case PT_MV_UNICODE:
        return SameTexts(a.Value.MVszW.lppszW, a.Value.MVszW.cValues, b.Value.MVszW.lppszW, b.Value.MVszW.cValues);
    default:
        return false;
    }
}

} // namespace

bool SameValue(const SPropValue& a, const SPropValue& b)
{
    const ULONG type = PROP_TYPE(a.ulPropTag);
    if (type != PROP_TYPE(b.ulPropTag))
    {
        return false;
    }
    switch (type)
    {
    case PT_I2:
        return a.Value.i == b.Value.i;
    case PT_LONG:
        return a.Value.l == b.Value.l;
    case PT_R4:
        return a.Value.flt == b.Value.flt;
    case PT_DOUBLE:
        return a.Value.dbl == b.Value.dbl;
    case PT_APPTIME:
        return a.Value.at == b.Value.at;
    case PT_CURRENCY:
        return a.Value.cur.int64 == b.Value.cur.int64;
    case PT_BOOLEAN:
        return (a.Value.b != 0) == (b.Value.b != 0);
    case PT_I8:
        return a.Value.li.QuadPart == b.Value.li.QuadPart;
    case PT_SYSTIME:
        return SameTime(a.Value.ft, b.Value.ft);
    case PT_STRING8:
        return SameText(a.Value.lpszA, b.Value.lpszA);
    case PT_UNICODE:
        return SameText(a.Value.lpszW, b.Value.lpszW);
    case PT_CLSID:
        return SameGuid(a.Value.lpguid, b.Value.lpguid);
    case PT_BINARY:
        return SameBytes(a.Value.bin, b.Value.bin);
    default:
        return SameArray(type, a, b);
    }
}

} // namespace zeb
