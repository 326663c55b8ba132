// The containers of the address book: the root, the global address list, the contacts.
#include "zebstore/addressbook/AddressBook.h"
#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/addressbook/Contacts.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/tables/Table.h"

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

/// Threads: any.
class AddressContainer final : public PropObject<IABContainer>
{
public:
    AddressContainer(const StorePtr& store, AddressKind kind, Access access)
        : PropObject(store, access)
        , m_kind(kind)
        , m_row(ContainerRow(store, kind, access == Access::Write))
    {
    }

    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override
    {
        return Guarded("IMAPIContainer::GetContentsTable", [&]
        {
            Require(table != nullptr, "the output pointer is null");
            *table = nullptr;
            *table = Contents(flags);
        });
    }

    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override
    {
        return Guarded("IMAPIContainer::GetHierarchyTable", [&]
        {
            Require(table != nullptr, "the output pointer is null");
            *table = nullptr;
            *table = Hierarchy(flags);
        });
    }

    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override
    {
        return Guarded("IMAPIContainer::OpenEntry", [&]
        {
            Require(object != nullptr, "the output pointer is null");
            *object = nullptr;
            const Access most = File().IsReadOnly() ? Access::Read : Access::Write;
            *object = OpenAddress(Store(), size, id, iid, flags, most, objectType);
        });
    }

    HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override
    {
        return Refuse("IMAPIContainer::SetSearchCriteria", "the address book does not support search criteria");
    }
    HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override
    {
        return Refuse("IMAPIContainer::GetSearchCriteria", "the address book does not support search criteria");
    }

    HRESULT STDMETHODCALLTYPE CreateEntry(ULONG size, LPENTRYID id, ULONG flags, LPMAPIPROP* entry) override
    {
        return Guarded("IABContainer::CreateEntry", [&]
        {
            Require(entry != nullptr, "the output pointer is null");
            *entry = nullptr;
            RequireFlags(flags, CREATE_CHECK_DUP_STRICT | CREATE_CHECK_DUP_LOOSE | CREATE_REPLACE);
            RequireDirectory();
            if (!size)
            {
                throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier is empty");
            }
            NewEntry made;
            made.flags = flags;
            *entry = CreateAddressEntry(Store(), made, size, id);
        });
    }

    HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST entries, ULONG_PTR, LPMAPIPROGRESS, ULONG flags) override
    {
        return Guarded("IABContainer::CopyEntries", [&]
        {
            // CREATE_CHECK_DUP_STRICT has the value of AB_NO_DIALOG, so a copy cannot request it.
            RequireFlags(flags, AB_NO_DIALOG | CREATE_CHECK_DUP_LOOSE | CREATE_REPLACE);
            RequireDirectory();
            Require(entries && (entries->lpbin || !entries->cValues), "the list of entries is null");
            for (ULONG i = 0; i < entries->cValues; ++i)
            {
                Copy(entries->lpbin[i], flags & ~ULONG(AB_NO_DIALOG));
            }
        });
    }

    HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST entries, ULONG flags) override
    {
        return Guarded("IABContainer::DeleteEntries", [&]() -> HRESULT
        {
            RequireFlags(flags, 0);
            RequireDirectory();
            Require(entries && (entries->lpbin || !entries->cValues), "the list of entries is null");
            std::vector<AddressId> ids;
            for (ULONG i = 0; i < entries->cValues; ++i)
            {
                if (const AddressId id = MemberOf(Store(), entries->lpbin[i]).address)
                {
                    ids.push_back(id);
                }
            }
            const size_t deleted = AddressStorage(Store()->SharedFile()).Delete(ids);
            return deleted < entries->cValues ? MAPI_W_PARTIAL_COMPLETION : S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray columns, ULONG flags, LPADRLIST list,
                                           LPFlagList found) override
    {
        return Guarded("IABContainer::ResolveNames", [&]
        {
            RequireEntries();
            const std::shared_ptr<RowSource> rows = MakeContainerRows(Store(), m_kind);
            ResolveNamesIn(*rows, columns, flags, list, found);
        });
    }

private:
    static HRESULT Refuse(const char* method, const char* why)
    {
        return Guarded(method, [&] { throw Error(MAPI_E_NO_SUPPORT, why); });
    }

    bool Answers(REFIID iid) const override
    {
        return IsOneOf(iid, {&IID_IMAPIProp, &IID_IMAPIContainer, &IID_IABContainer});
    }
    const PropertySet& Stored() override { return m_none; }
    const std::vector<ULONG>& ComputedTags() override { return ContainerTags(); }
    bool Compute(ULONG tag, PropertySet& out) override
    {
        const EncodedValue value = m_row.Find(tag);
        if (value)
        {
            out.SetEncoded(value.tag, value.bytes);
        }
        return static_cast<bool>(value);
    }
    void Edit(const std::function<void(PropertySet&)>& change) override
    {
        PropertySet before = m_none;
        change(before);
        if (!before.IsEmpty())
        {
            throw Error(MAPI_E_NO_SUPPORT, "a container of the address book has no writable properties");
        }
    }
    void Save(ULONG) override {}
    std::vector<ULONG> ObjectTags() override { return {PR_CONTAINER_CONTENTS, PR_CONTAINER_HIERARCHY}; }
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags) override
    {
        if (IsEqualGUID(iid, IID_IMAPITable) && PROP_ID(tag) == PROP_ID(PR_CONTAINER_CONTENTS))
        {
            return Contents(options & MAPI_UNICODE);
        }
        if (IsEqualGUID(iid, IID_IMAPITable) && PROP_ID(tag) == PROP_ID(PR_CONTAINER_HIERARCHY))
        {
            return Hierarchy(options & (MAPI_UNICODE | CONVENIENT_DEPTH));
        }
        return PropBase::OpenObject(tag, iid, options, flags);
    }

    void RequireEntries() const
    {
        if (m_kind == AddressKind::Root)
        {
            throw Error(MAPI_E_NO_SUPPORT, "the root of the address book has no entries, only containers");
        }
    }
    void RequireDirectory() const
    {
        RequireEntries();
        if (m_kind == AddressKind::Contacts)
        {
            throw Error(MAPI_E_NO_SUPPORT, "contacts are read-only here: change the messages of the contacts folder");
        }
        RequireWrite();
    }

    IMAPITable* Contents(ULONG flags)
    {
        RequireFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS);
        RequireEntries();
        TableOptions options;
        options.unicode = (flags & MAPI_UNICODE) != 0;
        return CreateTable(MakeContainerRows(Store(), m_kind), options).Detach();
    }

    IMAPITable* Hierarchy(ULONG flags)
    {
        RequireFlags(flags, MAPI_UNICODE | CONVENIENT_DEPTH | MAPI_DEFERRED_ERRORS);
        std::vector<PropertySet> rows;
        if (m_kind == AddressKind::Root)
        {
            for (const AddressKind each : Containers)
            {
                rows.push_back(ContainerRow(Store(), each, !File().IsReadOnly()));
            }
        }
        return NewMemoryTable(std::move(rows), ContainerTags(), flags & MAPI_UNICODE);
    }

    void Copy(const SBinary& id, ULONG flags)
    {
        NewEntry made;
        made.flags = flags;
        const Ref<IMAPIProp> entry = Ref<IMAPIProp>::Adopt(CreateAddressEntry(Store(), made, id.cb, id.lpb));
        Check(entry->SaveChanges(0), "the copy of an entry cannot be saved");
    }

    const AddressKind m_kind;
    const PropertySet m_row;
    const PropertySet m_none;
};

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

Ref<IABContainer> NewAddressContainer(const StorePtr& store, AddressKind kind, Access access)
{
    return Ref<IABContainer>::Adopt(new AddressContainer(store, kind, access));
}

} // namespace zebstore
