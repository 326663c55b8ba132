#include "zebstore/addressbook/AddressResolve.h"

#include "platform/tags.h"
#include "zebstore/base/Memory.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/Restriction.h"
#include "zebstore/storage/ValueBuilder.h"

#include <algorithm>

namespace zebstore
{
namespace
{

constexpr ULONG UsualColumns[] = {PR_ENTRYID,        PR_OBJECT_TYPE, PR_DISPLAY_TYPE,
                                  PR_DISPLAY_NAME_W, PR_ADDRTYPE_W,  PR_EMAIL_ADDRESS_W,
                                  PR_SMTP_ADDRESS_W, PR_SEARCH_KEY,  PR_RECORD_KEY};

std::vector<RowKey> KeysByName(RowSource& rows, const std::string& name)
{
    const zeb::platform::WideString wide = WideFromStored(name);
    SPropValue value{};
    value.ulPropTag = PR_ANR_W;
    value.Value.lpszW = const_cast<WCHAR*>(wide.c_str());
    SRestriction restriction{};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty.relop = RELOP_EQ;
    restriction.res.resProperty.ulPropTag = PR_ANR_W;
    restriction.res.resProperty.lpProp = &value;
    const Restriction byName(restriction);
    return rows.Keys(&byName, nullptr);
}

PropertySet ReadRow(RowSource& rows, RowKey key, const std::vector<ULONG>& columns)
{
    PropertySet row;
    rows.Read(&key, 1, [&](size_t, const ValueSource& values)
    {
        for (const ULONG tag : columns)
        {
            if (const EncodedValue value = values.Find(tag); value && value.large == nullptr)
            {
                row.SetEncoded(value.tag, value.bytes);
            }
        }
    });
    return row;
}

std::vector<ULONG> ColumnsOf(const SPropTagArray* columns)
{
    if (columns == nullptr)
    {
        return {std::begin(UsualColumns), std::end(UsualColumns)};
    }
    std::vector<ULONG> tags(columns->aulPropTag, columns->aulPropTag + columns->cValues);
    tags.push_back(PR_ENTRYID);
    return tags;
}

/// The existing properties of a recipient; invalid ones are skipped.
PropertySet PropertiesOf(const ADRENTRY& entry)
{
    PropertySet properties;
    for (ULONG i = 0; i < entry.cValues; ++i)
    {
        if (PROP_TYPE(entry.rgPropVals[i].ulPropTag) != PT_ERROR && PROP_TYPE(entry.rgPropVals[i].ulPropTag) != PT_NULL)
        {
            properties.Set(entry.rgPropVals[i]);
        }
    }
    return properties;
}

void Replace(ADRENTRY& entry, const PropertySet& properties, bool unicode)
{
    std::vector<ULONG> tags;
    for (const ULONG tag : properties.Tags())
    {
        tags.push_back(IsText(PROP_TYPE(tag)) ? CHANGE_PROP_TYPE(tag, (unicode ? PT_UNICODE : PT_STRING8)) : tag);
    }
    SPropValue* values = BuildValues(tags.data(), tags.size(), properties, {});
    Free(entry.rgPropVals);
    entry.rgPropVals = values;
    entry.cValues = static_cast<ULONG>(tags.size());
}

} // namespace

NameMatches FindByName(RowSource& rows, const std::string& name, const SPropTagArray* columns)
{
    NameMatches matches;
    std::vector<RowKey> keys = KeysByName(rows, name);
    // An exact match of the full name wins over entries that only begin with it.
    if (keys.size() > 1)
    {
        if (const std::vector<RowKey> whole = KeysByName(rows, "=" + name); whole.size() == 1)
        {
            keys = whole;
        }
    }
    matches.count = keys.size();
    if (keys.size() == 1)
    {
        matches.entry = ReadRow(rows, keys.front(), ColumnsOf(columns));
    }
    return matches;
}

bool IsResolved(const ADRENTRY& entry)
{
    return std::any_of(entry.rgPropVals, entry.rgPropVals + entry.cValues,
                       [](const SPropValue& each) { return each.ulPropTag == PR_ENTRYID && each.Value.bin.cb != 0; });
}

std::string NameToResolve(const ADRENTRY& entry)
{
    return PropertiesOf(entry).Text(PR_DISPLAY_NAME_W);
}

void GiveProperties(ADRENTRY& entry, const PropertySet& found, bool unicode)
{
    PropertySet properties = PropertiesOf(entry);
    for (const PropertySet::Item& item : found.Items())
    {
        properties.SetEncoded(item.tag, item.bytes);
    }
    Replace(entry, properties, unicode);
}

void ResolveNamesIn(RowSource& rows, const SPropTagArray* columns, ULONG flags, ADRLIST* list, FlagList* found)
{
    RequireFlags(flags, MAPI_UNICODE);
    Require(list != nullptr && found != nullptr, "the list of names or the output pointer is null");
    Require(found->cFlags == list->cEntries, "the flag list and the list of names have different lengths");
    for (ULONG i = 0; i < list->cEntries; ++i)
    {
        ADRENTRY& entry = list->aEntries[i];
        if (found->ulFlag[i] == MAPI_RESOLVED || IsResolved(entry))
        {
            continue;
        }
        const NameMatches matches = FindByName(rows, NameToResolve(entry), columns);
        if (matches.count > 1)
        {
            found->ulFlag[i] = MAPI_AMBIGUOUS;
        }
        if (matches.count != 1)
        {
            continue;
        }
        GiveProperties(entry, matches.entry, (flags & MAPI_UNICODE) != 0);
        found->ulFlag[i] = MAPI_RESOLVED;
    }
}

} // namespace zebstore
