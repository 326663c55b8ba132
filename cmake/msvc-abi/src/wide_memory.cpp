// What MinGW-w64's <wchar.h> defines for inlining only, and ucrtbase.dll does not export.
#include <string.h>

extern "C"
{
    wchar_t* __cdecl wmemcpy(wchar_t* to, const wchar_t* from, size_t count)
    {
        return static_cast<wchar_t*>(memcpy(to, from, count * sizeof(wchar_t)));
    }

    wchar_t* __cdecl wmemmove(wchar_t* to, const wchar_t* from, size_t count)
    {
        return static_cast<wchar_t*>(memmove(to, from, count * sizeof(wchar_t)));
    }

    wchar_t* __cdecl wmemset(wchar_t* to, wchar_t character, size_t count)
    {
        for (size_t i = 0; i < count; ++i)
        {
            to[i] = character;
        }
        return to;
    }

    wchar_t* __cdecl wmemchr(const wchar_t* text, wchar_t character, size_t count)
    {
        for (size_t i = 0; i < count; ++i)
        {
            if (text[i] == character)
            {
                return const_cast<wchar_t*>(text + i);
            }
        }
        return nullptr;
    }

    int __cdecl wmemcmp(const wchar_t* left, const wchar_t* right, size_t count)
    {
        for (size_t i = 0; i < count; ++i)
        {
            if (left[i] != right[i])
            {
                return left[i] < right[i] ? -1 : 1;
            }
        }
        return 0;
    }
}
