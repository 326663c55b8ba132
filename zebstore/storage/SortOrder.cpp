#include "zebstore/storage/SortOrder.h"

#include "zebstore/base/Error.h"
#include "zebstore/storage/Compare.h"
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/InstanceTag.h"

namespace zebstore
{

namespace
{

/// The type of what a key sorts by: of a multi-valued property's instances that of one value.
ULONG SingleType(ULONG tag)
{
    return PROP_TYPE(tag) & ~(IsInstanceTag(tag) ? ULONG(MV_FLAG | MV_INSTANCE) : ULONG(0));
}

} // namespace

SortOrder::SortOrder(const SSortOrderSet& source)
{
    if (source.cCategories != 0 || source.cExpanded != 0)
    {
        throw Error(MAPI_E_TOO_COMPLEX, "Tables have no categories.");
    }
    if (source.cSorts > MostKeys)
    {
        throw Error(MAPI_E_TOO_COMPLEX, "A sort order has too many keys.");
    }
    for (ULONG i = 0; i < source.cSorts; ++i)
    {
        const SSortOrder& key = source.aSort[i];
        const ULONG type = SingleType(key.ulPropTag);
        if ((type & MV_INSTANCE) || (type != PT_UNSPECIFIED && !IsStorable(type)))
        {
            throw Error(MAPI_E_TOO_COMPLEX, "A sort order has a key of a type without an order.");
        }
        if (key.ulOrder & ~static_cast<ULONG>(TABLE_SORT_DESCEND | TABLE_SORT_COMBINE))
        {
            throw Error(MAPI_E_TOO_COMPLEX, "A sort order goes in a direction that tables do not know.");
        }
        m_keys.push_back({key.ulPropTag, (key.ulOrder & TABLE_SORT_DESCEND) != 0});
    }
}

std::string SortOrder::BytesOf(const ValueSource& values) const
{
    std::string bytes;
    for (const Key& key : m_keys)
    {
        EncodedValue value = values.Find(key.tag);
        // A column of another type shows no value, so it sorts as none.
        if (SingleType(key.tag) != PT_UNSPECIFIED && !TypesMatch(value.Type(), SingleType(key.tag)))
        {
            value = {};
        }
        AppendSortBytes(bytes, value, key.descending);
    }
    return bytes;
}

} // namespace zebstore
