// Arguments and properties that clients routinely use.
#include "platform/datetime.h"
#include "platform/tags.h"
#include "tests/support/Unprivileged.h"
#include "tests/zebstore/provider/ProviderFixture.h"
#include "zebstore/objects/Defaults.h"
#include "zebstore/objects/OwnFolder.h"
#include "zebstore/profiles/ServiceAdmin.h"
#include "zebstore/storage/StoreFile.h"

#include <sqlite3.h>

#include <filesystem>
#include <fstream>

namespace zebstore
{
namespace
{

// The published values, not the provider's constants: a client passes numbers.
constexpr ULONG MdbOnlineFlag = 0x100;
constexpr ULONG NoCacheFlag = 0x200;
constexpr ULONG CacheOnlyFlag = 0x4000;
constexpr ULONG SoftDeletesFlag = 0x2;
constexpr ULONG HardDeleteFlag = 0x10;
constexpr ULONG SpamFilterFlag = 0x80;
constexpr ULONG ItemProcFlag = 0x800;
constexpr ULONG NonExchangeSaveFlag = 0x1000;

class Clients : public Provider
{
protected:
    HRESULT OpenStoreCode(ULONG flags)
    {
        const Bytes id = StoreId();
        IMsgStore* store = nullptr;
        const HRESULT result = Session().OpenMsgStore(0, static_cast<ULONG>(id.size()), Id(id), nullptr, flags, &store);
        const Ref<IMsgStore> owner = Ref<IMsgStore>::Adopt(store);
        return result;
    }

    static std::string BinaryOf(IMAPIProp* object, ULONG tag)
    {
        const Bytes bytes = GetBytes(object, tag);
        return {bytes.begin(), bytes.end()};
    }

    static std::int64_t NumberOf(const FILETIME& time)
    {
        return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    }
    static std::int64_t Now() { return NumberOf(zeb::platform::CurrentFileTime()); }
    static std::int64_t TimeOf(IMAPIProp* object, ULONG tag)
    {
        const Buffer<SPropValue> value = Get(object, tag);
        return value.Get() ? NumberOf(value->Value.ft) : 0;
    }

    static ULONG CountOf(IMAPIFolder& folder, ULONG flags, bool hierarchy = false)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(hierarchy ? folder.GetHierarchyTable(flags, &table) : folder.GetContentsTable(flags, &table), S_OK);
        return Rows(table, {PR_ENTRYID}).Count();
    }
};

TEST_F(Clients, OpenWithFlagsForCachedCopies)
{
    for (const ULONG flag : {MdbOnlineFlag, NoCacheFlag, CacheOnlyFlag})
    {
        EXPECT_EQ(OpenStoreCode(flag | MAPI_BEST_ACCESS), S_OK) << std::hex << flag;
    }
    EXPECT_EQ(OpenStoreCode(0x400000), MAPI_E_UNKNOWN_FLAGS);
    const Ref<IMAPIFolder> inbox = Inbox();
    const Bytes id = SaveMessage(*inbox);
    for (const ULONG flag : {NoCacheFlag, CacheOnlyFlag, SoftDeletesFlag})
    {
        const Ref<IMessage> message = OpenMessage(id, flag);
        EXPECT_EQ(GetText(message.Get(), PR_SUBJECT_A), "Hello") << std::hex << flag;
        IUnknown* object = nullptr;
        ULONG type = 0;
        EXPECT_EQ(inbox->OpenEntry(static_cast<ULONG>(id.size()), Id(id), nullptr, flag, &type, &object), S_OK);
        Ref<IUnknown>::Adopt(object);
    }
}

TEST_F(Clients, SaveNewMailWithItsFlags)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    IMessage* made = nullptr;
    ASSERT_EQ(inbox->CreateMessage(nullptr, ItemProcFlag, &made), S_OK);
    const Ref<IMessage> message = Ref<IMessage>::Adopt(made);
    for (const ULONG flag : {SpamFilterFlag, ItemProcFlag, NonExchangeSaveFlag})
    {
        EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE | flag), S_OK) << std::hex << flag;
    }
    EXPECT_EQ(message->SaveChanges(0x10), MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(Clients, SeeNothingOfWhatWasDeleted)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    SaveMessage(*inbox);
    NewFolder(*inbox, "Below");
    EXPECT_EQ(CountOf(*inbox, MAPI_UNICODE), 1u);
    EXPECT_EQ(CountOf(*inbox, MAPI_UNICODE | SoftDeletesFlag), 0u);
    EXPECT_EQ(CountOf(*inbox, 0, true), 1u);
    EXPECT_EQ(CountOf(*inbox, SoftDeletesFlag | CONVENIENT_DEPTH, true), 0u);
}

