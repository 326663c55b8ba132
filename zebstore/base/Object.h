// The counted base of the provider's COM objects.
#pragma once

#include "platform/thread.h"
#include "zebstore/base/Guard.h"

#include <atomic>
#include <initializer_list>

namespace zebstore
{

/// A COM object that implements `Interface` and answers for the identifiers that its class names. Starts with one
/// reference, which the creator owns. Threads: the count is atomic; the rest is the derived class's.
template <class Interface>
class Object : public Interface
{
public:
    Object() { g_liveObjects.fetch_add(1, std::memory_order_relaxed); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, LPVOID* object) override
    {
        return Guarded("IUnknown::QueryInterface", [&]() -> HRESULT
        {
            Require(object != nullptr, "no place for the interface");
            *object = nullptr;
            if (!IsEqualGUID(iid, IID_IUnknown) && !Answers(iid))
            {
                return E_NOINTERFACE;
            }
            this->AddRef();
            *object = static_cast<Interface*>(this);
            return S_OK;
        });
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }

    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_references;
        // A process that ends has lost its other threads, which may have held locks that an end here would wait for.
        if (left == 0 && !zeb::platform::IsProcessEnding())
        {
            delete this;
        }
        return left;
    }

protected:
    virtual ~Object() { g_liveObjects.fetch_sub(1, std::memory_order_relaxed); }

    /// True for the interface identifiers that this object answers to (IUnknown needs no saying).
    virtual bool Answers(REFIID iid) const = 0;

    static bool IsOneOf(REFIID iid, std::initializer_list<const IID*> known)
    {
        for (const IID* each : known)
        {
            if (IsEqualGUID(iid, *each))
            {
                return true;
            }
        }
        return false;
    }

private:
    std::atomic<ULONG> m_references{1};
};

/// Owns one reference on a COM object; null when empty.
template <class T>
class Ref
{
public:
    Ref() = default;
    /// Takes over the reference that the caller holds.
    static Ref Adopt(T* object)
    {
        Ref ref;
        ref.m_object = object;
        return ref;
    }
    /// Adds a reference of its own.
    static Ref Share(T* object)
    {
        if (object)
        {
            object->AddRef();
        }
        return Adopt(object);
    }
    Ref(const Ref& other)
        : m_object(other.m_object)
    {
        if (m_object)
        {
            m_object->AddRef();
        }
    }
    Ref(Ref&& other) noexcept
        : m_object(other.Detach())
    {
    }
    Ref& operator=(Ref other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~Ref()
    {
        if (m_object)
        {
            m_object->Release();
        }
    }

    T* Get() const { return m_object; }
    T* operator->() const { return m_object; }
    T& operator*() const { return *m_object; }
    explicit operator bool() const { return m_object != nullptr; }
    /// Hands the reference to the caller.
    T* Detach() { return std::exchange(m_object, nullptr); }

private:
    T* m_object = nullptr;
};

} // namespace zebstore
