#include "tests/zebstore/provider/ProviderFixture.h"

#include "zebstore/base/EntryId.h"

#include <cstring>

namespace zebstore
{
namespace
{

HRESULT CodeOf(const MAPIUID& store, const void* bytes, size_t size)
{
    return Guarded("test", [&] { ParseItemId(store, bytes, size); });
}

constexpr MAPIUID SomeStore = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};

TEST(ProviderEntryId, FoldersHave18Messages34Bytes)
{
    const FolderEntryId folder = MakeFolderEntryId(SomeStore, 77);
    const MessageEntryId message = MakeMessageEntryId(SomeStore, 78);
    EXPECT_EQ(folder.size(), 20u + 18u);
    EXPECT_EQ(message.size(), 20u + 34u);
    EXPECT_EQ(std::memcmp(folder.data() + 4, SomeStore.ab, 16), 0);
    EXPECT_EQ(folder[0] & MAPI_SHORTTERM, 0);
    EXPECT_EQ(ParseItemId(SomeStore, folder.data(), folder.size()).key, 77);
    EXPECT_EQ(ParseItemId(SomeStore, message.data(), message.size()).key, 78);
    EXPECT_EQ(ParseItemId(SomeStore, message.data(), message.size()).objectType, MAPI_MESSAGE);
}

TEST(ProviderEntryId, CutAndChangedOnesAreRefused)
{
    const MessageEntryId id = MakeMessageEntryId(SomeStore, 5);
    for (size_t size = 0; size < id.size(); ++size)
    {
        EXPECT_EQ(CodeOf(SomeStore, Bytes(id.begin(), id.begin() + static_cast<std::ptrdiff_t>(size)).data(), size),
                  MAPI_E_INVALID_ENTRYID)
            << size;
    }
    for (size_t at = 0; at < id.size(); ++at)
    {
        MessageEntryId changed = id;
        changed[at] ^= 0x40;
        EXPECT_EQ(CodeOf(SomeStore, changed.data(), changed.size()), MAPI_E_INVALID_ENTRYID) << at;
    }
    EXPECT_EQ(CodeOf(SomeStore, nullptr, id.size()), MAPI_E_INVALID_ENTRYID);
}

TEST(ProviderEntryId, AStoreNamesTheProvidersFile)
{
    const Bytes id = MakeStoreEntryId(SomeStore, "/mail/a.zeb");
    const MAPIUID wrap = {
        {0x38, 0xA1, 0xBB, 0x10, 0x05, 0xE5, 0x10, 0x1A, 0xA1, 0xBB, 0x08, 0x00, 0x2B, 0x2A, 0x56, 0xC2}};
    EXPECT_EQ(std::memcmp(id.data() + 4, wrap.ab, 16), 0);
    EXPECT_STREQ(reinterpret_cast<const char*>(id.data()) + 22, "zebstore.dll");
    const StoreId parsed = ParseStoreEntryId(id.data(), id.size());
    EXPECT_EQ(parsed.path, "/mail/a.zeb");
    EXPECT_EQ(std::memcmp(parsed.uid.ab, SomeStore.ab, 16), 0);
    for (size_t size = 0; size < id.size(); ++size)
    {
        const Bytes cut(id.begin(), id.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(Guarded("test", [&] { ParseStoreEntryId(cut.data(), cut.size()); }), MAPI_E_INVALID_ENTRYID) << size;
    }
}

class OpenEntryRefusals : public Provider
{
protected:
    HRESULT OpenCode(const Bytes& id)
    {
        ULONG type = 0;
        IUnknown* object = nullptr;
        const HRESULT code = Session().OpenEntry(static_cast<ULONG>(id.size()), Id(id), nullptr, 0, &type, &object);
        EXPECT_EQ(object, nullptr);
        return code;
    }
};

TEST_F(OpenEntryRefusals, OfAnotherStore)
{
    const FolderEntryId foreign = MakeFolderEntryId(SomeStore, 3);
    EXPECT_EQ(OpenCode(Bytes(foreign.begin(), foreign.end())), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(OpenCode(MakeStoreEntryId(SomeStore, m_path)), MAPI_E_NOT_FOUND);
}

TEST_F(OpenEntryRefusals, OfADeletedMessage)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Bytes id = SaveMessage(*inbox);
    EntryList list(id);
    EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, 0), S_OK);
    EXPECT_EQ(OpenCode(id), MAPI_E_NOT_FOUND);
}

TEST_F(OpenEntryRefusals, OfRandomBytes)
{
    unsigned state = 7;
    for (size_t size = 0; size < 120; ++size)
    {
        Bytes bytes(size);
        for (BYTE& each : bytes)
        {
            each = static_cast<BYTE>((state = state * 1103515245 + 12345) >> 16);
        }
        EXPECT_EQ(OpenCode(bytes), MAPI_E_INVALID_ENTRYID) << size;
    }
}

TEST_F(OpenEntryRefusals, OfAnInterfaceTheObjectLacks)
{
    const Bytes id = InboxId();
    ULONG type = 0;
    IUnknown* object = nullptr;
    EXPECT_EQ(Session().OpenEntry(static_cast<ULONG>(id.size()), Id(id), &IID_IMessage, 0, &type, &object),
              MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_EQ(object, nullptr);
}

} // namespace
} // namespace zebstore
