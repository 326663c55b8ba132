// A counted pointer to a COM interface.
#pragma once

#include "framework/ComError.h"

#include <type_traits>
#include <utility>

namespace zeb
{

/// Owns one counted reference on `T`, or is empty.
///
/// Using an empty pointer (->, *, Checked, QueryInterface) throws _com_error with E_POINTER. There is no implicit
/// conversion to T*, to prevent accidental null arguments: pass Checked(), or Get() where null is allowed.
template <class T>
class CComPtr
{
public:
    CComPtr() = default;
    /// Empty.
    CComPtr(std::nullptr_t) {}
    /// Adds a reference; the caller keeps its own.
    CComPtr(T* pointer)
        : m_pointer(pointer)
    {
        if (m_pointer != nullptr)
        {
            m_pointer->AddRef();
        }
    }
    /// Adds a reference.
    CComPtr(const CComPtr& other)
        : CComPtr(other.m_pointer)
    {
    }
    /// Takes the other's reference, which is empty then.
    CComPtr(CComPtr&& other) noexcept
        : m_pointer(std::exchange(other.m_pointer, nullptr))
    {
    }
    /// Adds a reference on an object of a derived interface.
    template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    CComPtr(const CComPtr<U>& other)
        : CComPtr(static_cast<T*>(other.Get()))
    {
    }
    ~CComPtr() { Release(); }

    /// Adds a reference; the previous one is released.
    CComPtr& operator=(const CComPtr& other)
    {
        CComPtr copy(other);
        Swap(copy);
        return *this;
    }
    /// Takes the other's reference; the previous one is released.
    CComPtr& operator=(CComPtr&& other) noexcept
    {
        CComPtr moved(std::move(other));
        Swap(moved);
        return *this;
    }
    /// Adds a reference; the caller keeps its own.
    CComPtr& operator=(T* pointer)
    {
        CComPtr copy(pointer);
        Swap(copy);
        return *this;
    }
    /// Releases the reference.
    CComPtr& operator=(std::nullptr_t)
    {
        Release();
        return *this;
    }

    /// Takes over the caller's reference; the previous one is released.
    void Attach(T* pointer)
    {
        CComPtr old;
        old.m_pointer = std::exchange(m_pointer, pointer);
    }
    /// A pointer that takes over the caller's reference.
    static CComPtr Take(T* pointer)
    {
        CComPtr taken;
        taken.m_pointer = pointer;
        return taken;
    }
    /// Releases ownership: the reference becomes the caller's.
    T* Detach() { return std::exchange(m_pointer, nullptr); }
    /// Releases the reference and returns the pointer's address, for a call that stores a reference there; the object
    /// owns it.
    T** Put()
    {
        Release();
        return &m_pointer;
    }
    /// Put() as an untyped or base-class output parameter.
    template <class U>
    U** PutAs()
    {
        return reinterpret_cast<U**>(Put());
    }

    /// Releases the reference, if any.
    void Release()
    {
        // Emptied first: the release may run code that uses this object.
        if (T* pointer = std::exchange(m_pointer, nullptr))
        {
            pointer->Release();
        }
    }

    /// The held pointer, may be null; borrowed.
    T* Get() const { return m_pointer; }
    /// The held pointer; borrowed. @throws _com_error E_POINTER when empty
    T* Checked() const
    {
        if (m_pointer == nullptr)
        {
            RaiseComError(E_POINTER);
        }
        return m_pointer;
    }
    /// @throws _com_error E_POINTER when empty
    T* operator->() const { return Checked(); }
    /// @throws _com_error E_POINTER when empty
    T& operator*() const { return *Checked(); }

    /// Whether a reference is held.
    explicit operator bool() const { return m_pointer != nullptr; }
    /// Whether none is held.
    bool operator!() const { return m_pointer == nullptr; }
    /// Whether both hold the same pointer.
    friend bool operator==(const CComPtr& a, const CComPtr& b) { return a.m_pointer == b.m_pointer; }
    /// Whether they hold different pointers.
    friend bool operator!=(const CComPtr& a, const CComPtr& b) { return a.m_pointer != b.m_pointer; }

    /// IUnknown::QueryInterface; the reference in `*result` is the caller's.
    /// @throws _com_error E_POINTER when empty
    template <class U>
    HRESULT QueryInterface(const IID& iid, U** result) const
    {
        return Checked()->QueryInterface(iid, reinterpret_cast<void**>(result));
    }
    /// As above, into a counted pointer.
    template <class U>
    HRESULT QueryInterface(const IID& iid, CComPtr<U>& result) const
    {
        return QueryInterface(iid, result.Put());
    }

    /// Exchanges the references.
    void Swap(CComPtr& other) noexcept { std::swap(m_pointer, other.m_pointer); }

private:
    T* m_pointer = nullptr;
};

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CComPtr;
#endif
