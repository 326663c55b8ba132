#include "zebstore/addressbook/DistList.h"

#include "zebstore/addressbook/AddressResolve.h"
#include "zebstore/addressbook/EntryRow.h"
#include "zebstore/addressbook/ListMembers.h"
#include "zebstore/addressbook/MemberRows.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/tables/Table.h"

namespace zebstore
{
namespace
{

std::vector<ListMember> MembersIn(const StorePtr& store, const ENTRYLIST* entries)
{
    Require(entries != nullptr && (entries->lpbin != nullptr || entries->cValues == 0), "the list of entries is null");
    std::vector<ListMember> members;
    for (ULONG i = 0; i < entries->cValues; ++i)
    {
        members.push_back(MemberOf(store, entries->lpbin[i]));
    }
    return members;
}

} // namespace

IMAPITable* DistList::Contents(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    if (Entry().Name().key == 0)
    {
        return NewMemoryTable({}, EntryRowTags(), flags & MAPI_UNICODE);
    }
    return CreateTable(MakeMemberRows(Store(), Entry().Name()), options).Detach();
}

IUnknown* DistList::OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags)
{
    if (IsEqualGUID(iid, IID_IMAPITable) && PROP_ID(tag) == PROP_ID(PR_CONTAINER_CONTENTS))
    {
        return Contents(options & MAPI_UNICODE);
    }
    return PropBase::OpenObject(tag, iid, options, flags);
}

HRESULT DistList::GetContentsTable(ULONG flags, LPMAPITABLE* table)
{
    return Run("IMAPIContainer::GetContentsTable", [&]
    {
        Require(table != nullptr, "the output pointer is null");
        *table = nullptr;
        *table = Contents(flags);
    });
}

HRESULT DistList::GetHierarchyTable(ULONG, LPMAPITABLE*)
{
    return Guarded("IMAPIContainer::GetHierarchyTable",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "a distribution list has no hierarchy table, only members"); });
}

HRESULT DistList::OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType, LPUNKNOWN* object)
{
    return Guarded("IMAPIContainer::OpenEntry", [&]
    {
        Require(object != nullptr, "the output pointer is null");
        *object = nullptr;
        const Access most = File().IsReadOnly() ? Access::Read : Access::Write;
        *object = m_factory.Open(Store(), size, id, iid, flags, most, objectType);
    });
}

HRESULT DistList::SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG)
{
    return Guarded("IMAPIContainer::SetSearchCriteria",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "the address book does not support search criteria"); });
}

HRESULT DistList::GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*)
{
    return Guarded("IMAPIContainer::GetSearchCriteria",
                   [] { throw Error(MAPI_E_NO_SUPPORT, "the address book does not support search criteria"); });
}

AddressId DistList::ListToChange()
{
    RequireWrite();
    if (Entry().Name().key == 0)
    {
        throw Error(MAPI_E_CALL_FAILED, "the distribution list has not been saved yet: save it before adding members");
    }
    return Entry().Name().key;
}

HRESULT DistList::CreateEntry(ULONG size, LPENTRYID id, ULONG flags, LPMAPIPROP* entry)
{
    return Run("IDistList::CreateEntry", [&]
    {
        Require(entry != nullptr, "the output pointer is null");
        *entry = nullptr;
        RequireFlags(flags, CREATE_CHECK_DUP_STRICT | CREATE_CHECK_DUP_LOOSE | CREATE_REPLACE);
        NewEntry made;
        made.list = ListToChange();
        made.flags = flags;
        if (!size)
        {
            throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier is empty");
        }
        *entry = m_factory.Create(Store(), made, size, id);
    });
}

HRESULT DistList::CopyEntries(LPENTRYLIST entries, ULONG_PTR, LPMAPIPROGRESS, ULONG flags)
{
    return Run("IDistList::CopyEntries", [&]
    {
        RequireFlags(flags, AB_NO_DIALOG | CREATE_CHECK_DUP_LOOSE | CREATE_REPLACE);
        AddressStorage(Store()->SharedFile()).AddMembers(ListToChange(), MembersIn(Store(), entries));
    });
}

HRESULT DistList::DeleteEntries(LPENTRYLIST entries, ULONG flags)
{
    return Run("IDistList::DeleteEntries", [&]() -> HRESULT
    {
        RequireFlags(flags, 0);
        const std::vector<ListMember> members = MembersIn(Store(), entries);
        const size_t removed = AddressStorage(Store()->SharedFile()).RemoveMembers(ListToChange(), members);
        return removed < members.size() ? MAPI_W_PARTIAL_COMPLETION : S_OK;
    });
}

HRESULT DistList::ResolveNames(LPSPropTagArray columns, ULONG flags, LPADRLIST list, LPFlagList found)
{
    return Run("IDistList::ResolveNames", [&]
    {
        const std::shared_ptr<RowSource> rows = MakeMemberRows(Store(), Entry().Name());
        ResolveNamesIn(*rows, columns, flags, list, found);
    });
}

} // namespace zebstore
