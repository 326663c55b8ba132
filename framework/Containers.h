// Arrays and maps under the framework's names. Elements may overload their unary '&' and assignment: nothing
// here takes an element's address by it.
#pragma once

#include "framework/Object.h"
#include "platform/mapi.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <unordered_map>
#include <utility>
#include <vector>

/// A growing array of values. Indexes outside it throw std::out_of_range.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray
{
public:
    INT_PTR GetSize() const { return static_cast<INT_PTR>(m_items.size()); }
    INT_PTR GetCount() const { return GetSize(); }
    INT_PTR GetUpperBound() const { return GetSize() - 1; }
    bool IsEmpty() const { return m_items.empty(); }

    /// Cuts, or appends default values.
    void SetSize(INT_PTR size) { m_items.resize(CheckedSize(size)); }
    void Reserve(INT_PTR size) { m_items.reserve(CheckedSize(size)); }

    /// @return the index of the new element.
    INT_PTR Add(ARG_TYPE item)
    {
        m_items.push_back(item);
        return GetUpperBound();
    }
    INT_PTR Append(const CArray& other)
    {
        const INT_PTR first = GetSize();
        std::vector<TYPE> grown(m_items);
        grown.insert(grown.end(), other.m_items.begin(), other.m_items.end());
        m_items.swap(grown);
        return first;
    }
    void Copy(const CArray& other)
    {
        std::vector<TYPE> copied(other.m_items);
        m_items.swap(copied);
    }
    void InsertAt(INT_PTR index, ARG_TYPE item)
    {
        if (index < 0 || index > GetSize())
        {
            throw std::out_of_range("CArray::InsertAt");
        }
        m_items.emplace(m_items.begin() + index, item);
    }
    void RemoveAt(INT_PTR index, INT_PTR count = 1)
    {
        if (index < 0 || count < 0 || index > GetSize() || count > GetSize() - index)
        {
            throw std::out_of_range("CArray::RemoveAt");
        }
        m_items.erase(m_items.begin() + index, m_items.begin() + index + count);
    }
    void RemoveAll() { m_items.clear(); }

    const TYPE& GetAt(INT_PTR index) const { return m_items.at(static_cast<size_t>(index)); }
    TYPE& GetAt(INT_PTR index) { return m_items.at(static_cast<size_t>(index)); }
    TYPE& ElementAt(INT_PTR index) { return GetAt(index); }
    void SetAt(INT_PTR index, ARG_TYPE item) { GetAt(index) = item; }
    const TYPE& operator[](INT_PTR index) const { return GetAt(index); }
    TYPE& operator[](INT_PTR index) { return GetAt(index); }

    /// The elements in one block; null when there are none.
    const TYPE* GetData() const { return m_items.empty() ? nullptr : std::addressof(m_items.front()); }
    TYPE* GetData() { return m_items.empty() ? nullptr : std::addressof(m_items.front()); }

    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }
    auto begin() { return m_items.begin(); }
    auto end() { return m_items.end(); }

private:
    static size_t CheckedSize(INT_PTR size)
    {
        if (size < 0)
        {
            throw std::out_of_range("CArray: negative size");
        }
        return static_cast<size_t>(size);
    }

    std::vector<TYPE> m_items;
};

/// An array of untyped pointers, which it does not own. Indexes outside it throw std::out_of_range.
class CPtrArray : public CObject
{
public:
    CPtrArray() = default;

    static CRuntimeClass* GetThisClass()
    {
        static CRuntimeClass record = {"CPtrArray", static_cast<int>(sizeof(CPtrArray)),
                                       &CObject::GetThisClass};
        return &record;
    }
    CRuntimeClass* GetRuntimeClass() const override { return GetThisClass(); }

    INT_PTR GetSize() const { return m_items.GetSize(); }
    INT_PTR GetCount() const { return m_items.GetSize(); }
    INT_PTR GetUpperBound() const { return m_items.GetUpperBound(); }
    bool IsEmpty() const { return m_items.IsEmpty(); }
    void SetSize(INT_PTR size) { m_items.SetSize(size); }

    /// @return the index of the new element.
    INT_PTR Add(void* item) { return m_items.Add(item); }
    void InsertAt(INT_PTR index, void* item) { m_items.InsertAt(index, item); }
    void RemoveAt(INT_PTR index, INT_PTR count = 1) { m_items.RemoveAt(index, count); }
    void RemoveAll() { m_items.RemoveAll(); }

    void* GetAt(INT_PTR index) const { return m_items.GetAt(index); }
    void SetAt(INT_PTR index, void* item) { m_items.SetAt(index, item); }
    void* operator[](INT_PTR index) const { return m_items.GetAt(index); }
    void*& operator[](INT_PTR index) { return m_items.GetAt(index); }
    void** GetData() { return m_items.GetData(); }

private:
    CArray<void*, void*> m_items;
};

struct MapPosition;
/// A place in a CMap; null is the end. Valid until the map changes.
using POSITION = const MapPosition*;

/// A hash map. Keys need std::hash and ==.
template <class KEY, class ARG_KEY, class VALUE, class ARG_VALUE>
class CMap
{
public:
    INT_PTR GetCount() const { return static_cast<INT_PTR>(m_map.size()); }
    INT_PTR GetSize() const { return GetCount(); }
    bool IsEmpty() const { return m_map.empty(); }

    /// Inserts, or overwrites what the key had.
    void SetAt(ARG_KEY key, ARG_VALUE value) { m_map[key] = value; }
    /// Inserts a default value when the key is new.
    VALUE& operator[](ARG_KEY key) { return m_map[key]; }
    /// @return whether the key is there; `value` is left alone when it is not.
    bool Lookup(ARG_KEY key, VALUE& value) const
    {
        const auto found = m_map.find(key);
        if (found == m_map.end())
        {
            return false;
        }
        value = found->second;
        return true;
    }
    /// @return whether the key was there.
    bool RemoveKey(ARG_KEY key) { return m_map.erase(key) != 0; }
    void RemoveAll() { m_map.clear(); }

    /// Where an iteration starts, in no stated order; null when the map is empty.
    POSITION GetStartPosition() const { return Position(m_map.begin()); }
    /// The entry at `position`, which moves on to the next. REQUIRES: not null.
    void GetNextAssoc(POSITION& position, KEY& key, VALUE& value) const
    {
        const auto* entry = reinterpret_cast<const typename Map::value_type*>(position);
        key = entry->first;
        value = entry->second;
        position = Position(std::next(m_map.find(entry->first)));
    }

private:
    using Map = std::unordered_map<KEY, VALUE>;

    POSITION Position(typename Map::const_iterator place) const
    {
        return place == m_map.end() ? nullptr : reinterpret_cast<POSITION>(std::addressof(*place));
    }

    Map m_map;
};
