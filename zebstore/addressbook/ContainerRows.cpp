#include "zebstore/addressbook/ContainerRows.h"

#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/addressbook/ContactRows.h"

namespace zebstore
{
namespace
{

AddressName NameOfContainer(AddressKind kind)
{
    AddressName name;
    name.kind = kind;
    if (kind == AddressKind::Contacts)
    {
        name.key = IdOf(StandardFolder::Contacts);
    }
    return name;
}

const char* DisplayNameOf(AddressKind kind)
{
    switch (kind)
    {
    case AddressKind::Directory:
        return "Global Address List";
    case AddressKind::Contacts:
        return "Contacts";
    default:
        return "Address Book";
    }
}

const MAPIUID& ProviderOf(AddressKind kind)
{
    switch (kind)
    {
    case AddressKind::Directory:
        return DirectoryProvider;
    case AddressKind::Contacts:
        return ContactProvider;
    default:
        return RootProvider;
    }
}

LONG FlagsOf(AddressKind kind, bool writable)
{
    if (kind == AddressKind::Root)
    {
        return AB_SUBCONTAINERS | AB_UNMODIFIABLE;
    }
    const bool modifiable = kind == AddressKind::Directory && writable;
    return static_cast<LONG>(AB_RECIPIENTS | (modifiable ? AB_MODIFIABLE : AB_UNMODIFIABLE));
}

void SetTemplates(const StorePtr& store, PropertySet& row)
{
    AddressName name;
    name.kind = AddressKind::NewUser;
    const AddressEntryId user = MakeAddressId(store->Uid(), name);
    row.SetBinary(PR_DEF_CREATE_MAILUSER, user.data(), user.size());
    name.kind = AddressKind::NewList;
    const AddressEntryId list = MakeAddressId(store->Uid(), name);
    row.SetBinary(PR_DEF_CREATE_DL, list.data(), list.size());
}

} // namespace

const std::vector<ULONG>& ContainerTags()
{
    static const std::vector<ULONG> tags = {
        PR_ENTRYID,        PR_DISPLAY_NAME_W, PR_OBJECT_TYPE,        PR_DISPLAY_TYPE, PR_CONTAINER_FLAGS,
        PR_AB_PROVIDER_ID, PR_DEPTH,          PR_RECORD_KEY,         PR_INSTANCE_KEY, PR_MAPPING_SIGNATURE,
        PR_ACCESS_LEVEL,   PR_DEF_CREATE_DL,  PR_DEF_CREATE_MAILUSER};
    return tags;
}

PropertySet ContainerRow(const StorePtr& store, AddressKind kind, bool writable)
{
    PropertySet row;
    for (const ULONG tag : ComputedEntryTags())
    {
        ComputeEntry(*store, NameOfContainer(kind), tag, row);
    }
    row.SetText(PR_DISPLAY_NAME_W, DisplayNameOf(kind));
    row.SetLong(PR_CONTAINER_FLAGS, FlagsOf(kind, writable));
    row.SetBinary(PR_AB_PROVIDER_ID, ProviderOf(kind).ab, sizeof(MAPIUID));
    row.SetLong(PR_DEPTH, kind == AddressKind::Root ? 0 : 1);
    row.SetLong(PR_ACCESS_LEVEL, writable ? 1 : 0);
    if (kind == AddressKind::Directory)
    {
        SetTemplates(store, row);
    }
    return row;
}

std::shared_ptr<RowSource> MakeContainerRows(const StorePtr& store, AddressKind kind)
{
    if (kind == AddressKind::Contacts)
    {
        return MakeContactRows(store);
    }
    return MakeAddressRows(AddressStorage(store->SharedFile()), MakeComputedAddress(store));
}

} // namespace zebstore
