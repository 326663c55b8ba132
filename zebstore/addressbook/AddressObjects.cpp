#include "zebstore/addressbook/AddressObjects.h"

#include "zebstore/addressbook/AddressContainer.h"
#include "zebstore/addressbook/AddressId.h"
#include "zebstore/addressbook/AddressValues.h"
#include "zebstore/addressbook/DistList.h"
#include "zebstore/addressbook/MailUser.h"
#include "zebstore/objects/Interfaces.h"
#include "zebstore/objects/OpenFlags.h"

namespace zebstore
{
namespace
{

constexpr ULONG OpenFlags = OpenEntryFlags | ULONG(0x80) /* MAPI_GAL_ONLY */;

Access AccessOf(AddressKind kind, ULONG flags, Access most)
{
    const bool changes = kind == AddressKind::Directory || kind == AddressKind::User || kind == AddressKind::List;
    if (!changes && (flags & MAPI_MODIFY))
    {
        throw Error(MAPI_E_NO_ACCESS, "this part of the address book is read-only");
    }
    return AccessFor(flags, changes ? most : Access::Read);
}

const AddressFactory& Factory();

/// The properties of an entry that copies take over: all stored properties, and its address.
PropertySet ContentOfEntry(const StorePtr& store, const AddressName& name)
{
    EntryData entry(store, name, {});
    PropertySet content = entry.Stored();
    for (const ULONG tag : {PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W})
    {
        entry.Compute(tag, content);
    }
    for (const ULONG tag : ComputedEntryTags())
    {
        content.Remove(tag);
    }
    return content;
}

/// IMailUser or IDistList over an entry. @throws Error MAPI_E_NOT_FOUND
IMAPIProp* NewAddressEntry(const StorePtr& store, const AddressName& name, Access access, const NewEntry& entry)
{
    if (ObjectTypeOf(name.kind) == MAPI_DISTLIST)
    {
        return new DistList(store, name, access, entry, Factory());
    }
    return new MailUser(store, name, access, entry);
}

IMAPIProp* CreateEntry(const StorePtr& store, const NewEntry& entry, ULONG size, const void* id)
{
    AddressName name = ParseAddressId(store->Uid(), id, size);
    if (ObjectTypeOf(name.kind) == MAPI_ABCONT)
    {
        throw Error(MAPI_E_INVALID_ENTRYID, "a container cannot become an entry of a list");
    }
    if (name.kind != AddressKind::NewUser && name.kind != AddressKind::NewList && entry.list != 0)
    {
        return NewAddressEntry(store, name, Access::Write, entry);
    }
    const bool isTemplate = name.kind == AddressKind::NewUser || name.kind == AddressKind::NewList;
    PropertySet content;
    if (!isTemplate)
    {
        content = ContentOfEntry(store, name);
    }
    AddressName made;
    made.kind = ObjectTypeOf(name.kind) == MAPI_DISTLIST ? AddressKind::List : AddressKind::User;
    if (made.kind == AddressKind::List)
    {
        const Ref<DistList> list = Ref<DistList>::Adopt(new DistList(store, made, Access::Write, entry, Factory()));
        list->Entry().Fill(std::move(content));
        return Ref<DistList>(list).Detach();
    }
    const Ref<MailUser> user = Ref<MailUser>::Adopt(new MailUser(store, made, Access::Write, entry));
    user->Entry().Fill(std::move(content));
    return Ref<MailUser>(user).Detach();
}

class Objects final : public AddressFactory
{
public:
    IUnknown* Open(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                   ULONG* objectType) const override
    {
        return OpenAddress(store, size, id, iid, flags, most, objectType);
    }

    IMAPIProp* Create(const StorePtr& store, const NewEntry& entry, ULONG size, const void* id) const override
    {
        return CreateEntry(store, entry, size, id);
    }
};

const AddressFactory& Factory()
{
    static const Objects objects;
    return objects;
}

} // namespace

IUnknown* OpenAddress(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                      ULONG* objectType)
{
    RequireFlags(flags, OpenFlags);
    const AddressName name = ParseAddressId(store->Uid(), id, size);
    if (name.kind == AddressKind::NewUser || name.kind == AddressKind::NewList)
    {
        throw Error(MAPI_E_INVALID_ENTRYID, "a template for new entries cannot be opened");
    }
    const Access access = AccessOf(name.kind, flags, most);
    const ULONG type = ObjectTypeOf(name.kind);
    IUnknown* answer = nullptr;
    if (type == MAPI_ABCONT)
    {
        answer = Answer(NewAddressContainer(store, name.kind, access, Factory()).Get(), iid);
    }
    else
    {
        answer = Answer(Ref<IMAPIProp>::Adopt(NewAddressEntry(store, name, access, {})).Get(), iid);
    }
    if (objectType != nullptr)
    {
        *objectType = type;
    }
    return answer;
}

} // namespace zebstore
