// The base of mail users and distribution lists.
#pragma once

#include "zebstore/addressbook/EntryData.h"
#include "zebstore/objects/PropObject.h"

namespace zebstore
{

/// The base of mail users and distribution lists. Threads: any.
template <class Interface>
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

} // namespace zebstore
