// Throwing a stored exception again. Windows' msvcp140.dll throws a copy of it. Wine's throws the stored object itself,
// which its handler destroys, and the last exception_ptr destroys once more; so this takes the place of that function.
#include <windows.h>

#include <malloc.h>
#include <string.h>

#include <vcruntime_exception.h>

/// How the compiler describes what is thrown; addresses are counted from the start of the throwing module.
struct CatchableType
{
    unsigned flags;
    int type;
    int thisOffset;
    int virtualBaseOffset;
    int virtualBaseIndex;
    int size;
    int copyConstructor; ///< 0: its bytes are copied
};
struct CatchableTypes
{
    int count;
    int types[1]; ///< the thrown type itself comes first
};
struct ThrowInfo
{
    unsigned attributes;
    int destructor;
    int forward;
    int types;
};

enum : unsigned
{
    SimpleType = 1,
    HasVirtualBase = 4
};

/// The beginning of an exception_ptr: the record of the exception that it keeps.
struct Stored
{
    const EXCEPTION_RECORD* record;
};

static void CopyObject(void* to, void* from, const CatchableType& type, ULONG_PTR module)
{
    void* const construct = reinterpret_cast<void*>(module + type.copyConstructor);
    if ((type.flags & SimpleType) != 0 || type.copyConstructor == 0)
    {
        memcpy(to, from, type.size);
    }
    else if ((type.flags & HasVirtualBase) != 0)
    {
        reinterpret_cast<void(__cdecl*)(void*, void*, int)>(construct)(to, from, 1);
    }
    else
    {
        reinterpret_cast<void(__cdecl*)(void*, void*)>(construct)(to, from);
    }
}

static void __cdecl Rethrow(const void* pointer)
{
    const EXCEPTION_RECORD* const record = static_cast<const Stored*>(pointer)->record;
    if (record == nullptr)
    {
        throw std::bad_exception();
    }
    ULONG_PTR arguments[EXCEPTION_MAXIMUM_PARAMETERS];
    memcpy(arguments, record->ExceptionInformation, sizeof arguments);
    const ULONG_PTR module = arguments[3];
    const auto* const info = reinterpret_cast<const ThrowInfo*>(arguments[2]);
    const auto* const types = reinterpret_cast<const CatchableTypes*>(module + info->types);
    const auto* const type = reinterpret_cast<const CatchableType*>(module + types->types[0]);
    // As every thrown object it is in the frame of who throws, which lasts until the handler ends.
    void* const copy = _alloca(type->size);
    CopyObject(copy, reinterpret_cast<void*>(arguments[1]), *type, module);
    arguments[1] = reinterpret_cast<ULONG_PTR>(copy);
    RaiseException(record->ExceptionCode, EXCEPTION_NONCONTINUABLE, record->NumberParameters, arguments);
}

/// The pointer by which libc++ calls the function of msvcp140.dll.
extern "C" void(__cdecl* const importedRethrow)(const void*) __asm__("__imp_?__ExceptionPtrRethrow@@YAXPEBX@Z");
void(__cdecl* const importedRethrow)(const void*) = Rethrow;