TEST_F(Clients, DeleteForGoodAndAllowDialogs)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> below = NewFolder(*inbox, "Below");
    const Bytes message = SaveMessage(*inbox);
    EntryList list(message);
    EXPECT_EQ(inbox->CopyMessages(&list, nullptr, below.Get(), 0, nullptr, MESSAGE_DIALOG), S_OK);
    EXPECT_EQ(inbox->SetReadFlags(&list, 0, nullptr, MESSAGE_DIALOG), S_OK);
    EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, HardDeleteFlag | MESSAGE_DIALOG), S_OK);
    EXPECT_EQ(below->EmptyFolder(0, nullptr, HardDeleteFlag | FOLDER_DIALOG), S_OK);
    const Bytes id = GetBytes(below.Get(), PR_ENTRYID);
    EXPECT_EQ(inbox->DeleteFolder(static_cast<ULONG>(id.size()), Id(id), 0, nullptr,
                                  HardDeleteFlag | FOLDER_DIALOG | DEL_FOLDERS | DEL_MESSAGES),
              S_OK);
}

TEST_F(Clients, SeeWhatTheStoreCanDo)
{
    const LONG mask = GetLong(OpenStore().Get(), PR_STORE_SUPPORT_MASK);
    EXPECT_TRUE(mask & STORE_NOTIFY_OK);
    EXPECT_FALSE(mask & STORE_OLE_OK);
}

TEST_F(Clients, SetMessageFlagsBeforeSavingOnly)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> message = NewMessage(*inbox);
    EXPECT_EQ(Set(message.Get(), LongValue(PR_MESSAGE_FLAGS, MSGFLAG_RESEND | MSGFLAG_ASSOCIATED)), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetLong(message.Get(), PR_MESSAGE_FLAGS), LONG(MSGFLAG_RESEND));
    EXPECT_EQ(Set(message.Get(), LongValue(PR_MESSAGE_FLAGS, 0)), MAPI_E_COMPUTED);
    const Ref<IMessage> again = OpenMessage(GetBytes(message.Get(), PR_ENTRYID));
    EXPECT_EQ(Set(again.Get(), LongValue(PR_MESSAGE_FLAGS, 0)), MAPI_E_COMPUTED);
    const Ref<IMessage> hidden = NewMessage(*inbox, "hidden", MAPI_ASSOCIATED);
    EXPECT_EQ(Set(hidden.Get(), LongValue(PR_MESSAGE_FLAGS, 0)), S_OK);
    EXPECT_EQ(hidden->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetLong(hidden.Get(), PR_MESSAGE_FLAGS), LONG(MSGFLAG_ASSOCIATED));
}

TEST_F(Clients, AreRefusedInvalidIdentifiers)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    for (const ULONG id : {0u, 0xFFFFu, 0x8123u})
    {
        EXPECT_EQ(Set(message.Get(), LongValue(PROP_TAG(PT_LONG, id), 1)), MAPI_E_UNEXPECTED_ID) << std::hex << id;
        IUnknown* stream = nullptr;
        EXPECT_EQ(message->OpenProperty(PROP_TAG(PT_BINARY, id), &IID_IStream, STGM_READWRITE,
                                        MAPI_CREATE | MAPI_MODIFY, &stream),
                  MAPI_E_UNEXPECTED_ID)
            << std::hex << id;
    }
    MAPINAMEID name{};
    GUID set = {1, 2, 3, {4}};
    name.lpguid = &set;
    name.ulKind = MNID_ID;
    name.Kind.lID = 5;
    MAPINAMEID* names = &name;
    LPSPropTagArray tags = nullptr;
    ASSERT_EQ(message->GetIDsFromNames(1, &names, MAPI_CREATE, &tags), S_OK);
    const Buffer<SPropTagArray> owner(tags);
    EXPECT_EQ(Set(message.Get(), LongValue(CHANGE_PROP_TYPE(tags->aulPropTag[0], PT_LONG), 1)), S_OK);
    EXPECT_EQ(Set(message.Get(), LongValue(PROP_TAG(PT_LONG, 0x7FFF), 1)), S_OK);
}

