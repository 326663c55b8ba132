// Mail users and distribution lists.
#pragma once

#include "zebstore/addressbook/AddressBook.h"
#include "zebstore/addressbook/Contacts.h"

namespace zebstore
{

/// The properties of one entry from any source: the global address list, a contact's message, or the identifier itself.
/// Changes to an entry of the global address list stay here until it is saved; other entries are read-only. Threads:
/// the object's lock.
class EntryData
{
public:
    /// Loads the entry at once. @throws Error MAPI_E_NOT_FOUND
    EntryData(const StorePtr& store, AddressName name, const NewEntry& entry);

    const AddressName& Name() const { return m_name; }
    const PropertySet& Stored();
    const std::vector<ULONG>& ComputedTags() const;
    bool Compute(ULONG tag, PropertySet& out);
    void Edit(const std::function<void(PropertySet&)>& change);
    /// Stores the changes; a new entry is always stored.
    /// @throws Error MAPI_E_MISSING_REQUIRED_COLUMN without a name, MAPI_E_COLLISION, MAPI_E_OBJECT_CHANGED
    void Save(bool force);
    /// The content of a new entry.
    void Fill(PropertySet properties);

private:
    bool IsOfDirectory() const { return m_name.kind == AddressKind::User || m_name.kind == AddressKind::List; }
    void Load();
    void Complete();
    bool IsDuplicate(AddressId other);
    AddressId Duplicate();

    const StorePtr m_store;
    const AddressStorage m_addresses;
    AddressName m_name;
    NewEntry m_new;
    ContactTags m_tags;
    PropertySet m_properties;
    std::int64_t m_change = 0;
    bool m_loaded = false;
    bool m_dirty = false;
};

/// The base of mail users and distribution lists. Threads: any.
template <typename Interface>
class EntryObject : public PropObject<Interface>
{
public:
    EntryObject(const StorePtr& store, const AddressName& name, Access access, const NewEntry& entry)
        : PropObject<Interface>(store, access)
        , m_entry(store, name, entry)
    {
    }

    EntryData& Entry() { return m_entry; }

protected:
    const PropertySet& Stored() override { return m_entry.Stored(); }
    bool Compute(ULONG tag, PropertySet& out) override { return m_entry.Compute(tag, out); }
    const std::vector<ULONG>& ComputedTags() override { return m_entry.ComputedTags(); }
    void Edit(const std::function<void(PropertySet&)>& change) override { m_entry.Edit(change); }
    void Save(ULONG flags) override
    {
        this->RequireWrite();
        m_entry.Save((flags & FORCE_SAVE) != 0);
        if (!(flags & KEEP_OPEN_READWRITE))
        {
            this->LowerAccess();
        }
    }

private:
    EntryData m_entry;
};

class MailUser final : public EntryObject<IMailUser>
{
public:
    using EntryObject::EntryObject;

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIProp, &IID_IMailUser}); }
};

class DistList final : public EntryObject<IDistList>
{
public:
    using EntryObject::EntryObject;

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
};

} // namespace zebstore
