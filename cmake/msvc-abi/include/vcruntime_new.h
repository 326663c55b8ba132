// operator new and delete, which every module brings itself (src/new*.cpp).
#pragma once
#include <corecrt.h>
#ifdef __cplusplus
#include <vcruntime_exception.h>

namespace std
{

struct nothrow_t
{
    explicit nothrow_t() = default;
};
extern nothrow_t const nothrow;
enum class align_val_t : size_t
{
};

} // namespace std

void* __cdecl operator new(size_t);
void* __cdecl operator new(size_t, std::nothrow_t const&) noexcept;
void* __cdecl operator new[](size_t);
void* __cdecl operator new[](size_t, std::nothrow_t const&) noexcept;
void __cdecl operator delete(void*) noexcept;
void __cdecl operator delete(void*, std::nothrow_t const&) noexcept;
void __cdecl operator delete[](void*) noexcept;
void __cdecl operator delete[](void*, std::nothrow_t const&) noexcept;
void __cdecl operator delete(void*, size_t) noexcept;
void __cdecl operator delete[](void*, size_t) noexcept;
void* __cdecl operator new(size_t, std::align_val_t);
void* __cdecl operator new(size_t, std::align_val_t, std::nothrow_t const&) noexcept;
void* __cdecl operator new[](size_t, std::align_val_t);
void* __cdecl operator new[](size_t, std::align_val_t, std::nothrow_t const&) noexcept;
void __cdecl operator delete(void*, std::align_val_t) noexcept;
void __cdecl operator delete(void*, size_t, std::align_val_t) noexcept;
void __cdecl operator delete(void*, std::align_val_t, std::nothrow_t const&) noexcept;
void __cdecl operator delete[](void*, std::align_val_t) noexcept;
void __cdecl operator delete[](void*, size_t, std::align_val_t) noexcept;
void __cdecl operator delete[](void*, std::align_val_t, std::nothrow_t const&) noexcept;
inline void* __cdecl operator new(size_t, void* place) noexcept
{
    return place;
}
inline void __cdecl operator delete(void*, void*) noexcept {}
inline void* __cdecl operator new[](size_t, void* place) noexcept
{
    return place;
}
inline void __cdecl operator delete[](void*, void*) noexcept {}
#endif
