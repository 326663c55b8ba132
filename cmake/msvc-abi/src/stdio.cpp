// printf and its family: ucrtbase.dll exports one function a kind, and what takes "..." belongs to the module.
#include <malloc.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <wchar.h>

static const size_t NoLimit = static_cast<size_t>(-1);

typedef unsigned long long Slot; ///< what an argument takes in this ABI, whatever its type

/// Copies `format` without "hh", and the arguments that it names, those of "hh" narrowed to a character.
static void NarrowCharacters(const char* format, va_list arguments, char* plain, Slot* slots)
{
    for (const char* at = format; *at != '\0';)
    {
        *plain++ = *at;
        if (*at++ != '%' || *at == '\0')
        {
            continue;
        }
        int halves = 0;
        for (; *at != '\0' && strchr("+- #0123456789.*hlLjztI", *at) != nullptr; ++at)
        {
            if (*at == 'h')
            {
                ++halves;
                continue;
            }
            if (*at == '*')
            {
                *slots++ = va_arg(arguments, Slot);
            }
            *plain++ = *at;
        }
        if (halves == 1)
        {
            *plain++ = 'h';
        }
        if (*at != '%' && *at != '\0')
        {
            const Slot value = va_arg(arguments, Slot);
            const bool isSigned = *at == 'd' || *at == 'i';
            *slots++ = halves != 2 ? value
                       : isSigned  ? static_cast<Slot>(static_cast<signed char>(value))
                                   : static_cast<unsigned char>(value);
        }
        if (*at != '\0')
        {
            *plain++ = *at++;
        }
    }
    *plain = '\0';
}

/// Prints into `text`; Windows' function also knows "hh", Wine's does not.
static int PrintTo(char* text, size_t size, const char* format, va_list arguments)
{
    if (strstr(format, "hh") != nullptr)
    {
        // No format has more arguments than characters.
        const size_t length = strlen(format) + 1;
        auto* const plain = static_cast<char*>(_alloca(length));
        auto* const slots = static_cast<Slot*>(_alloca(length * sizeof(Slot)));
        NarrowCharacters(format, arguments, plain, slots);
        format = plain;
        arguments = reinterpret_cast<va_list>(slots);
    }
    return __stdio_common_vsprintf(_CRT_INTERNAL_PRINTF_STANDARD_SNPRINTF_BEHAVIOR, text, size, format, nullptr,
                                   arguments);
}

extern "C"
{
    int __cdecl vfprintf(FILE* file, const char* format, va_list arguments)
    {
        return __stdio_common_vfprintf(0, file, format, nullptr, arguments);
    }

    int __cdecl fprintf(FILE* file, const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        const int result = vfprintf(file, format, arguments);
        va_end(arguments);
        return result;
    }

    int __cdecl vprintf(const char* format, va_list arguments)
    {
        return vfprintf(stdout, format, arguments);
    }

    int __cdecl printf(const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        const int result = vprintf(format, arguments);
        va_end(arguments);
        return result;
    }

    int __cdecl vsnprintf(char* text, size_t size, const char* format, va_list arguments)
    {
        return PrintTo(text, size, format, arguments);
    }

    /// As before C99: -1, and no terminator, for a text that does not fit.
    int __cdecl _vsnprintf(char* text, size_t size, const char* format, va_list arguments)
    {
        return __stdio_common_vsprintf(_CRT_INTERNAL_PRINTF_LEGACY_VSPRINTF_NULL_TERMINATION, text, size, format,
                                       nullptr, arguments);
    }

    int __cdecl snprintf(char* text, size_t size, const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        const int result = vsnprintf(text, size, format, arguments);
        va_end(arguments);
        return result;
    }

    int __cdecl sprintf(char* text, const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        const int result = vsnprintf(text, NoLimit, format, arguments);
        va_end(arguments);
        return result;
    }

    int __cdecl sscanf(const char* text, const char* format, ...)
    {
        va_list arguments;
        va_start(arguments, format);
        const int result = __stdio_common_vsscanf(0, text, NoLimit, format, nullptr, arguments);
        va_end(arguments);
        return result;
    }
}
