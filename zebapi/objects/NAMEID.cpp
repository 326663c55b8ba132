#include "zebapi/objects/NAMEID.h"

#include "zebapi/constants/internal/NamedProps.h"
#include "zebapi/frame/Exception.h"
#include "zebapi/frame/MEM.h"

namespace
{

constexpr ULONG FirstNamedID = 0x8000;

} // namespace

CZebNameIdMap::CZebNameIdMap() = default;

CZebNameIdMap::CZebNameIdMap(const CZebNameIdMap& other)
{
    CZebNameIdMap::operator=(other);
}

CZebNameIdMap::~CZebNameIdMap() = default;

void CZebNameIdMap::EmptyIdMap()
{
    m_forward.RemoveAll();
    m_reverse.RemoveAll();
}

int CZebNameIdMap::GetCount() const
{
    return static_cast<int>(m_forward.GetCount());
}

void CZebNameIdMap::SetTag(ULONG symbolicTag, ULONG realTag)
{
    const DWORD symbolicID = PROP_ID(symbolicTag);
    const DWORD realID = PROP_ID(realTag);
    DWORD former = 0;
    const bool known = m_forward.Lookup(symbolicID, former);
    m_forward.SetAt(symbolicID, realID);
    try
    {
        m_reverse.SetAt(realID, symbolicID);
    }
    catch (...)
    {
        if (known)
        {
            m_forward.SetAt(symbolicID, former);
        }
        else
        {
            m_forward.RemoveKey(symbolicID);
        }
        throw;
    }
}

ULONG CZebNameIdMap::GetTag(ULONG tag, bool mustExist) const
{
    return Find(m_forward, PROP_ID(tag), tag, mustExist);
}

ULONG CZebNameIdMap::GetName(ULONG tag, bool mustExist) const
{
    return Find(m_reverse, tag, tag, mustExist);
}

ULONG CZebNameIdMap::Find(const IdMap& map, DWORD key, ULONG tag, bool mustExist)
{
    if (PROP_ID(tag) < FirstNamedID)
    {
        return tag;
    }
    DWORD id = 0;
    if (map.Lookup(key, id))
    {
        return PROP_TAG(PROP_TYPE(tag), id);
    }
    if (mustExist)
    {
        CZebException::Throw(MAPI_E_BAD_VALUE);
    }
    return 0;
}

CZebNameIdMap& CZebNameIdMap::operator=(const CZebNameIdMap& other)
{
    EmptyIdMap();
    try
    {
        for (const IdMap* map : {&other.m_forward, &other.m_reverse})
        {
            // From a copy: when a map is assigned to itself, the loop would modify the map that it iterates over.
            const IdMap entries(*map);
            for (POSITION position = entries.GetStartPosition(); position != nullptr;)
            {
                DWORD key = 0;
                DWORD value = 0;
                entries.GetNextAssoc(position, key, value);
                m_forward.SetAt(key, value);
            }
        }
    }
    catch (...)
    {
        EmptyIdMap();
        throw;
    }
    return *this;
}

CZebNameIdHelper::CZebNameIdHelper()
    : m_count(zeb::NamedPropCount)
{
    try
    {
        Fill();
    }
    catch (...)
    {
        Zeb_MemFree(m_names);
        throw;
    }
}

CZebNameIdHelper::~CZebNameIdHelper()
{
    Zeb_MemFree(m_names);
}

void CZebNameIdHelper::Fill()
{
    m_names = static_cast<MAPINAMEID**>(Zeb_MemAllocate(m_count * sizeof(MAPINAMEID*), nullptr));
    for (ULONG i = 0; i < m_count; ++i)
    {
        m_names[i] = static_cast<MAPINAMEID*>(Zeb_MemAllocate(sizeof(MAPINAMEID), m_names));
        m_names[i]->lpguid = const_cast<GUID*>(zeb::NamedProps[i].set);
        m_names[i]->ulKind = MNID_ID;
        m_names[i]->Kind.lID = static_cast<LONG>(PROP_ID(zeb::NamedProps[i].tag));
    }
}

ULONG CZebNameIdHelper::GetID(ULONG index) const
{
    if (index >= m_count)
    {
        CZebException::Throw(E_INVALIDARG);
    }
    return static_cast<ULONG>(m_names[index]->Kind.lID);
}

ULONG CZebNameIdHelper::GetTag(ULONG index, ULONG type) const
{
    return (GetID(index) << 16) | type;
}

CZebNameIdHelper::operator MAPINAMEID**()
{
    if (m_names == nullptr)
    {
        CZebException::Throw(E_INVALIDARG);
    }
    return m_names;
}

CZebNameIdHelper::operator ULONG()
{
    return m_count;
}
