// Growing arrays. Elements may overload unary '&' and assignment: the array does not use an element's operator&.
#pragma once

#include "framework/Memory.h"
#include "framework/Object.h"
#include "platform/mapi.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace zeb
{

/// A growing array of values, in one block of shared memory. An index out of range throws std::out_of_range, too many
/// elements for the address space std::length_error, out of memory std::bad_alloc (inside the library, CZebException*
/// for the latter two).
///
/// The layout is part of the library's interface: pointer, count, capacity. Adding and growing leave the array
/// unchanged when they throw. An added element may be one of the array's own.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray
{
public:
    CArray() = default;
    /// Copies every element.
    CArray(const CArray& other)
    {
        Reserve(other.m_count);
        CopyItems(other);
    }
    /// Takes the elements; the other array is empty then.
    CArray(CArray&& other) noexcept { Swap(other); }
    /// Copies every element; when that throws, this array is unchanged.
    CArray& operator=(const CArray& other)
    {
        Copy(other);
        return *this;
    }
    /// Takes the elements; the other array is empty then.
    CArray& operator=(CArray&& other) noexcept
    {
        CArray taken(std::move(other));
        Swap(taken);
        return *this;
    }
    ~CArray()
    {
        Cut(0);
        framework::FreeShared(m_items);
    }

    /// The number of elements.
    INT_PTR GetSize() const { return m_count; }
    /// The number of elements.
    INT_PTR GetCount() const { return m_count; }
    /// The last index; -1 for no elements.
    INT_PTR GetUpperBound() const { return m_count - 1; }
    /// Whether there are no elements.
    bool IsEmpty() const { return m_count == 0; }

    /// Truncates, or appends default values.
    void SetSize(INT_PTR size)
    {
        CheckSize(size);
        if (size <= m_count)
        {
            Cut(size);
            return;
        }
        Reserve(size);
        const INT_PTR before = m_count;
        try
        {
            while (m_count < size)
            {
                ::new (static_cast<void*>(m_items + m_count)) TYPE();
                ++m_count;
            }
        }
        catch (...)
        {
            Cut(before);
            throw;
        }
    }
    /// Reserves memory for `size` elements in total.
    void Reserve(INT_PTR size)
    {
        CheckSize(size);
        if (size > m_capacity)
        {
            CArray grown;
            grown.Allocate(size);
            grown.MoveItems(*this);
            Swap(grown);
        }
    }

    /// @return the index of the new element.
    INT_PTR Add(ARG_TYPE item)
    {
        if (m_count == m_capacity)
        {
            AddGrowing(item);
        }
        else
        {
            ::new (static_cast<void*>(m_items + m_count)) TYPE(item);
            ++m_count;
        }
        return GetUpperBound();
    }
    /// Adds copies of another array's elements. @return the index of the first
    INT_PTR Append(const CArray& other)
    {
        const INT_PTR first = m_count;
        CArray grown;
        grown.Allocate(m_count + other.m_count);
        grown.CopyItems(*this);
        grown.CopyItems(other);
        Swap(grown);
        return first;
    }
    /// As assignment.
    void Copy(const CArray& other)
    {
        CArray copied(other);
        Swap(copied);
    }
    /// Inserts an element before index, which may be the count.
    void InsertAt(INT_PTR index, ARG_TYPE item)
    {
        if (index < 0 || index > m_count)
        {
            throw std::out_of_range("CArray::InsertAt");
        }
        Add(item);
        std::rotate(m_items + index, m_items + m_count - 1, m_items + m_count);
    }
    /// Removes elements from index on.
    void RemoveAt(INT_PTR index, INT_PTR count = 1)
    {
        if (index < 0 || count < 0 || index > m_count || count > m_count - index)
        {
            throw std::out_of_range("CArray::RemoveAt");
        }
        if (count != 0)
        {
            std::move(m_items + index + count, m_items + m_count, m_items + index);
            Cut(m_count - count);
        }
    }
    /// Removes every element; the memory stays for new ones.
    void RemoveAll() { Cut(0); }

    /// The element at index.
    const TYPE& GetAt(INT_PTR index) const { return m_items[Checked(index)]; }
    /// The element at index.
    TYPE& GetAt(INT_PTR index) { return m_items[Checked(index)]; }
    /// The element at index.
    TYPE& ElementAt(INT_PTR index) { return GetAt(index); }
    /// Replaces the element at index.
    void SetAt(INT_PTR index, ARG_TYPE item) { GetAt(index) = item; }
    /// The element at index.
    const TYPE& operator[](INT_PTR index) const { return GetAt(index); }
    /// The element at index.
    TYPE& operator[](INT_PTR index) { return GetAt(index); }

    /// The elements in one block; null when there are none.
    const TYPE* GetData() const { return m_count == 0 ? nullptr : m_items; }
    /// The elements, borrowed; null when there are none.
    TYPE* GetData() { return m_count == 0 ? nullptr : m_items; }

    /// The first element.
    const TYPE* begin() const { return m_items; }
    /// Past the last element.
    const TYPE* end() const { return m_items + m_count; }
    /// The first element.
    TYPE* begin() { return m_items; }
    /// Past the last element.
    TYPE* end() { return m_items + m_count; }

private:
    // A function, because the element type may be incomplete where the array is declared.
    static constexpr INT_PTR MaxCount()
    {
        // NOLINTNEXTLINE(bugprone-sizeof-expression): an element may be a pointer
        return std::numeric_limits<INT_PTR>::max() / static_cast<INT_PTR>(sizeof(TYPE));
    }

    static void CheckSize(INT_PTR size)
    {
        if (size < 0)
        {
            throw std::out_of_range("CArray: negative size");
        }
    }
    INT_PTR Checked(INT_PTR index) const
    {
        if (index < 0 || index >= m_count)
        {
            throw std::out_of_range("CArray: index outside the array");
        }
        return index;
    }

    void Swap(CArray& other) noexcept
    {
        std::swap(m_items, other.m_items);
        std::swap(m_count, other.m_count);
        std::swap(m_capacity, other.m_capacity);
    }
    /// REQUIRES: nothing is allocated.
    void Allocate(INT_PTR capacity)
    {
        static_assert(alignof(TYPE) <= alignof(std::max_align_t), "shared memory has the usual alignment");
        if (capacity > MaxCount())
        {
            framework::ThrowTooLong("CArray: too many elements");
        }
        if (capacity > 0)
        {
            // NOLINTNEXTLINE(bugprone-sizeof-expression): an element may be a pointer
            m_items = static_cast<TYPE*>(framework::AllocateShared(static_cast<std::size_t>(capacity) * sizeof(TYPE)));
            m_capacity = capacity;
        }
    }
    /// REQUIRES: enough capacity. @throws what copying an element throws
    void CopyItems(const CArray& other)
    {
        for (INT_PTR i = 0; i < other.m_count; ++i)
        {
            ::new (static_cast<void*>(m_items + m_count)) TYPE(static_cast<const TYPE&>(other.m_items[i]));
            ++m_count;
        }
    }
    /// Like CopyItems, but elements with a non-throwing move are moved.
    void MoveItems(CArray& other)
    {
        for (INT_PTR i = 0; i < other.m_count; ++i)
        {
            ::new (static_cast<void*>(m_items + m_count)) TYPE(std::move_if_noexcept(other.m_items[i]));
            ++m_count;
        }
    }
    void AddGrowing(ARG_TYPE item)
    {
        CArray grown;
        grown.Allocate(std::max<INT_PTR>(4, m_capacity > MaxCount() / 2 ? m_capacity + 1 : 2 * m_capacity));
        // Before the others are moved: the item may be one of the array's own.
        TYPE* const added = ::new (static_cast<void*>(grown.m_items + m_count)) TYPE(item);
        try
        {
            grown.MoveItems(*this);
        }
        catch (...)
        {
            added->~TYPE();
            throw;
        }
        ++grown.m_count;
        Swap(grown);
    }
    /// REQUIRES: count <= m_count.
    void Cut(INT_PTR count)
    {
        while (m_count > count)
        {
            m_items[--m_count].~TYPE();
        }
    }

    TYPE* m_items = nullptr; ///< owned, shared memory
    INT_PTR m_count = 0;
    INT_PTR m_capacity = 0;
};

/// An array of untyped pointers, which it does not own. An index out of range throws std::out_of_range.
class CPtrArray : public CObject
{
public:
    CPtrArray() = default;

    /// The class's record.
    static CRuntimeClass* GetThisClass()
    {
        static CRuntimeClass record = {"CPtrArray", static_cast<int>(sizeof(CPtrArray)), &CObject::GetThisClass};
        return &record;
    }
    /// The record of the object's class.
    CRuntimeClass* GetRuntimeClass() const override { return GetThisClass(); }

    /// The number of elements.
    INT_PTR GetSize() const { return m_items.GetSize(); }
    /// The number of elements.
    INT_PTR GetCount() const { return m_items.GetSize(); }
    /// The last index; -1 for no elements.
    INT_PTR GetUpperBound() const { return m_items.GetUpperBound(); }
    /// Whether there are no elements.
    bool IsEmpty() const { return m_items.IsEmpty(); }
    /// Truncates, or adds null pointers.
    void SetSize(INT_PTR size) { m_items.SetSize(size); }

    /// @return the index of the new element.
    INT_PTR Add(void* item) { return m_items.Add(item); }
    /// Inserts a pointer before index.
    void InsertAt(INT_PTR index, void* item) { m_items.InsertAt(index, item); }
    /// Removes pointers from index on; what they point to stays.
    void RemoveAt(INT_PTR index, INT_PTR count = 1) { m_items.RemoveAt(index, count); }
    /// Removes every pointer.
    void RemoveAll() { m_items.RemoveAll(); }

    /// The pointer at index.
    void* GetAt(INT_PTR index) const { return m_items.GetAt(index); }
    /// Replaces the pointer at index.
    void SetAt(INT_PTR index, void* item) { m_items.SetAt(index, item); }
    /// The pointer at index.
    void* operator[](INT_PTR index) const { return m_items.GetAt(index); }
    /// The pointer at index.
    void*& operator[](INT_PTR index) { return m_items.GetAt(index); }
    /// The pointers, borrowed.
    void** GetData() { return m_items.GetData(); }

private:
    CArray<void*, void*> m_items;
};

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CArray;
using zeb::CPtrArray;
#endif
