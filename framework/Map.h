// Hash maps.
#pragma once

#include "framework/Memory.h"
#include "platform/mapi.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

namespace zeb
{

namespace framework
{

/// The hash of a key. It is part of the library's interface, because host and library share maps: numbers and pointers
/// are hashed here, text by its own hash, other types by std::hash.
template <class KEY>
std::size_t HashOf(const KEY& key)
{
    if constexpr (std::is_integral_v<KEY> || std::is_enum_v<KEY>)
    {
        const std::uint64_t product = static_cast<std::uint64_t>(key) * 0x9E3779B97F4A7C15u;
        return static_cast<std::size_t>(product ^ (product >> 32));
    }
    else if constexpr (std::is_pointer_v<KEY>)
    {
        return HashOf(reinterpret_cast<std::uintptr_t>(key));
    }
    else
    {
        return std::hash<KEY>()(key);
    }
}

} // namespace framework

struct MapPosition;
/// A position in a CMap; null is the end. Valid until the map changes.
using POSITION = const MapPosition*;

/// A hash map in shared memory. Keys are numbers, pointers, or types with std::hash, and have ==.
///
/// The layout is part of the library's interface: buckets, their number, the number of entries.
/// An empty map allocates nothing. An operation that throws (std::bad_alloc, or what copying a
/// key or a value throws) leaves the map unchanged.
template <class KEY, class ARG_KEY, class VALUE, class ARG_VALUE>
class CMap
{
public:
    CMap() = default;
    /// Copies every pair.
    CMap(const CMap& other)
    {
        try
        {
            for (std::size_t i = 0; i < other.m_bucketCount; ++i)
            {
                for (const Entry* entry = other.m_buckets[i]; entry != nullptr; entry = entry->next)
                {
                    Insert(entry->key, entry->value);
                }
            }
        }
        catch (...)
        {
            RemoveAll();
            throw;
        }
    }
    /// Takes the pairs; the other map is empty then.
    CMap(CMap&& other) noexcept { Swap(other); }
    /// Copies every pair; when that throws, this map is unchanged.
    CMap& operator=(const CMap& other)
    {
        CMap copied(other);
        Swap(copied);
        return *this;
    }
    /// Takes the pairs; the other map is empty then.
    CMap& operator=(CMap&& other) noexcept
    {
        CMap taken(std::move(other));
        Swap(taken);
        return *this;
    }
    ~CMap() { RemoveAll(); }

    /// The number of pairs.
    INT_PTR GetCount() const { return static_cast<INT_PTR>(m_count); }
    /// The number of pairs.
    INT_PTR GetSize() const { return GetCount(); }
    /// Whether there are no pairs.
    bool IsEmpty() const { return m_count == 0; }

    /// Inserts, or overwrites the existing value.
    void SetAt(ARG_KEY key, ARG_VALUE value)
    {
        const KEY& wanted = key;
        if (Entry* const found = Find(wanted))
        {
            found->value = value;
            return;
        }
        Insert(wanted, value);
    }
    /// Inserts a default value when the key is new.
    VALUE& operator[](ARG_KEY key)
    {
        const KEY& wanted = key;
        Entry* const found = Find(wanted);
        return found != nullptr ? found->value : Insert(wanted).value;
    }
    /// @return whether the key is in the map; `value` is unchanged if not
    bool Lookup(ARG_KEY key, VALUE& value) const
    {
        const Entry* const found = Find(key);
        if (found == nullptr)
        {
            return false;
        }
        value = found->value;
        return true;
    }
    /// @return whether the key was in the map.
    bool RemoveKey(ARG_KEY key)
    {
        const KEY& wanted = key;
        if (m_count == 0)
        {
            return false;
        }
        Entry** link = &m_buckets[BucketOf(wanted)];
        while (*link != nullptr && !((*link)->key == wanted))
        {
            link = &(*link)->next;
        }
        Entry* const found = *link;
        if (found == nullptr)
        {
            return false;
        }
        *link = found->next;
        --m_count;
        Destroy(found);
        return true;
    }
    /// Removes every pair.
    void RemoveAll()
    {
        for (std::size_t i = 0; i < m_bucketCount; ++i)
        {
            while (Entry* const entry = m_buckets[i])
            {
                m_buckets[i] = entry->next;
                Destroy(entry);
            }
        }
        framework::FreeShared(m_buckets);
        m_buckets = nullptr;
        m_bucketCount = 0;
        m_count = 0;
    }

