// Owners of the system's handles.
#pragma once

#include "platform/mapi.h"

#include <utility>

namespace zeb::view
{

/// Closes what it holds with `Close`.
template <class Handle, auto Close>
class Owned
{
public:
    Owned() = default;
    explicit Owned(Handle handle)
        : m_handle(handle)
    {
    }
    Owned(Owned&& other) noexcept
        : m_handle(std::exchange(other.m_handle, Handle()))
    {
    }
    Owned& operator=(Owned&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned()
    {
        if (*this)
        {
            Close(m_handle);
        }
    }

    Handle Get() const { return m_handle; }
    Handle Release() { return std::exchange(m_handle, Handle()); }
    explicit operator bool() const
    {
        return m_handle != nullptr && reinterpret_cast<LONG_PTR>(m_handle) != -1; // INVALID_HANDLE_VALUE
    }

private:
    Handle m_handle = nullptr;
};

inline void CloseFile(HANDLE file)
{
    CloseHandle(file);
}

inline void DeleteFont(HFONT font)
{
    DeleteObject(font);
}

inline void DeleteBrush(HBRUSH brush)
{
    DeleteObject(brush);
}

inline void DeleteAccelerators(HACCEL table)
{
    DestroyAcceleratorTable(table);
}

using File = Owned<HANDLE, &CloseFile>;
using Font = Owned<HFONT, &DeleteFont>;
using Brush = Owned<HBRUSH, &DeleteBrush>;
using Accelerators = Owned<HACCEL, &DeleteAccelerators>;

} // namespace zeb::view