TEST_F(Clients, ReadWhatEveryMessageHas)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Bytes id = SaveMessage(*inbox);
    const Ref<IMessage> message = OpenMessage(id);
    EXPECT_EQ(GetLong(message.Get(), PR_IMPORTANCE), LONG(IMPORTANCE_NORMAL));
    for (const ULONG tag : {PR_SENSITIVITY, PR_PRIORITY, PR_MSG_STATUS})
    {
        EXPECT_EQ(GetLong(message.Get(), tag), 0) << std::hex << tag;
    }
    for (const ULONG tag : {PR_DISPLAY_TO_A, PR_DISPLAY_CC_A, PR_DISPLAY_BCC_A})
    {
        EXPECT_EQ(GetText(message.Get(), tag), "") << std::hex << tag;
    }
    IMAPITable* table = nullptr;
    ASSERT_EQ(inbox->GetContentsTable(0, &table), S_OK);
    SRestriction normal{};
    SPropValue value = LongValue(PR_IMPORTANCE, IMPORTANCE_NORMAL);
    normal.rt = RES_PROPERTY;
    normal.res.resProperty = {RELOP_EQ, PR_IMPORTANCE, &value};
    EXPECT_EQ(table->Restrict(&normal, 0), S_OK);
    const Rows rows(table, {PR_IMPORTANCE, PR_DISPLAY_TO_A, PR_SOURCE_KEY, PR_CHANGE_KEY});
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_EQ(rows.Cell(0, 0).Value.l, LONG(IMPORTANCE_NORMAL));
    EXPECT_EQ(rows.TextCell(0, 1), "");
    EXPECT_EQ(rows.BytesCell(0, 2), GetBytes(message.Get(), PR_SOURCE_KEY));
    EXPECT_EQ(rows.BytesCell(0, 3), GetBytes(message.Get(), PR_CHANGE_KEY));
    EXPECT_EQ(Set(message.Get(), LongValue(PR_IMPORTANCE, 2)), S_OK);
    EXPECT_EQ(GetLong(message.Get(), PR_IMPORTANCE), 2);
    ULONG old = 1;
    EXPECT_EQ(inbox->SetMessageStatus(static_cast<ULONG>(id.size()), Id(id), 4, 4, &old), S_OK);
    EXPECT_EQ(GetLong(OpenMessage(id).Get(), PR_MSG_STATUS), 4);
}

TEST_F(Clients, ReadNoNamesOfRemovedRecipients)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    SPropValue name = NarrowValue(PR_DISPLAY_NAME_A, "Ann");
    SizedADRLIST(1, one) = {1, {{0, 1, &name}}};
    EXPECT_EQ(message->ModifyRecipients(MODRECIP_ADD, reinterpret_cast<LPADRLIST>(&one)), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetText(message.Get(), PR_DISPLAY_TO_A), "Ann");
    ADRLIST none{};
    EXPECT_EQ(message->ModifyRecipients(0, &none), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetText(message.Get(), PR_DISPLAY_TO_A), "");
}

TEST_F(Clients, KnowMessagesByKeys)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> message = OpenMessage(SaveMessage(*inbox));
    const Ref<IMessage> other = OpenMessage(SaveMessage(*inbox));
    EXPECT_EQ(GetBytes(message.Get(), PR_SOURCE_KEY).size(), 24u);
    EXPECT_NE(GetBytes(message.Get(), PR_SOURCE_KEY), GetBytes(other.Get(), PR_SOURCE_KEY));
    EXPECT_EQ(GetBytes(message.Get(), PR_PARENT_SOURCE_KEY), GetBytes(inbox.Get(), PR_SOURCE_KEY));
    const Ref<IMAPIFolder> parent = OpenFolder(GetBytes(inbox.Get(), PR_PARENT_ENTRYID));
    EXPECT_EQ(GetBytes(inbox.Get(), PR_PARENT_SOURCE_KEY), GetBytes(parent.Get(), PR_SOURCE_KEY));
    const std::string before = BinaryOf(message.Get(), PR_CHANGE_KEY);
    EXPECT_EQ(BinaryOf(message.Get(), PR_PREDECESSOR_CHANGE_LIST), std::string(1, 24) + before);
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_SUBJECT_A, "changed")), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const std::string after = BinaryOf(message.Get(), PR_CHANGE_KEY);
    EXPECT_GT(after, before);
    EXPECT_EQ(BinaryOf(message.Get(), PR_PREDECESSOR_CHANGE_LIST), std::string(1, 24) + after);
    EXPECT_EQ(BinaryOf(NewMessage(*inbox).Get(), PR_SOURCE_KEY), "");
}

