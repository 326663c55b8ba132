#include "zebstore/objects/PropNames.h"

#include "zebstore/base/Memory.h"

#include <algorithm>
#include <cstddef>

namespace zebstore
{
namespace
{

MAPINAMEID* BuildName(const PropertyName& name, void* parent)
{
    auto* result = static_cast<MAPINAMEID*>(Allocate(sizeof(MAPINAMEID), parent));
    result->lpguid = static_cast<GUID*>(CopyBytes(&name.set, sizeof(GUID), parent));
    result->ulKind = name.number ? MNID_ID : MNID_STRING;
    if (name.number)
    {
        result->Kind.lID = *name.number;
    }
    else
    {
        result->Kind.lpwstrName = CopyWide(name.name.c_str(), parent);
    }
    return result;
}

/// Identifiers below 0x8000 name themselves in the property set PS_MAPI.
std::optional<PropertyName> NameOf(StoreFile& file, ULONG id)
{
    if (id >= FirstNamedId)
    {
        return file.NamedProperties().Name(id);
    }
    PropertyName name;
    name.id = id;
    name.set = PS_MAPI;
    name.number = static_cast<LONG>(id);
    return name;
}

bool Wanted(const PropertyName& name, const GUID* set, ULONG flags)
{
    if (set != nullptr && !IsEqualGUID(*set, name.set))
    {
        return false;
    }
    return (flags & (name.number ? MAPI_NO_IDS : MAPI_NO_STRINGS)) == 0;
}

/// The names of a store that match the arguments of GetNamesFromIDs.
std::vector<std::optional<PropertyName>> WantedNames(StoreFile& file, const GUID* set, ULONG flags)
{
    std::vector<std::optional<PropertyName>> found;
    for (PropertyName& each : file.NamedProperties().All())
    {
        if (Wanted(each, set, flags))
        {
            found.emplace_back(std::move(each));
        }
    }
    return found;
}

std::vector<std::optional<PropertyName>> NamesOf(StoreFile& file, const SPropTagArray& tags)
{
    std::vector<std::optional<PropertyName>> found;
    for (ULONG i = 0; i < tags.cValues; ++i)
    {
        found.push_back(NameOf(file, PROP_ID(tags.aulPropTag[i])));
    }
    return found;
}

SPropTagArray* BuildTags(const std::vector<ULONG>& tags)
{
    Buffer<SPropTagArray> array(Allocate(offsetof(SPropTagArray, aulPropTag) + (tags.size() + 1) * sizeof(ULONG)));
    array->cValues = static_cast<ULONG>(tags.size());
    std::copy(tags.begin(), tags.end(), array->aulPropTag);
    return array.Detach();
}

bool IsMapiName(const MAPINAMEID& name)
{
    return name.lpguid != nullptr && IsEqualGUID(*name.lpguid, PS_MAPI) && name.ulKind == MNID_ID &&
           name.Kind.lID > 0 && name.Kind.lID < static_cast<LONG>(FirstNamedId);
}

void CheckName(const MAPINAMEID* name)
{
    Require(name != nullptr && name->lpguid != nullptr, "a property name has no property set");
    Require(name->ulKind == MNID_ID || (name->ulKind == MNID_STRING && name->Kind.lpwstrName != nullptr),
            "the kind of a property name is neither MNID_ID nor MNID_STRING");
}

} // namespace

HRESULT NamesFromIds(StoreFile& file, SPropTagArray** tags, const GUID* set, ULONG flags, ULONG* count,
                     MAPINAMEID*** names)
{
    Require(tags != nullptr && count != nullptr && names != nullptr, "the output pointer is null");
    *count = 0;
    *names = nullptr;
    RequireFlags(flags, MAPI_NO_STRINGS | MAPI_NO_IDS);
    const bool all = *tags == nullptr;
    const std::vector<std::optional<PropertyName>> found = all ? WantedNames(file, set, flags) : NamesOf(file, **tags);
    Buffer<MAPINAMEID*> result(Allocate((found.size() + 1) * sizeof(MAPINAMEID*)));
    std::vector<ULONG> ids;
    bool missing = false;
    for (size_t i = 0; i < found.size(); ++i)
    {
        result.Get()[i] = found[i] ? BuildName(*found[i], result.Get()) : nullptr;
        missing = missing || !found[i];
        if (all)
        {
            ids.push_back(PROP_TAG(PT_UNSPECIFIED, found[i]->id));
        }
    }
    if (all)
    {
        *tags = BuildTags(ids);
    }
    *count = static_cast<ULONG>(found.size());
    *names = result.Detach();
    return missing ? MAPI_W_ERRORS_RETURNED : S_OK;
}

HRESULT IdsFromNames(StoreFile& file, ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags)
{
    Require(tags != nullptr, "the output pointer is null");
    *tags = nullptr;
    RequireFlags(flags, MAPI_CREATE);
    std::vector<ULONG> result;
    if (names == nullptr || count == 0)
    {
        Require((flags & MAPI_CREATE) == 0, "the list of names is null or empty");
        for (const PropertyName& each : file.NamedProperties().All())
        {
            result.push_back(PROP_TAG(PT_UNSPECIFIED, each.id));
        }
        *tags = BuildTags(result);
        return S_OK;
    }
    std::vector<const MAPINAMEID*> asked;
    for (ULONG i = 0; i < count; ++i)
    {
        CheckName(names[i]);
        if (!IsMapiName(*names[i]))
        {
            asked.push_back(names[i]);
        }
    }
    const std::vector<ULONG> ids = file.NamedProperties().Ids(asked.data(), asked.size(), (flags & MAPI_CREATE) != 0);
    bool missing = false;
    for (ULONG i = 0, next = 0; i < count; ++i)
    {
        const ULONG id = IsMapiName(*names[i]) ? static_cast<ULONG>(names[i]->Kind.lID) : ids.at(next++);
        missing = missing || id == 0;
        result.push_back(id ? PROP_TAG(PT_UNSPECIFIED, id) : PROP_TAG(PT_ERROR, 0));
    }
    *tags = BuildTags(result);
    return missing ? MAPI_W_ERRORS_RETURNED : S_OK;
}

} // namespace zebstore
