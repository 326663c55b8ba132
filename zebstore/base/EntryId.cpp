#include "zebstore/base/EntryId.h"

#include "zebstore/base/Error.h"

#include <algorithm>
#include <cstring>

namespace zebstore
{
namespace
{

constexpr size_t FlagsSize = 4;
constexpr size_t HeaderSize = FlagsSize + sizeof(MAPIUID);
constexpr BYTE FolderWord = 2;
constexpr BYTE MessageWord = 3;
constexpr BYTE StoreWrap[16] = {0x38, 0xA1, 0xBB, 0x10, 0x05, 0xE5, 0x10, 0x1A,
                                0xA1, 0xBB, 0x08, 0x00, 0x2B, 0x2A, 0x56, 0xC2};

// FNV-1a; it guards against bytes that were never an identifier, not against malice.
std::uint64_t CheckBytes(const MAPIUID& store, BYTE word, std::int64_t key)
{
    std::uint64_t hash = 0xCBF29CE484222325;
    const auto add = [&](BYTE byte) { hash = (hash ^ byte) * 0x100000001B3; };
    for (BYTE each : store.ab)
    {
        add(each);
    }
    add(word);
    for (int i = 0; i < 8; ++i)
    {
        add(static_cast<BYTE>(static_cast<std::uint64_t>(key) >> (8 * i)));
    }
    return hash;
}

void PutNumber(BYTE* place, std::uint64_t number)
{
    for (int i = 0; i < 8; ++i)
    {
        place[i] = static_cast<BYTE>(number >> (8 * i));
    }
}

std::uint64_t NumberAt(const BYTE* place)
{
    std::uint64_t number = 0;
    for (int i = 7; i >= 0; --i)
    {
        number = number << 8 | place[i];
    }
    return number;
}

void FillItemId(BYTE* place, const MAPIUID& store, BYTE word, std::int64_t key)
{
    std::memcpy(place + FlagsSize, store.ab, sizeof(store.ab));
    place[HeaderSize] = word;
    PutNumber(place + HeaderSize + 2, static_cast<std::uint64_t>(key));
    PutNumber(place + HeaderSize + 10, CheckBytes(store, word, key));
}

Error Invalid(const char* why)
{
    return Error(MAPI_E_INVALID_ENTRYID, std::string("the entry identifier ") + why);
}

bool AllZero(const BYTE* from, const BYTE* to)
{
    return std::all_of(from, to, [](BYTE each) { return each == 0; });
}

} // namespace

FolderEntryId MakeFolderEntryId(const MAPIUID& store, std::int64_t key)
{
    FolderEntryId id{};
    FillItemId(id.data(), store, FolderWord, key);
    return id;
}

MessageEntryId MakeMessageEntryId(const MAPIUID& store, std::int64_t key)
{
    MessageEntryId id{};
    FillItemId(id.data(), store, MessageWord, key);
    return id;
}

ItemId ParseItemId(const MAPIUID& store, const void* bytes, size_t size)
{
    const BYTE* id = static_cast<const BYTE*>(bytes);
    if (id == nullptr || (size != FolderEntryIdSize && size != MessageEntryIdSize))
    {
        throw Invalid("has a length that no folder's or message's has");
    }
    if (!AllZero(id, id + FlagsSize) || std::memcmp(id + FlagsSize, store.ab, sizeof(store.ab)) != 0)
    {
        throw Invalid("is not one of this store");
    }
    const BYTE word = size == FolderEntryIdSize ? FolderWord : MessageWord;
    const std::int64_t key = static_cast<std::int64_t>(NumberAt(id + HeaderSize + 2));
    if (id[HeaderSize] != word || id[HeaderSize + 1] != 0 ||
        NumberAt(id + HeaderSize + 10) != CheckBytes(store, word, key) || !AllZero(id + FolderEntryIdSize, id + size))
    {
        throw Invalid("is damaged");
    }
    return {static_cast<ULONG>(word == FolderWord ? MAPI_FOLDER : MAPI_MESSAGE), key};
}

std::vector<BYTE> MakeStoreEntryId(const MAPIUID& store, const std::string& path)
{
    std::vector<BYTE> id(FlagsSize);
    id.insert(id.end(), std::begin(StoreWrap), std::end(StoreWrap));
    id.insert(id.end(), 2, 0);
    const char name[] = ZEBSTORE_DLL_NAME;
    id.insert(id.end(), std::begin(name), std::end(name));
    id.resize((id.size() + 3) / 4 * 4);
    id.insert(id.end(), FlagsSize, 0);
    id.insert(id.end(), std::begin(store.ab), std::end(store.ab));
    id.insert(id.end(), path.c_str(), path.c_str() + path.size() + 1);
    return id;
}

bool LooksLikeStoreEntryId(const void* bytes, size_t size)
{
    return bytes != nullptr && size > HeaderSize &&
           std::memcmp(static_cast<const BYTE*>(bytes) + FlagsSize, StoreWrap, sizeof(StoreWrap)) == 0;
}

StoreId ParseStoreEntryId(const void* bytes, size_t size)
{
    if (!LooksLikeStoreEntryId(bytes, size))
    {
        throw Invalid("is not one of a store");
    }
    // The bytes before the store's UID are the same in each identifier.
    std::vector<BYTE> front = MakeStoreEntryId(MAPIUID{}, std::string());
    front.resize(front.size() - sizeof(MAPIUID) - 1);
    const BYTE* id = static_cast<const BYTE*>(bytes);
    const size_t pathAt = front.size() + sizeof(MAPIUID);
    if (size <= pathAt || std::memcmp(id, front.data(), front.size()) != 0 || id[size - 1] != 0)
    {
        throw Invalid("is cut, or of another provider");
    }
    StoreId result;
    std::memcpy(result.uid.ab, id + front.size(), sizeof(MAPIUID));
    result.path.assign(reinterpret_cast<const char*>(id) + pathAt, size - pathAt - 1);
    if (result.path.find('\0') != std::string::npos)
    {
        throw Invalid("is damaged");
    }
    return result;
}

} // namespace zebstore