TEST_F(Clients, SeeNewChangeKeysAfterSaves)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const Bytes imported = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 0, 0, 0, 7};
    EXPECT_EQ(Set(message.Get(), BinaryValue(PR_CHANGE_KEY, imported)), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetBytes(message.Get(), PR_CHANGE_KEY), imported);
    const std::string importedEntry = std::string(1, 20) + std::string(imported.begin(), imported.end());
    EXPECT_EQ(BinaryOf(message.Get(), PR_PREDECESSOR_CHANGE_LIST), importedEntry);
    std::string last;
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(Set(message.Get(), NarrowValue(PR_SUBJECT_A, std::to_string(i).c_str())), S_OK);
        EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        const std::string key = BinaryOf(message.Get(), PR_CHANGE_KEY);
        EXPECT_EQ(key.size(), 24u);
        EXPECT_GT(key, last);
        last = key;
        const std::string list = BinaryOf(message.Get(), PR_PREDECESSOR_CHANGE_LIST);
        EXPECT_EQ(list.size(), 21u + 25u);
        EXPECT_NE(list.find(importedEntry), std::string::npos);
        EXPECT_NE(list.find(std::string(1, 24) + key), std::string::npos);
    }
}

// They are not listed: a client that copies all listed properties to another folder must not copy these.
TEST_F(Clients, KnowFoldersByUnlistedKeys)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const std::int64_t start = Now();
    const Ref<IMAPIFolder> folder = NewFolder(*inbox, "Projects");
    const std::int64_t created = TimeOf(folder.Get(), PR_CREATION_TIME);
    EXPECT_GE(created, start);
    EXPECT_LE(created, Now());
    const std::int64_t modified = TimeOf(folder.Get(), PR_LAST_MODIFICATION_TIME);
    EXPECT_EQ(modified, created);
    const std::string key = BinaryOf(folder.Get(), PR_CHANGE_KEY);
    EXPECT_EQ(BinaryOf(folder.Get(), PR_PREDECESSOR_CHANGE_LIST), std::string(1, 24) + key);
    EXPECT_EQ(Set(folder.Get(), NarrowValue(PR_COMMENT_A, "new")), S_OK);
    EXPECT_EQ(TimeOf(folder.Get(), PR_CREATION_TIME), created);
    EXPECT_GT(TimeOf(folder.Get(), PR_LAST_MODIFICATION_TIME), modified);
    EXPECT_GT(BinaryOf(folder.Get(), PR_CHANGE_KEY), key);
    SPropTagArray* tags = nullptr;
    ASSERT_EQ(folder->GetPropList(0, &tags), S_OK);
    const Buffer<SPropTagArray> owner(tags);
    for (ULONG i = 0; i < tags->cValues; ++i)
    {
        for (const ULONG tag : {PR_CREATION_TIME, PR_LAST_MODIFICATION_TIME, PR_CHANGE_KEY, PR_PREDECESSOR_CHANGE_LIST})
        {
            EXPECT_NE(PROP_ID(tags->aulPropTag[i]), PROP_ID(tag));
        }
    }
    IMAPITable* table = nullptr;
    ASSERT_EQ(inbox->GetHierarchyTable(0, &table), S_OK);
    const Rows rows(table, {PR_CREATION_TIME, PR_LAST_MODIFICATION_TIME, PR_CHANGE_KEY});
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_EQ(NumberOf(rows.Cell(0, 0).Value.ft), created);
    EXPECT_EQ(NumberOf(rows.Cell(0, 1).Value.ft), TimeOf(folder.Get(), PR_LAST_MODIFICATION_TIME));
    EXPECT_EQ(rows.BytesCell(0, 2), GetBytes(folder.Get(), PR_CHANGE_KEY));
}

TEST_F(Clients, WriteAFoldersTimesAndKeys)
{
    const Ref<IMAPIFolder> folder = NewFolder(*Inbox(), "Projects");
    const Bytes imported = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 0, 0, 0, 7};
    const std::string importedEntry = std::string(1, 20) + std::string(imported.begin(), imported.end());
    SPropValue time{};
    time.Value.ft = {5, 0x01D00000};
    time.ulPropTag = PR_CREATION_TIME;
    EXPECT_EQ(Set(folder.Get(), time), S_OK);
    time.ulPropTag = PR_LAST_MODIFICATION_TIME;
    EXPECT_EQ(Set(folder.Get(), time), S_OK);
    EXPECT_EQ(TimeOf(folder.Get(), PR_LAST_MODIFICATION_TIME), NumberOf(time.Value.ft));
    EXPECT_EQ(Set(folder.Get(), BinaryValue(PR_CHANGE_KEY, imported)), S_OK);
    EXPECT_EQ(GetBytes(folder.Get(), PR_CHANGE_KEY), imported);
    EXPECT_EQ(BinaryOf(folder.Get(), PR_PREDECESSOR_CHANGE_LIST), importedEntry);
    EXPECT_EQ(Set(folder.Get(), NarrowValue(PR_COMMENT_A, "new")), S_OK);
    EXPECT_EQ(TimeOf(folder.Get(), PR_CREATION_TIME), NumberOf(time.Value.ft));
    EXPECT_GT(TimeOf(folder.Get(), PR_LAST_MODIFICATION_TIME), NumberOf(time.Value.ft));
    EXPECT_NE(GetBytes(folder.Get(), PR_CHANGE_KEY), imported);
    EXPECT_NE(BinaryOf(folder.Get(), PR_PREDECESSOR_CHANGE_LIST).find(importedEntry), std::string::npos);
}

