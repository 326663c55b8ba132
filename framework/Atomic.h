// An atomic value with a fixed layout.
#pragma once

#include <atomic>
#include <new>

namespace zeb::framework
{

/// Like std::atomic, with the layout of a plain `T`. All operations are sequentially consistent. `T` is an integer, a
/// bool or a pointer.
template <class T>
class Atomic
{
    // NOLINTNEXTLINE(bugprone-sizeof-expression): the value may be a pointer
    static_assert(sizeof(std::atomic<T>) == sizeof(T) && alignof(std::atomic<T>) == alignof(T) &&
                      std::atomic<T>::is_always_lock_free,
                  "an atomic has the layout of its value");

public:
    /// Holds value.
    Atomic(T value = T()) noexcept { ::new (static_cast<void*>(m_place)) std::atomic<T>(value); }
    Atomic(const Atomic&) = delete;
    Atomic& operator=(const Atomic&) = delete;

    /// The value.
    T Load() const noexcept { return std::launder(reinterpret_cast<const std::atomic<T>*>(m_place))->load(); }
    /// Replaces the value.
    void Store(T value) noexcept { std::launder(reinterpret_cast<std::atomic<T>*>(m_place))->store(value); }
    /// @return the value before
    T Exchange(T value) noexcept { return std::launder(reinterpret_cast<std::atomic<T>*>(m_place))->exchange(value); }
    /// @return the value after
    T operator++() noexcept { return ++*std::launder(reinterpret_cast<std::atomic<T>*>(m_place)); }
    /// @return the value after
    T operator--() noexcept { return --*std::launder(reinterpret_cast<std::atomic<T>*>(m_place)); }

    /// Load().
    operator T() const noexcept { return Load(); }
    /// Store(value).
    T operator=(T value) noexcept
    {
        Store(value);
        return value;
    }

private:
    // NOLINTNEXTLINE(bugprone-sizeof-expression): the value may be a pointer
    alignas(T) unsigned char m_place[sizeof(T)];
};

} // namespace zeb::framework
