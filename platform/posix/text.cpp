#include "platform/utf8.h"

#include <cwctype>

#include <locale.h>
#include <wctype.h>

namespace zeb::platform
{

namespace
{

/// A UTF-8 locale for the character classes beyond ASCII, independent of the process's locale; null when the system has
/// none. Freed when this library is unloaded; later users create it again.
locale_t Characters()
{
    static locale_t locale = nullptr;
    struct Owner
    {
        Owner() { locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr); }
        ~Owner()
        {
            if (locale != nullptr)
            {
                freelocale(locale);
            }
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

size_t NarrowPrefix(const char* text, size_t length, size_t limit)
{
    return Utf8Prefix(text, length, limit);
}

WCHAR UpperWide(WCHAR unit)
{
    if (unit < 0x80)
    {
        return unit >= u'a' && unit <= u'z' ? static_cast<WCHAR>(unit - u'a' + u'A') : unit;
    }
    const locale_t characters = Characters();
    const wint_t upper = IsSurrogate(unit) || characters == nullptr ? unit : towupper_l(unit, characters);
    return upper < 0x10000 ? static_cast<WCHAR>(upper) : unit;
}

} // namespace zeb::platform