TEST_F(Clients, GetAttachmentsByInterface)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    ULONG number = 0;
    IAttach* attach = nullptr;
    ASSERT_EQ(message->CreateAttach(&IID_IMAPIProp, 0, &number, &attach), S_OK);
    const Ref<IAttach> owner = Ref<IAttach>::Adopt(attach);
    EXPECT_EQ(attach->SaveChanges(0), S_OK);
    IAttach* other = nullptr;
    ULONG unused = 77;
    EXPECT_EQ(message->CreateAttach(&IID_IMessage, 0, &unused, &other), MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(unused, 77u);
    EXPECT_EQ(message->OpenAttach(number, &IID_IMessage, 0, &other), MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_EQ(other, nullptr);
    ASSERT_EQ(message->OpenAttach(number, &IID_IAttachment, 0, &other), S_OK);
    other->Release();
}

// The file is queried once: creating a message with many attachments takes time linear in their number.
TEST_F(Clients, AddAttachmentsWithoutReadingOthers)
{
    const Ref<IMessage> message = OpenMessage(SaveMessage(*Inbox()));
    int statements = 0;
    sqlite3* const handle = AsOwnFolder(Inbox().Get())->StoreOfFolder()->File().Connection().Db().Handle();
    for (int i = 0; i < 3; ++i)
    {
        statements = 0;
        sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, [](unsigned, void* counted, void*, void*)
        {
            ++*static_cast<int*>(counted);
            return 0;
        }, &statements);
        ULONG number = 0;
        IAttach* attach = nullptr;
        EXPECT_EQ(message->CreateAttach(nullptr, 0, &number, &attach), S_OK);
        const Ref<IAttach> owner = Ref<IAttach>::Adopt(attach);
        sqlite3_trace_v2(handle, 0, nullptr, nullptr);
        EXPECT_EQ(number, static_cast<ULONG>(i));
        EXPECT_EQ(statements > 0, i == 0) << i;
        EXPECT_EQ(attach->SaveChanges(0), S_OK);
    }
}

TEST_F(Clients, ReadAStoreWithoutWritableFolder)
{
    namespace fs = std::filesystem;
    SaveMessage(*Inbox(), "kept");
    m_session = {};
    const fs::path path = fs::u8path(m_path);
    const fs::path folder = path.parent_path() / "sealed #1%";
    fs::create_directory(folder);
    const fs::path sealed = folder / "main.zeb";
    fs::copy_file(path, sealed);
    constexpr auto writing = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    constexpr auto reading = fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read |
                             fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
    fs::permissions(path.parent_path(), reading, fs::perm_options::add);
    fs::permissions(sealed, writing, fs::perm_options::remove);
    fs::permissions(folder, reading, fs::perm_options::replace);
    Switches switches;
    switches.traceFile = m_folder.File("trace.txt");
    ApplySwitches(switches);
    Service service;
    service.path = sealed.u8string();
    {
        const zeb::test::UnprivilegedScope unprivileged;
        const std::shared_ptr<StoreFile> file = OpenServiceFile(service, nullptr);
        EXPECT_TRUE(file->IsReadOnly());
        const std::vector<MessageId> messages = file->Messages().In({IdOf(StandardFolder::Inbox), false});
        ASSERT_EQ(messages.size(), 1u);
        EXPECT_EQ(file->Messages().Load(messages[0]).properties.Text(PR_SUBJECT_W), "kept");
        if (unprivileged.IsInForce())
        {
            std::ifstream trace(switches.traceFile);
            const std::string text((std::istreambuf_iterator<char>(trace)), {});
            EXPECT_NE(text.find("sealed #1%/main.zeb' is opened as a file that never changes"), std::string::npos)
                << text;
        }
    }
    ApplySwitches({});
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add);
    fs::permissions(sealed, fs::perms::owner_write, fs::perm_options::add);
}

} // namespace
} // namespace zebstore
