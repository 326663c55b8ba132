#include "tests/zebstore/provider/ProviderFixture.h"

#include <cstring>

namespace zebstore
{
namespace
{

class Stores : public Provider
{
protected:
    static std::string ReceiveFolderName(IMsgStore& store, IMAPISession& session, const char* messageClass,
                                         std::string* explicitClass = nullptr)
    {
        ULONG size = 0;
        ENTRYID* id = nullptr;
        LPTSTR found = nullptr;
        EXPECT_EQ(store.GetReceiveFolder(Text(messageClass), 0, &size, &id, &found), S_OK);
        const Buffer<ENTRYID> owner(id);
        const Buffer<char> foundOwner(found);
        if (explicitClass)
        {
            *explicitClass = found;
        }
        ULONG type = 0;
        IUnknown* object = nullptr;
        EXPECT_EQ(session.OpenEntry(size, id, nullptr, 0, &type, &object), S_OK);
        const Ref<IMAPIFolder> folder = Ref<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object));
        return GetText(folder.Get(), PR_DISPLAY_NAME_A);
    }
};

TEST_F(Stores, HaveTheStandardFolders)
{
    const Ref<IMsgStore> store = OpenStore();
    EXPECT_EQ(GetLong(store.Get(), PR_VALID_FOLDER_MASK), 0xFF);
    for (ULONG tag : {PR_IPM_SUBTREE_ENTRYID, PR_IPM_WASTEBASKET_ENTRYID, PR_IPM_OUTBOX_ENTRYID,
                      PR_IPM_SENTMAIL_ENTRYID, PR_FINDER_ENTRYID, PR_VIEWS_ENTRYID})
    {
        EXPECT_EQ(GetLong(OpenFolder(GetBytes(store.Get(), tag)).Get(), PR_OBJECT_TYPE), LONG(MAPI_FOLDER));
    }
    ULONG count = 0;
    SPropValue* values = nullptr;
    EXPECT_EQ(HrValidateIPMSubtree(store.Get(), MAPI_FULL_IPM_TREE, &count, &values, nullptr), S_OK);
    const Buffer<SPropValue> owner(values);
    EXPECT_EQ(count, 8u);
    EXPECT_EQ(values[1].ulPropTag, PR_IPM_SUBTREE_ENTRYID);
    MAPIERROR* error = reinterpret_cast<MAPIERROR*>(this);
    EXPECT_EQ(HrValidateIPMSubtree(store.Get(), 0, nullptr, nullptr, &error), S_OK);
    EXPECT_EQ(error, nullptr);
    EXPECT_EQ(HrValidateIPMSubtree(nullptr, 0, &count, &values, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(HrValidateIPMSubtree(store.Get(), 0x80, &count, &values, nullptr), MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(Stores, OpenTheirRootWithoutIdentifier)
{
    const Ref<IMsgStore> store = OpenStore();
    ULONG type = 0;
    IUnknown* object = nullptr;
    ASSERT_EQ(store->OpenEntry(0, nullptr, &IID_IMAPIFolder, MAPI_BEST_ACCESS, &type, &object), S_OK);
    const Ref<IMAPIFolder> root = Ref<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object));
    EXPECT_EQ(type, MAPI_FOLDER);
    EXPECT_EQ(GetLong(root.Get(), PR_FOLDER_TYPE), LONG(FOLDER_ROOT));
    EXPECT_EQ(GetBytes(root.Get(), PR_PARENT_ENTRYID), GetBytes(root.Get(), PR_ENTRYID));
}

TEST_F(Stores, SayWhatTheyAre)
{
    const Ref<IMsgStore> store = OpenStore();
    EXPECT_EQ(GetText(store.Get(), PR_DISPLAY_NAME_A), "Mail of Main");
    EXPECT_EQ(GetLong(store.Get(), PR_OBJECT_TYPE), LONG(MAPI_STORE));
    EXPECT_EQ(GetBytes(store.Get(), PR_ENTRYID), StoreId());
    EXPECT_EQ(GetBytes(store.Get(), PR_STORE_ENTRYID), StoreId());
    EXPECT_EQ(GetBytes(store.Get(), PR_RECORD_KEY).size(), 16u);
    EXPECT_EQ(Set(store.Get(), NarrowValue(PR_DISPLAY_NAME_A, "Renamed")), S_OK);
    EXPECT_EQ(GetText(OpenStore().Get(), PR_DISPLAY_NAME_A), "Renamed");
    EXPECT_EQ(Set(store.Get(), LongValue(PR_VALID_FOLDER_MASK, 0)), MAPI_E_COMPUTED);
}

TEST_F(Stores, CheckTheirFileOnlyWhenAsked)
{
    const Ref<IMsgStore> store = OpenStore();
    EXPECT_EQ(GetText(store.Get(), PR_ZEBSTORE_CHECK_A), "ok");
    LPSPropTagArray listed = nullptr;
    ASSERT_EQ(store->GetPropList(0, &listed), S_OK);
    for (ULONG i = 0; i < listed->cValues; ++i)
    {
        EXPECT_NE(PROP_ID(listed->aulPropTag[i]), PROP_ID(PR_ZEBSTORE_CHECK_A));
    }
    MAPIFreeBuffer(listed);
}

TEST_F(Stores, DeliverEachClassToItsFolder)
{
    const Ref<IMsgStore> store = OpenStore();
    const Ref<IMAPIFolder> folder = NewFolder(*Inbox(), "Reports");
    const Bytes id = GetBytes(folder.Get(), PR_ENTRYID);
    const std::string inbox = GetText(Inbox().Get(), PR_DISPLAY_NAME_A);
    EXPECT_EQ(store->SetReceiveFolder(Text("REPORT.IPM"), 0, static_cast<ULONG>(id.size()), Id(id)), S_OK);
    std::string explicitClass;
    EXPECT_EQ(ReceiveFolderName(*store, Session(), "report.ipm.note", &explicitClass), "Reports");
    EXPECT_EQ(explicitClass, "REPORT.IPM");
    EXPECT_EQ(ReceiveFolderName(*store, Session(), "REPORT.IPMX", &explicitClass), inbox);
    IMAPITable* table = nullptr;
    ASSERT_EQ(store->GetReceiveFolderTable(0, &table), S_OK);
    const Rows rows(table, {PR_MESSAGE_CLASS_A});
    EXPECT_GE(rows.Count(), 2u);
    EXPECT_EQ(store->SetReceiveFolder(Text("REPORT.IPM"), 0, 0, nullptr), S_OK);
    EXPECT_EQ(ReceiveFolderName(*store, Session(), "REPORT.IPM"), inbox);
    EXPECT_EQ(store->SetReceiveFolder(nullptr, 0, 0, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Stores, OpenedForReadingRefuseChangesBelow)
{
    const Ref<IMsgStore> store = OpenStore(0);
    EXPECT_EQ(Set(store.Get(), NarrowValue(PR_DISPLAY_NAME_A, "x")), MAPI_E_NO_ACCESS);
    const Bytes id = InboxId();
    ULONG type = 0;
    IUnknown* object = nullptr;
    EXPECT_EQ(store->OpenEntry(static_cast<ULONG>(id.size()), Id(id), nullptr, MAPI_MODIFY, &type, &object),
              MAPI_E_NO_ACCESS);
    ASSERT_EQ(store->OpenEntry(static_cast<ULONG>(id.size()), Id(id), nullptr, MAPI_BEST_ACCESS, &type, &object), S_OK);
    const Ref<IMAPIFolder> folder = Ref<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object));
    EXPECT_EQ(GetLong(folder.Get(), PR_ACCESS_LEVEL), 0);
}

TEST_F(Stores, CompareIdentifiers)
{
    const Ref<IMsgStore> store = OpenStore();
    const Bytes inbox = InboxId();
    const Bytes other = StoreId();
    const auto size = static_cast<ULONG>(inbox.size());
    const auto otherSize = static_cast<ULONG>(other.size());
    ULONG same = 7;
    EXPECT_EQ(store->CompareEntryIDs(size, Id(inbox), size, Id(Bytes(inbox)), 0, &same), S_OK);
    EXPECT_EQ(same, ULONG(TRUE));
    EXPECT_EQ(store->CompareEntryIDs(size, Id(inbox), otherSize, Id(other), 0, &same), S_OK);
    EXPECT_EQ(same, ULONG(FALSE));
    EXPECT_EQ(store->CompareEntryIDs(size, Id(inbox), size, Id(inbox), 1, &same), MAPI_E_UNKNOWN_FLAGS);
    EXPECT_EQ(store->CompareEntryIDs(size, Id(inbox), size, Id(inbox), 0, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Stores, SaveTheirPropertiesAtOnce)
{
    const ULONG tag = PROP_TAG(PT_LONG, 0x6630);
    const Ref<IMsgStore> store = OpenStore();
    EXPECT_EQ(Set(store.Get(), LongValue(tag, 5)), S_OK);
    EXPECT_EQ(GetLong(OpenStore().Get(), tag), 5);
    EXPECT_EQ(store->SaveChanges(0), S_OK);
    EXPECT_EQ(GetLong(OpenStore().Get(), tag), 5);
}

TEST_F(Stores, RefuseWhatTheyDoNotDo)
{
    const Ref<IMsgStore> store = OpenStore();
    ULONG_PTR connection = 0;
    EXPECT_EQ(store->Advise(0, nullptr, fnevNewMail, nullptr, &connection), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(store->AbortSubmit(0, nullptr, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(store->NotifyNewMail(nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(store->GetOutgoingQueue(0, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(store->SetLockState(nullptr, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(store->FinishedMsg(0, 0, nullptr), MAPI_E_NO_SUPPORT);
    ULONG flags = LOGOFF_ORDERLY;
    EXPECT_EQ(store->StoreLogoff(&flags), S_OK);
    EXPECT_EQ(flags, ULONG(LOGOFF_COMPLETE));
    IUnknown* other = nullptr;
    EXPECT_EQ(store->QueryInterface(IID_IMessage, reinterpret_cast<void**>(&other)), E_NOINTERFACE);
    ASSERT_EQ(store->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&other)), S_OK);
    other->Release();
}

} // namespace
} // namespace zebstore
