// Distribution lists and their members.
#include "zebstore/addressbook/AddressEntry.h"
#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/storage/SortOrder.h"
#include "zebstore/tables/Table.h"

#include <cstring>

namespace zebstore
{
namespace
{

constexpr ULONG RowTags[] = {PR_ENTRYID,        PR_RECORD_KEY,   PR_OBJECT_TYPE,     PR_DISPLAY_TYPE, PR_INSTANCE_KEY,
                             PR_DISPLAY_NAME_W, PR_ADDRTYPE_W,   PR_EMAIL_ADDRESS_W, PrSmtpAddress,   PR_SEARCH_KEY,
                             PR_ACCOUNT_W,      PR_GIVEN_NAME_W, PR_SURNAME_W};

// The current members: rebuilt whenever the address book or the contacts have changed.
class MemberRows final : public MemoryRows
{
public:
    MemberRows(const StorePtr& store, const AddressName& list)
        : MemoryRows({}, {std::begin(RowTags), std::end(RowTags)})
        , m_store(store)
        , m_list(list)
    {
        Refresh();
    }

    std::uint64_t Generation() override
    {
        Refresh();
        return MemoryRows::Generation();
    }

private:
    void Refresh()
    {
        StoreFile& file = m_store->File();
        const std::lock_guard<std::recursive_mutex> hold(file.Lock());
        const std::uint64_t now = AddressStorage(m_store->SharedFile()).Generation() +
                                  file.Contents().Generation({IdOf(StandardFolder::Contacts), false});
        if (now == m_madeOf)
        {
            return;
        }
        std::vector<PropertySet> rows;
        for (const AddressEntryId& each : MembersOf(m_store, m_list))
        {
            rows.push_back(RowOfEntry(m_store, each.data(), each.size()));
        }
        Replace(std::move(rows));
        m_madeOf = now;
    }

    const StorePtr m_store;
    const AddressName m_list;
    std::uint64_t m_madeOf = 0;
};

std::vector<ListMember> MembersIn(const StorePtr& store, const ENTRYLIST* entries)
{
    Require(entries && (entries->lpbin || !entries->cValues), "the list of entries is null");
    std::vector<ListMember> members;
    for (ULONG i = 0; i < entries->cValues; ++i)
    {
        members.push_back(MemberOf(store, entries->lpbin[i]));
    }
    return members;
}

} // namespace

ListMember MemberOf(const StorePtr& store, const SBinary& id)
{
    if (!id.cb || !id.lpb)
    {
        throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier is empty");
    }
    const AddressName name = ParseAddressId(store->Uid(), id.lpb, id.cb);
    switch (name.kind)
    {
    case AddressKind::User:
    case AddressKind::List:
        return {name.key, std::string()};
    case AddressKind::Contact:
    case AddressKind::ContactList:
    case AddressKind::OneOff:
        return {0, std::string(reinterpret_cast<const char*>(id.lpb), id.cb)};
    default:
        throw Error(MAPI_E_INVALID_ENTRYID, "a container cannot become an entry of a list");
    }
}

std::vector<AddressEntryId> MembersOf(const StorePtr& store, const AddressName& list)
{
    std::vector<AddressEntryId> ids;
    if (list.kind == AddressKind::ContactList)
    {
        const PropertySet message = store->File().Messages().Load(list.key).properties;
        for (const std::string& each : ContactListMembers(ContactTagsOf(store->File()), message))
        {
            ids.emplace_back(each.begin(), each.end());
        }
        return ids;
    }
    const AddressStorage addresses(store->SharedFile());
    for (const ListMember& member : addresses.Members(list.key))
    {
        if (member.address == 0)
        {
            ids.emplace_back(member.entry.begin(), member.entry.end());
            continue;
        }
        AddressName name;
        name.kind = addresses.Load(member.address).type == MAPI_DISTLIST ? AddressKind::List : AddressKind::User;
        name.key = member.address;
        ids.push_back(MakeAddressId(store->Uid(), name));
    }
    return ids;
}

PropertySet RowOfEntry(const StorePtr& store, const void* id, size_t size)
{
    PropertySet row;
    try
    {
        EntryData entry(store, ParseAddressId(store->Uid(), id, size), {});
        const PropertySet& stored = entry.Stored();
        for (const ULONG tag : RowTags)
        {
            if (!entry.Compute(tag, row))
            {
                if (const EncodedValue value = stored.Find(tag); value && !value.large)
                {
                    row.SetEncoded(value.tag, value.bytes);
                }
            }
        }
    }
    catch (const Error& error)
    {
        if (error.Code() != MAPI_E_NOT_FOUND && error.Code() != MAPI_E_INVALID_ENTRYID)
        {
            throw;
        }
        row.Clear();
    }
    row.SetBinary(PR_ENTRYID, id, size);
    row.SetBinary(PR_INSTANCE_KEY, id, size);
    return row;
}

std::shared_ptr<RowSource> MakeMemberRows(const StorePtr& store, const AddressName& list)
{
    return std::make_shared<MemberRows>(store, list);
}

IMAPITable* DistList::Contents(ULONG flags)
{
    RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    if (Entry().Name().key == 0)
    {
        return NewMemoryTable({}, {std::begin(RowTags), std::end(RowTags)}, flags & MAPI_UNICODE);
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
        *object = OpenAddress(Store(), size, id, iid, flags, most, objectType);
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
        *entry = CreateAddressEntry(Store(), made, size, id);
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
