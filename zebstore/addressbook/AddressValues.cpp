#include "zebstore/addressbook/AddressValues.h"

#include "platform/tags.h"
#include "zebstore/storage/Text.h"

#include <algorithm>
#include <cctype>

namespace zebstore
{
namespace
{

std::string UpperAscii(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char each) { return static_cast<char>(each < 0x80 ? std::toupper(each) : each); });
    return text;
}

class ComputedByStore final : public ComputedAddress
{
public:
    explicit ComputedByStore(StorePtr store)
        : m_store(std::move(store))
    {
    }

    bool OfEntry(ULONG tag, AddressId address, ULONG type, PropertySet& out) const override
    {
        if (!HasId(ComputedEntryTags(), tag))
        {
            return false;
        }
        AddressName name;
        name.kind = type == MAPI_DISTLIST ? AddressKind::List : AddressKind::User;
        name.key = address;
        return ComputeEntry(*m_store, name, tag, out);
    }

    const std::vector<ULONG>& Tags() const override { return ComputedEntryTags(); }

private:
    const StorePtr m_store;
};

} // namespace

ULONG ObjectTypeOf(AddressKind kind)
{
    switch (kind)
    {
    case AddressKind::User:
    case AddressKind::NewUser:
    case AddressKind::Contact:
    case AddressKind::OneOff:
        return MAPI_MAILUSER;
    case AddressKind::List:
    case AddressKind::NewList:
    case AddressKind::ContactList:
        return MAPI_DISTLIST;
    default:
        return MAPI_ABCONT;
    }
}

ULONG DisplayTypeOf(AddressKind kind)
{
    switch (kind)
    {
    case AddressKind::List:
    case AddressKind::NewList:
        return DT_DISTLIST;
    case AddressKind::ContactList:
        return DT_PRIVATE_DISTLIST;
    case AddressKind::Root:
        return DT_NOT_SPECIFIC;
    case AddressKind::Directory:
        return DT_GLOBAL;
    case AddressKind::Contacts:
        return DT_LOCAL;
    default:
        return DT_MAILUSER;
    }
}

const std::vector<ULONG>& ComputedEntryTags()
{
    static const std::vector<ULONG> tags = {PR_ENTRYID,      PR_RECORD_KEY,   PR_OBJECT_TYPE,
                                            PR_DISPLAY_TYPE, PR_INSTANCE_KEY, PR_MAPPING_SIGNATURE};
    return tags;
}

bool ComputeEntry(const StoreContext& store, const AddressName& name, ULONG tag, PropertySet& out)
{
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_ENTRYID):
    case PROP_ID(PR_RECORD_KEY):
    case PROP_ID(PR_INSTANCE_KEY):
    {
        const AddressEntryId id = MakeAddressId(store.Uid(), name);
        out.SetBinary(CHANGE_PROP_TYPE(tag, PT_BINARY), id.data(), id.size());
        return true;
    }
    case PROP_ID(PR_OBJECT_TYPE):
        out.SetLong(PR_OBJECT_TYPE, static_cast<LONG>(ObjectTypeOf(name.kind)));
        return true;
    case PROP_ID(PR_DISPLAY_TYPE):
        out.SetLong(PR_DISPLAY_TYPE, static_cast<LONG>(DisplayTypeOf(name.kind)));
        return true;
    case PROP_ID(PR_MAPPING_SIGNATURE):
        out.SetBinary(PR_MAPPING_SIGNATURE, store.Uid().ab, sizeof(MAPIUID));
        return true;
    default:
        return false;
    }
}

bool ComputeFromAddress(const std::string& type, const std::string& address, ULONG tag, PropertySet& out)
{
    switch (PROP_ID(tag))
    {
    case PROP_ID(PR_ADDRTYPE):
        out.SetText(PR_ADDRTYPE_W, type);
        return true;
    case PROP_ID(PR_EMAIL_ADDRESS):
        out.SetText(PR_EMAIL_ADDRESS_W, address);
        return true;
    case PROP_ID(PR_SMTP_ADDRESS_W):
        if (UpperAscii(type) != "SMTP")
        {
            return false;
        }
        out.SetText(PR_SMTP_ADDRESS_W, address);
        return true;
    case PROP_ID(PR_SEARCH_KEY):
    {
        const std::string key = UpperAscii(type + ":" + address);
        out.SetBinary(PR_SEARCH_KEY, key.c_str(), key.size() + 1);
        return true;
    }
    default:
        return false;
    }
}

std::shared_ptr<const ComputedAddress> MakeComputedAddress(const StorePtr& store)
{
    return std::make_shared<ComputedByStore>(store);
}

} // namespace zebstore
