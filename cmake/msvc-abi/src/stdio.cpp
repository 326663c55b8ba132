// printf and its family: ucrtbase.dll exports one function a kind, and what takes "..." belongs to the module.
#include <stdarg.h>
#include <stdio.h>
#include <wchar.h>

static const size_t NoLimit = static_cast<size_t>(-1);

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
        return __stdio_common_vsprintf(_CRT_INTERNAL_PRINTF_STANDARD_SNPRINTF_BEHAVIOR, text, size, format,
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
