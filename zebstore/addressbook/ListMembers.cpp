#include "zebstore/addressbook/ListMembers.h"

#include "zebstore/addressbook/Contacts.h"
#include "zebstore/base/Error.h"

namespace zebstore
{

ListMember MemberOf(const StorePtr& store, const SBinary& id)
{
    if (!id.cb || id.lpb == nullptr)
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

} // namespace zebstore
