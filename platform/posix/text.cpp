#include "platform/text.h"

#include <cwctype>

#include <locale.h>
#include <wctype.h>

namespace zeb::platform
{

namespace
{

/// The classes of characters beyond ASCII, whatever the process' own locale is. Freed when the library that this is part
/// of is unloaded; what ends later than that makes it anew.
locale_t Characters()
{
    static locale_t locale = nullptr;
    struct Owner
    {
        Owner() { locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr); }
        ~Owner()
        {
            freelocale(locale);
            locale = nullptr;
        }
    };
    static const Owner owner;
    if (locale == nullptr)
    {
        locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    }
    return locale;
}

} // namespace

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
    const bool surrogate = unit >= 0xD800 && unit < 0xE000;
    const wint_t upper = surrogate ? unit : towupper_l(unit, Characters());
    return upper < 0x10000 ? static_cast<WCHAR>(upper) : unit;
}

} // namespace zeb::platform
