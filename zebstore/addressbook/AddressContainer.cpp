#include "zebstore/addressbook/AddressContainer.h"

#include "zebstore/addressbook/AddressResolve.h"
#include "zebstore/addressbook/ContainerRows.h"
#include "zebstore/addressbook/ListMembers.h"
#include "zebstore/objects/MemoryTable.h"
#include "zebstore/objects/PropObject.h"
#include "zebstore/tables/Table.h"

namespace zebstore
{
namespace
{

/// Threads: any.
class AddressContainer final : public PropObject<IABContainer>
{
public:
    AddressContainer(const StorePtr& store, AddressKind kind, Access access, const AddressFactory& factory)
        : PropObject(store, access)
        , m_kind(kind)
        , m_row(ContainerRow(store, kind, access == Access::Write))
        , m_factory(factory)
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
            *object = m_factory.Open(Store(), size, id, iid, flags, most, objectType);
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
            *entry = m_factory.Create(Store(), made, size, id);
        });
    }

    HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST entries, ULONG_PTR, LPMAPIPROGRESS, ULONG flags) override
    {
        return Guarded("IABContainer::CopyEntries", [&]
        {
            // CREATE_CHECK_DUP_STRICT has the value of AB_NO_DIALOG, so a copy cannot request it.
            RequireFlags(flags, AB_NO_DIALOG | CREATE_CHECK_DUP_LOOSE | CREATE_REPLACE);
            RequireDirectory();
            Require(entries != nullptr && (entries->lpbin != nullptr || entries->cValues == 0),
                    "the list of entries is null");
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
            Require(entries != nullptr && (entries->lpbin != nullptr || entries->cValues == 0),
                    "the list of entries is null");
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
        const Ref<IMAPIProp> entry = Ref<IMAPIProp>::Adopt(m_factory.Create(Store(), made, id.cb, id.lpb));
        Check(entry->SaveChanges(0), "the copy of an entry cannot be saved");
    }

    const AddressKind m_kind;
    const PropertySet m_row;
    const PropertySet m_none;
    const AddressFactory& m_factory;
};

} // namespace

Ref<IABContainer> NewAddressContainer(const StorePtr& store, AddressKind kind, Access access,
                                      const AddressFactory& factory)
{
    return Ref<IABContainer>::Adopt(new AddressContainer(store, kind, access, factory));
}

} // namespace zebstore
