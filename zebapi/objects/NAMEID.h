// Named properties: the library's list, and their tags in one store.
#pragma once

#include "framework/Containers.h"
#include "platform/export.h"
#include "platform/mapi.h"

/// Maps symbolic tags of named properties to the tags that one store assigned to them.
///
/// A named property has another id in every store. Callers use a fixed symbolic tag: its id is the property's numeric
/// name, its type the real type. The map returns the store's id with the caller's type. Only the ids (the high 16 bits)
/// are kept. Threads: none of its own; use one object from one thread.
class ZEBAPI_EXPORT CZebNameIdMap
{
public:
    CZebNameIdMap();
    /// As assignment of other to a new map. @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY
    CZebNameIdMap(const CZebNameIdMap& other);
    virtual ~CZebNameIdMap();
    /// Removes every entry.
    virtual void EmptyIdMap();
    /// The number of symbolic ids known.
    virtual int GetCount() const;
    /// Maps the id of symbolicTag to the id of realTag, both ways; an existing id is overwritten. @throws
    /// CZebException* MAPI_E_NOT_ENOUGH_MEMORY; nothing is mapped in that case
    virtual void SetTag(ULONG symbolicTag, ULONG realTag);
    /// The store's tag for a symbolic one: the store's id with the type of tag. A tag with an id below 0x8000
    /// is returned unchanged; an unknown one gives 0.
    /// @throws CZebException* MAPI_E_BAD_VALUE when the tag is unknown and mustExist is set
    virtual ULONG GetTag(ULONG tag, bool mustExist) const;
    /// Looks the whole tag up among the store's 16-bit ids, so a named tag is never found: 0, or the
    /// exception. A tag with an id below 0x8000 is returned unchanged.
    /// @throws CZebException* MAPI_E_BAD_VALUE when the tag is unknown and mustExist is set
    virtual ULONG GetName(ULONG tag, bool mustExist) const;
    /// Takes the entries of both directions of other into the forward direction; the reverse one stays empty.
    /// Assigning a map to itself empties it.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, and the map is empty then
    virtual CZebNameIdMap& operator=(const CZebNameIdMap& other);

private:
    using IdMap = zeb::CMap<DWORD, DWORD, DWORD, DWORD>;
    static ULONG Find(const IdMap& map, DWORD key, ULONG tag, bool mustExist);

    IdMap m_forward;
    IdMap m_reverse;
};

/// The library's fixed list of named properties, as the argument of IMAPIProp::GetIDsFromNames.
///
/// Owns one chain of MAPI memory: the array of pointers, and every MAPINAMEID allocated on it. Needs a bound allocator,
/// and is used for one call only.
class ZEBAPI_EXPORT CZebNameIdHelper
{
public:
    /// Builds the list.
    /// @throws CZebException* MAPI_E_NOT_INITIALIZED, MAPI_E_NOT_ENOUGH_MEMORY; nothing stays allocated then
    CZebNameIdHelper();
    CZebNameIdHelper(const CZebNameIdHelper&) = delete;
    CZebNameIdHelper& operator=(const CZebNameIdHelper&) = delete;
    /// Frees the array, and every entry with it.
    virtual ~CZebNameIdHelper();
    /// The numeric name of entry index.
    /// @throws CZebException* E_INVALIDARG when index is not below the count
    virtual ULONG GetID(ULONG index) const;
    /// The symbolic tag of entry index with the given property type.
    /// @throws CZebException* E_INVALIDARG when index is not below the count
    virtual ULONG GetTag(ULONG index, ULONG type) const;
    /// The array, owned by this object.
    /// @throws CZebException* E_INVALIDARG when there is none
    virtual operator MAPINAMEID**();
    /// The number of entries.
    virtual operator ULONG();

private:
    void Fill();

    MAPINAMEID** m_names = nullptr;
    ULONG m_count;
};
