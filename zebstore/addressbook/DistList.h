// IDistList.
#pragma once

#include "zebstore/addressbook/AddressFactory.h"
#include "zebstore/addressbook/EntryObject.h"

namespace zebstore
{

class DistList final : public EntryObject<IDistList>
{
public:
    /// @param factory opens and creates the members; it must outlive the list
    DistList(const StorePtr& store, const AddressName& name, Access access, const NewEntry& entry,
             const AddressFactory& factory)
        : EntryObject(store, name, access, entry)
        , m_factory(factory)
    {
    }

    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override;
    HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override;
    HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override;
    /// For an entry: the object adds it to the list when it is saved. For a template: a new entry of the global address
    /// list and of this list.
    HRESULT STDMETHODCALLTYPE CreateEntry(ULONG size, LPENTRYID id, ULONG flags, LPMAPIPROP* entry) override;
    /// Adds entries to the list.
    HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST entries, ULONG_PTR window, LPMAPIPROGRESS progress,
                                          ULONG flags) override;
    /// Removes entries from the list; the entries themselves stay.
    HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST entries, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray columns, ULONG flags, LPADRLIST list,
                                           LPFlagList found) override;

private:
    bool Answers(REFIID iid) const override
    {
        return IsOneOf(iid, {&IID_IMAPIProp, &IID_IMAPIContainer, &IID_IDistList});
    }
    IUnknown* OpenObject(ULONG tag, const IID& iid, ULONG options, ULONG flags) override;
    std::vector<ULONG> ObjectTags() override { return {PR_CONTAINER_CONTENTS}; }
    IMAPITable* Contents(ULONG flags);
    /// The list's number, for changes. @throws Error MAPI_E_NO_ACCESS, MAPI_E_CALL_FAILED before the first save
    AddressId ListToChange();

    const AddressFactory& m_factory;
};

} // namespace zebstore