    /// The start of an iteration, in unspecified order; null when the map is empty.
    POSITION GetStartPosition() const { return FirstFrom(0); }
    /// The entry at `position`, which is advanced to the next one. REQUIRES: not null.
    void GetNextAssoc(POSITION& position, KEY& key, VALUE& value) const
    {
        const auto* entry = reinterpret_cast<const Entry*>(position);
        key = entry->key;
        value = entry->value;
        position =
            entry->next != nullptr ? reinterpret_cast<POSITION>(entry->next) : FirstFrom(BucketOf(entry->key) + 1);
    }

private:
    struct Entry
    {
        template <class... Values>
        explicit Entry(const KEY& itsKey, const Values&... itsValue)
            : next(nullptr)
            , key(itsKey)
            , value(itsValue...)
        {
        }

        Entry* next; ///< in the same bucket
        KEY key;
        VALUE value;
    };
    static_assert(alignof(Entry) <= alignof(std::max_align_t), "shared memory has the usual alignment");

    /// REQUIRES: buckets are allocated. Their number is a power of two.
    std::size_t BucketOf(const KEY& key) const { return framework::HashOf(key) & (m_bucketCount - 1); }

    Entry* Find(const KEY& key) const
    {
        Entry* entry = m_count == 0 ? nullptr : m_buckets[BucketOf(key)];
        while (entry != nullptr && !(entry->key == key))
        {
            entry = entry->next;
        }
        return entry;
    }

    POSITION FirstFrom(std::size_t bucket) const
    {
        for (; bucket < m_bucketCount; ++bucket)
        {
            if (m_buckets[bucket] != nullptr)
            {
                return reinterpret_cast<POSITION>(m_buckets[bucket]);
            }
        }
        return nullptr;
    }

    /// An entry with this value, or a default one. REQUIRES: the key is new.
    template <class... Values>
    Entry& Insert(const KEY& key, const Values&... value)
    {
        if (m_count == m_bucketCount)
        {
            Rehash(m_bucketCount == 0 ? 8 : 2 * m_bucketCount);
        }
        void* const place = framework::AllocateShared(sizeof(Entry));
        Entry* entry = nullptr;
        try
        {
            entry = ::new (place) Entry(key, value...);
        }
        catch (...)
        {
            framework::FreeShared(place);
            throw;
        }
        Link(*entry);
        ++m_count;
        return *entry;
    }

    void Link(Entry& entry)
    {
        Entry*& first = m_buckets[BucketOf(entry.key)];
        entry.next = first;
        first = &entry;
    }

    void Rehash(std::size_t bucketCount)
    {
        CMap rehashed;
        // NOLINTNEXTLINE(bugprone-sizeof-expression): the buckets are pointers
        rehashed.m_buckets = static_cast<Entry**>(framework::AllocateShared(bucketCount * sizeof(Entry*)));
        rehashed.m_bucketCount = bucketCount;
        for (std::size_t i = 0; i < bucketCount; ++i)
        {
            rehashed.m_buckets[i] = nullptr;
        }
        for (std::size_t i = 0; i < m_bucketCount; ++i)
        {
            while (Entry* const entry = m_buckets[i])
            {
                m_buckets[i] = entry->next;
                rehashed.Link(*entry);
            }
        }
        rehashed.m_count = std::exchange(m_count, 0);
        Swap(rehashed);
    }

    static void Destroy(Entry* entry)
    {
        entry->~Entry();
        framework::FreeShared(entry);
    }

    void Swap(CMap& other) noexcept
    {
        std::swap(m_buckets, other.m_buckets);
        std::swap(m_bucketCount, other.m_bucketCount);
        std::swap(m_count, other.m_count);
    }

    Entry** m_buckets = nullptr; ///< owned, shared memory
    std::size_t m_bucketCount = 0;
    std::size_t m_count = 0;
};

} // namespace zeb

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CMap;
using zeb::POSITION;
#endif
