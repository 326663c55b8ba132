// An object that outlives the destructors of all static objects.
#pragma once

#include <new>

namespace zeb::platform
{

/// A static variable whose destructor is not called, because destructors of other static objects may still use it. It lies in
/// the module's own memory, so nothing stays behind when the module is unloaded.
template <class T>
class NeverDestroyed
{
public:
    NeverDestroyed()
        : m_object(new(m_bytes) T)
    {
    }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& Get() { return *m_object; }

private:
    alignas(T) unsigned char m_bytes[sizeof(T)];
    T* m_object;
};

} // namespace zeb::platform
