#include "zebstore/addressbook/EntryData.h"

#include "platform/tags.h"
#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/addressbook/ListMembers.h"

#include <algorithm>

namespace zebstore
{
namespace
{

const std::vector<ULONG>& NoTags()
{
    static const std::vector<ULONG> none;
    return none;
}

PropertySet OneOffProperties(const StoreContext& store, const AddressName& name)
{
    PropertySet properties;
    for (const ULONG tag : ComputedEntryTags())
    {
        ComputeEntry(store, name, tag, properties);
    }
    for (const ULONG tag : {PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W, PR_SEARCH_KEY})
    {
        ComputeFromAddress(name.type, name.address, tag, properties);
    }
    properties.SetText(PR_DISPLAY_NAME_W, name.displayName);
    properties.SetBool(PR_SEND_RICH_INFO, name.richInfo);
    return properties;
}

} // namespace

EntryData::EntryData(const StorePtr& store, AddressName name, const NewEntry& entry)
    : m_store(store)
    , m_addresses(store->SharedFile())
    , m_name(std::move(name))
    , m_new(entry)
{
    if (m_name.key == 0 && IsOfDirectory())
    {
        m_loaded = true;
        m_dirty = true;
    }
    Load();
}

void EntryData::Load()
{
    if (m_loaded)
    {
        return;
    }
    if (m_name.kind == AddressKind::OneOff)
    {
        m_properties = OneOffProperties(*m_store, m_name);
    }
    else if (IsOfDirectory())
    {
        StoredAddress stored = m_addresses.Load(m_name.key);
        if (stored.type != ObjectTypeOf(m_name.kind))
        {
            throw Error(MAPI_E_INVALID_ENTRYID,
                        "the entry identifier has the wrong kind: a user for a list, or a list for a user");
        }
        m_properties = std::move(stored.properties);
        m_change = stored.change;
    }
    else
    {
        m_properties = m_store->File().Messages().Load(m_name.key).properties;
        m_tags = ContactTagsOf(m_store->File());
        const std::vector<AddressName> contacts = ContactsIn(m_tags, m_name.key, m_properties);
        if (std::none_of(contacts.begin(), contacts.end(), [&](const AddressName& each)
        { return each.kind == m_name.kind && each.index == m_name.index; }))
        {
            throw Error(MAPI_E_NOT_FOUND, "the contact no longer has this address");
        }
    }
    m_loaded = true;
}

void EntryData::Fill(PropertySet properties)
{
    m_properties = std::move(properties);
}

const PropertySet& EntryData::Stored()
{
    Load();
    return m_properties;
}

const std::vector<ULONG>& EntryData::ComputedTags() const
{
    if (m_name.kind == AddressKind::OneOff)
    {
        return NoTags();
    }
    return IsOfDirectory() ? ComputedEntryTags() : ComputedContactTags();
}

bool EntryData::Compute(ULONG tag, PropertySet& out)
{
    if (!HasId(ComputedTags(), tag))
    {
        return false;
    }
    if (!IsOfDirectory())
    {
        return ComputeContact(*m_store, m_tags, m_name, m_properties, tag, out);
    }
    // An entry has an identifier from its first save.
    if (m_name.key == 0 && HasId({PR_ENTRYID, PR_RECORD_KEY, PR_INSTANCE_KEY}, tag))
    {
        return false;
    }
    return ComputeEntry(*m_store, m_name, tag, out);
}

void EntryData::Edit(const std::function<void(PropertySet&)>& change)
{
    Load();
    m_dirty = true;
    change(m_properties);
}

void EntryData::Complete()
{
    if (m_properties.Text(PR_DISPLAY_NAME_W).empty())
    {
        throw Error(MAPI_E_MISSING_REQUIRED_COLUMN,
                    "an entry of the address book cannot be saved: it has no display name");
    }
    const std::string address = m_properties.Text(PR_EMAIL_ADDRESS_W);
    if (address.empty())
    {
        return;
    }
    if (m_properties.Text(PR_ADDRTYPE_W).empty())
    {
        m_properties.SetText(PR_ADDRTYPE_W, "SMTP");
    }
    const std::string type = m_properties.Text(PR_ADDRTYPE_W);
    for (const ULONG tag : {PR_SMTP_ADDRESS_W, PR_SEARCH_KEY})
    {
        ComputeFromAddress(type, address, tag, m_properties);
    }
}

bool EntryData::IsDuplicate(AddressId other)
{
    const StoredAddress stored = m_addresses.Load(other);
    if (stored.type != ObjectTypeOf(m_name.kind))
    {
        return false;
    }
    return (m_new.flags & CREATE_CHECK_DUP_STRICT) == 0 ||
           stored.properties.Binary(PR_SEARCH_KEY) == m_properties.Binary(PR_SEARCH_KEY);
}

AddressId EntryData::Duplicate()
{
    if (!(m_new.flags & (CREATE_CHECK_DUP_STRICT | CREATE_CHECK_DUP_LOOSE)))
    {
        return 0;
    }
    for (const AddressId each : m_addresses.Named(m_properties.Text(PR_DISPLAY_NAME_W)))
    {
        if (IsDuplicate(each))
        {
            return each;
        }
    }
    return 0;
}

void EntryData::Save(bool force)
{
    const std::lock_guard hold(m_store->File().Lock());
    if (m_dirty)
    {
        Load();
        Complete();
        if (m_name.key != 0)
        {
            m_addresses.Save(m_name.key, m_properties, force ? 0 : m_change);
        }
        else if (const AddressId other = Duplicate())
        {
            if (!(m_new.flags & CREATE_REPLACE))
            {
                throw Error(MAPI_E_COLLISION,
                            "the address book has an entry '" + m_properties.Text(PR_DISPLAY_NAME_W) + "' already");
            }
            m_addresses.Save(other, m_properties, 0);
            m_name.key = other;
        }
        else
        {
            m_name.key = m_addresses.Create(ObjectTypeOf(m_name.kind), m_properties, m_new.list);
            m_new.list = 0;
        }
        m_dirty = false;
        // Stored properties are read again on the next request; large values then refer to the stored data.
        if (IsOfDirectory())
        {
            m_properties.Clear();
            m_loaded = false;
        }
    }
    if (m_new.list == 0)
    {
        return;
    }
    const AddressEntryId id = MakeAddressId(m_store->Uid(), m_name);
    m_addresses.AddMembers(m_new.list,
                           {MemberOf(m_store, SBinary{static_cast<ULONG>(id.size()), const_cast<BYTE*>(id.data())})});
    m_new.list = 0;
}

} // namespace zebstore
