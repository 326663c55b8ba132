#include "zebstore/addressbook/AddressId.h"

#include "zebstore/base/Error.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/Text.h"

#include <algorithm>
#include <cstring>

namespace zebstore
{

const MAPIUID RootProvider = ProviderUid;
const MAPIUID DirectoryProvider = {
    {0xDC, 0xA7, 0x40, 0xC8, 0xC0, 0x42, 0x10, 0x1A, 0xB4, 0xB9, 0x08, 0x00, 0x2B, 0x2F, 0xE1, 0x82}};
const MAPIUID ContactProvider = {
    {0xFE, 0x42, 0xAA, 0x0A, 0x18, 0xC7, 0x1A, 0x10, 0xE8, 0x85, 0x0B, 0x65, 0x1C, 0x24, 0x00, 0x00}};
const MAPIUID OneOffProvider = {
    {0x81, 0x2B, 0x1F, 0xA4, 0xBE, 0xA3, 0x10, 0x19, 0x9D, 0x6E, 0x00, 0xDD, 0x01, 0x0F, 0x54, 0x02}};

namespace
{

constexpr size_t FlagsSize = 4;
constexpr size_t HeaderSize = FlagsSize + sizeof(MAPIUID);
constexpr ULONG DirectoryVersion = 1;
constexpr ULONG ContactVersion = 3;
constexpr size_t ContactsPadding = 8;
constexpr size_t ContactHeaderSize = HeaderSize + 4 * sizeof(ULONG);

struct KindNumber
{
    AddressKind kind;
    ULONG number;
};
constexpr KindNumber DirectoryKinds[] = {{AddressKind::User, 0},
                                         {AddressKind::List, 1},
                                         {AddressKind::Directory, 0x100},
                                         {AddressKind::NewUser, 0x10000},
                                         {AddressKind::NewList, 0x10001}};
constexpr KindNumber ContactKinds[] = {
    {AddressKind::Contacts, 3}, {AddressKind::Contact, 4}, {AddressKind::ContactList, 5}};

Error Invalid(const char* why)
{
    return Error(MAPI_E_INVALID_ENTRYID, std::string("the address book's entry identifier ") + why);
}

template <size_t N>
const KindNumber* OfKind(const KindNumber (&kinds)[N], AddressKind kind)
{
    const auto* found = std::find_if(kinds, kinds + N, [&](const auto& each) { return each.kind == kind; });
    return found == kinds + N ? nullptr : found;
}

template <size_t N>
AddressKind KindOf(const KindNumber (&kinds)[N], ULONG number)
{
    for (const KindNumber& each : kinds)
    {
        if (each.number == number)
        {
            return each.kind;
        }
    }
    throw Invalid("is damaged");
}

void Append(AddressEntryId& id, const void* bytes, size_t size)
{
    const BYTE* begin = static_cast<const BYTE*>(bytes);
    id.insert(id.end(), begin, begin + size);
}

void AppendNumber(AddressEntryId& id, ULONG number)
{
    Append(id, &number, sizeof(number));
}

AddressEntryId Header(const MAPIUID& provider)
{
    AddressEntryId id(FlagsSize);
    Append(id, provider.ab, sizeof(provider.ab));
    return id;
}

ULONG NumberAt(const BYTE* bytes)
{
    ULONG number = 0;
    std::memcpy(&number, bytes, sizeof(number));
    return number;
}

bool IsOf(const MAPIUID& provider, const BYTE* id)
{
    return std::memcmp(id + FlagsSize, provider.ab, sizeof(provider.ab)) == 0;
}

// The key and its check bytes are those of the store's own identifiers.
constexpr size_t KeyAt = HeaderSize + 2;
constexpr size_t KeySize = FolderEntryIdSize - KeyAt;

AddressEntryId DirectoryId(const MAPIUID& store, const AddressName& name, ULONG number)
{
    AddressEntryId id = Header(DirectoryProvider);
    AppendNumber(id, DirectoryVersion);
    AppendNumber(id, number);
    Append(id, store.ab, sizeof(store.ab));
    const FolderEntryId key = MakeFolderEntryId(store, name.key);
    Append(id, key.data() + KeyAt, KeySize);
    return id;
}

AddressEntryId ContactId(const MAPIUID& store, const AddressName& name, ULONG number)
{
    AddressEntryId nested;
    if (name.kind == AddressKind::Contacts)
    {
        const FolderEntryId folder = MakeFolderEntryId(store, name.key);
        nested.assign(folder.begin(), folder.end());
    }
    else
    {
        const MessageEntryId message = MakeMessageEntryId(store, name.key);
        nested.assign(message.begin(), message.end());
    }
    AddressEntryId id = Header(ContactProvider);
    AppendNumber(id, ContactVersion);
    AppendNumber(id, number);
    AppendNumber(id, name.index);
    AppendNumber(id, static_cast<ULONG>(nested.size()));
    if (name.kind == AddressKind::Contacts)
    {
        id.insert(id.end(), ContactsPadding, 0);
    }
    Append(id, nested.data(), nested.size());
    return id;
}

AddressName ParseDirectory(const MAPIUID& store, const BYTE* id, size_t size)
{
    constexpr size_t StoreAt = HeaderSize + 2 * sizeof(ULONG);
    constexpr size_t KeyAt = StoreAt + sizeof(MAPIUID);
    if (size != KeyAt + KeySize)
    {
        throw Invalid("is truncated or too long");
    }
    if (std::memcmp(id + StoreAt, store.ab, sizeof(store.ab)) != 0)
    {
        throw Invalid("belongs to another address book");
    }
    AddressName name;
    name.kind = KindOf(DirectoryKinds, NumberAt(id + HeaderSize + sizeof(ULONG)));
    std::memcpy(&name.key, id + KeyAt, sizeof(name.key));
    const AddressEntryId whole = MakeAddressId(store, name);
    if (!std::equal(whole.begin(), whole.end(), id))
    {
        throw Invalid("is damaged");
    }
    return name;
}

AddressName ParseContact(const MAPIUID& store, const BYTE* id, size_t size)
{
    if (size < ContactHeaderSize)
    {
        throw Invalid("is truncated");
    }
    AddressName name;
    name.kind = KindOf(ContactKinds, NumberAt(id + HeaderSize + sizeof(ULONG)));
    name.index = NumberAt(id + HeaderSize + 2 * sizeof(ULONG));
    const bool folder = name.kind == AddressKind::Contacts;
    const size_t nestedAt = ContactHeaderSize + (folder ? ContactsPadding : 0);
    const size_t nestedSize = folder ? FolderEntryIdSize : MessageEntryIdSize;
    if (size < nestedAt + nestedSize)
    {
        throw Invalid(folder ? "is truncated: the identifier of the contacts folder in it is not complete"
                             : "is truncated: the identifier of the contact's message in it is not complete");
    }
    name.key = ParseItemId(store, id + nestedAt, size - nestedAt).key;
    const AddressEntryId whole = MakeAddressId(store, name);
    if (whole.size() != size || !std::equal(whole.begin(), whole.end(), id))
    {
        throw Invalid("is damaged");
    }
    return name;
}

// The text up to its zero; `at` is advanced past the zero.
template <class Character>
std::basic_string<Character> TextAt(const BYTE* id, size_t size, size_t& at)
{
    std::basic_string<Character> text;
    for (; at + sizeof(Character) <= size; at += sizeof(Character))
    {
        Character each{};
        std::memcpy(&each, id + at, sizeof(each));
        if (each == 0)
        {
            at += sizeof(Character);
            return text;
        }
        text += each;
    }
    throw Invalid("is truncated: a text in it has no terminating zero");
}

std::string OneOffText(const BYTE* id, size_t size, size_t& at, bool unicode)
{
    if (!unicode)
    {
        return StoredFromNarrow(TextAt<char>(id, size, at));
    }
    const auto wide = TextAt<WCHAR>(id, size, at);
    return StoredFromWide(wide.c_str(), wide.size());
}

AddressName ParseOneOff(const BYTE* id, size_t size)
{
    size_t at = HeaderSize + sizeof(ULONG);
    if (size < at)
    {
        throw Invalid("is truncated");
    }
    const ULONG flags = NumberAt(id + HeaderSize);
    const bool unicode = (flags & MAPI_UNICODE) != 0;
    AddressName name;
    name.kind = AddressKind::OneOff;
    name.richInfo = (flags & MAPI_SEND_NO_RICH_INFO) == 0;
    name.displayName = OneOffText(id, size, at, unicode);
    name.type = OneOffText(id, size, at, unicode);
    name.address = OneOffText(id, size, at, unicode);
    return name;
}

void AppendText(AddressEntryId& id, const std::string& text, bool unicode)
{
    if (unicode)
    {
        const zeb::platform::WideString wide = WideFromStored(text);
        Append(id, wide.c_str(), (wide.size() + 1) * sizeof(WCHAR));
    }
    else
    {
        const std::string narrow = NarrowFromStored(text);
        Append(id, narrow.c_str(), narrow.size() + 1);
    }
}

} // namespace

AddressEntryId MakeAddressId(const MAPIUID& store, const AddressName& name)
{
    if (const KindNumber* directory = OfKind(DirectoryKinds, name.kind))
    {
        return DirectoryId(store, name, directory->number);
    }
    if (const KindNumber* contact = OfKind(ContactKinds, name.kind))
    {
        return ContactId(store, name, contact->number);
    }
    return name.kind == AddressKind::OneOff ? MakeOneOffId(name, true) : Header(RootProvider);
}

AddressEntryId MakeOneOffId(const AddressName& name, bool unicode)
{
    AddressEntryId id = Header(OneOffProvider);
    AppendNumber(id, (unicode ? MAPI_UNICODE : 0) | (name.richInfo ? 0 : MAPI_SEND_NO_RICH_INFO));
    for (const std::string& text : {name.displayName, name.type, name.address})
    {
        AppendText(id, text, unicode);
    }
    return id;
}

bool IsAddressId(const void* bytes, size_t size)
{
    if (size == 0)
    {
        return true;
    }
    const BYTE* id = static_cast<const BYTE*>(bytes);
    return id != nullptr && size >= HeaderSize &&
           (IsOf(RootProvider, id) || IsOf(DirectoryProvider, id) || IsOf(ContactProvider, id) ||
            IsOf(OneOffProvider, id));
}

AddressName ParseAddressId(const MAPIUID& store, const void* bytes, size_t size)
{
    if (size == 0)
    {
        return {};
    }
    if (!IsAddressId(bytes, size))
    {
        throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier does not belong to the address book");
    }
    const BYTE* id = static_cast<const BYTE*>(bytes);
    if (IsOf(DirectoryProvider, id))
    {
        return ParseDirectory(store, id, size);
    }
    if (IsOf(ContactProvider, id))
    {
        return ParseContact(store, id, size);
    }
    if (IsOf(OneOffProvider, id))
    {
        return ParseOneOff(id, size);
    }
    if (size != HeaderSize)
    {
        throw Invalid("is damaged");
    }
    return {};
}

} // namespace zebstore
