// The linker (--wrap) sends the system calls of this program here, so that FailingSystem can make them fail.
#include "tests/support/FailingSystem.h"

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <ctime>

#include <sys/stat.h>
#include <sys/types.h>

using zeb::test::SystemFailure;

namespace
{

/// Sets errno when the next call is to fail.
bool Fails(int everyday)
{
    const int error = SystemFailure(everyday);
    if (error != 0)
    {
        errno = error;
    }
    return error != 0;
}

} // namespace

extern "C"
{
    int __real_open(const char* path, int flags, ...);
    ssize_t __real_read(int file, void* buffer, size_t size);
    ssize_t __real_write(int file, const void* buffer, size_t size);
    int __real_fcntl(int file, int command, ...);
    int __real_fstat(int file, struct stat* status);
    int __real_stat(const char* path, struct stat* status);
    void* __real_dlopen(const char* path, int flags);
    void* __real_dlsym(void* library, const char* name);
    int __real_dladdr1(const void* address, void* info, void** extra, int flags);
    int __real_dlinfo(void* library, int request, void* info);
    struct tm* __real_localtime_r(const time_t* time, struct tm* local);

    int __wrap_open(const char* path, int flags, ...)
    {
        va_list arguments;
        va_start(arguments, flags);
        const auto mode = va_arg(arguments, unsigned int);
        va_end(arguments);
        return Fails(EACCES) ? -1 : __real_open(path, flags, mode);
    }
    ssize_t __wrap_read(int file, void* buffer, size_t size)
    {
        return Fails(EIO) ? -1 : __real_read(file, buffer, size);
    }
    ssize_t __wrap_write(int file, const void* buffer, size_t size)
    {
        return Fails(ENOSPC) ? -1 : __real_write(file, buffer, size);
    }
    int __wrap_fcntl(int file, int command, ...)
    {
        va_list arguments;
        va_start(arguments, command);
        void* const argument = va_arg(arguments, void*);
        va_end(arguments);
        return Fails(EMFILE) ? -1 : __real_fcntl(file, command, argument);
    }
    int __wrap_fstat(int file, struct stat* status)
    {
        return Fails(EIO) ? -1 : __real_fstat(file, status);
    }
    int __wrap_stat(const char* path, struct stat* status)
    {
        return Fails(EACCES) ? -1 : __real_stat(path, status);
    }
    void* __wrap_dlopen(const char* path, int flags)
    {
        return Fails(ENOMEM) ? nullptr : __real_dlopen(path, flags);
    }
    void* __wrap_dlsym(void* library, const char* name)
    {
        return Fails(ENOENT) ? nullptr : __real_dlsym(library, name);
    }
    int __wrap_dladdr1(const void* address, void* info, void** extra, int flags)
    {
        return Fails(ENOENT) ? 0 : __real_dladdr1(address, info, extra, flags);
    }
    int __wrap_dlinfo(void* library, int request, void* info)
    {
        return Fails(ENOENT) ? -1 : __real_dlinfo(library, request, info);
    }
    struct tm* __wrap_localtime_r(const time_t* time, struct tm* local)
    {
        return Fails(EOVERFLOW) ? nullptr : __real_localtime_r(time, local);
    }
}
