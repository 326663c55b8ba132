#include "platform/text.h"

#include <cwctype>

#include <locale.h>
#include <wctype.h>

namespace zeb::platform
{

std::string NarrowFromWide(const WCHAR* text, size_t length)
{
    return Utf8FromWide(text, length);
}

WideString WideFromNarrow(const char* text, size_t length)
{
    return WideFromUtf8(text, length);
}

WCHAR UpperWide(WCHAR unit)
{
    // Never freed: used until the process ends.
    static locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const bool surrogate = unit >= 0xD800 && unit < 0xE000;
    const wint_t upper = surrogate ? unit : towupper_l(unit, locale);
    return upper < 0x10000 ? static_cast<WCHAR>(upper) : unit;
}

} // namespace zeb::platform
