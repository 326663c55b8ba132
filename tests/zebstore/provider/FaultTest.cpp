// A host's work while each call and each allocation fails in turn: it may fail, but never crashes, leaks or leaves half
// a message.
#include "tests/zebstore/provider/ProviderFixture.h"

namespace zebstore
{
namespace
{

class Faults : public Provider
{
protected:
    /// Logs on, reads the inbox and saves a message with a recipient, an attachment and a stream; stops at the first
    /// failure, like a host.
    HRESULT Work()
    {
        IMAPISession* opened = nullptr;
        HRESULT result = MAPILogonEx(0, Text("Main"), nullptr, 0, &opened);
        const Ref<IMAPISession> session = Ref<IMAPISession>::Adopt(opened);
        if (FAILED(result))
        {
            return result;
        }
        IMAPITable* stores = nullptr;
        result = session->GetMsgStoresTable(0, &stores);
        const Ref<IMAPITable> storeTable = Ref<IMAPITable>::Adopt(stores);
        LPSRowSet rows = nullptr;
        if (SUCCEEDED(result))
        {
            result = HrQueryAllRows(stores, nullptr, nullptr, nullptr, 0, &rows);
        }
        if (FAILED(result))
        {
            return result;
        }
        IMsgStore* openedStore = nullptr;
        const SBinary& id = rows->aRow[0].lpProps[1].Value.bin;
        result = session->OpenMsgStore(0, id.cb, reinterpret_cast<LPENTRYID>(id.lpb), nullptr, MDB_WRITE, &openedStore);
        FreeProws(rows);
        const Ref<IMsgStore> store = Ref<IMsgStore>::Adopt(openedStore);
        return SUCCEEDED(result) ? WorkInStore(*store) : result;
    }

    HRESULT WorkInStore(IMsgStore& store)
    {
        ULONG size = 0;
        ENTRYID* id = nullptr;
        HRESULT result = store.GetReceiveFolder(nullptr, 0, &size, &id, nullptr);
        const Buffer<ENTRYID> idOwner(id);
        IUnknown* object = nullptr;
        ULONG type = 0;
        if (SUCCEEDED(result))
        {
            result = store.OpenEntry(size, id, &IID_IMAPIFolder, MAPI_MODIFY, &type, &object);
        }
        const Ref<IMAPIFolder> inbox = Ref<IMAPIFolder>::Adopt(static_cast<IMAPIFolder*>(object));
        IMessage* made = nullptr;
        if (SUCCEEDED(result))
        {
            result = inbox->CreateMessage(nullptr, 0, &made);
        }
        const Ref<IMessage> message = Ref<IMessage>::Adopt(made);
        if (SUCCEEDED(result))
        {
            result = Fill(*message);
        }
        return SUCCEEDED(result) ? message->SaveChanges(KEEP_OPEN_READWRITE) : result;
    }

    HRESULT Fill(IMessage& message)
    {
        SPropValue values[] = {NarrowValue(PR_SUBJECT_A, "whole"), LongValue(PR_IMPORTANCE, 2)};
        HRESULT result = message.SetProps(2, values, nullptr);
        SPropValue name = NarrowValue(PR_DISPLAY_NAME_A, "Ann");
        SizedADRLIST(1, list) = {1, {{0, 1, &name}}};
        if (SUCCEEDED(result))
        {
            result = message.ModifyRecipients(MODRECIP_ADD, reinterpret_cast<LPADRLIST>(&list));
        }
        ULONG number = 0;
        IAttach* made = nullptr;
        if (SUCCEEDED(result))
        {
            result = message.CreateAttach(nullptr, 0, &number, &made);
        }
        const Ref<IAttach> attach = Ref<IAttach>::Adopt(made);
        IUnknown* opened = nullptr;
        if (SUCCEEDED(result))
        {
            result = attach->OpenProperty(PR_ATTACH_DATA_BIN, &IID_IStream, STGM_READWRITE, MAPI_CREATE | MAPI_MODIFY,
                                          &opened);
        }
        const Ref<IStream> stream = Ref<IStream>::Adopt(static_cast<IStream*>(opened));
        const std::string bytes(50000, 'z');
        if (SUCCEEDED(result))
        {
            result = stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
        }
        if (SUCCEEDED(result))
        {
            result = stream->Commit(0);
        }
        return SUCCEEDED(result) ? attach->SaveChanges(0) : result;
    }

    /// The stored part of the message: nothing, or all of it.
    void ExpectWholeOrAbsent(HRESULT result)
    {
        const Ref<IMAPIFolder> inbox = Inbox();
        const Texts subjects = Subjects(*inbox);
        EXPECT_EQ(subjects, SUCCEEDED(result) ? Texts({"whole"}) : Texts());
        IMAPITable* table = nullptr;
        ASSERT_EQ(inbox->GetContentsTable(0, &table), S_OK);
        const Rows rows(table, {PR_ENTRYID});
        if (rows.Count())
        {
            const Ref<IMessage> message = OpenMessage(rows.BytesCell(0, 0));
            IAttach* attach = nullptr;
            ASSERT_EQ(message->OpenAttach(0, nullptr, 0, &attach), S_OK);
            EXPECT_GE(GetLong(attach, PR_ATTACH_SIZE), 50000);
            attach->Release();
        }
        EXPECT_EQ(GetText(OpenStore().Get(), PR_ZEBSTORE_CHECK_A), "ok");
        EXPECT_EQ(inbox->EmptyFolder(0, nullptr, 0), S_OK);
        m_session = {};
    }

    /// Runs the work with one fault. @return false when the work needed fewer calls or allocations
    bool RunWithFault(const std::string& fault)
    {
        SCOPED_TRACE(fault);
        Switches switches;
        EXPECT_TRUE(ParseFault(fault, switches));
        ApplySwitches(switches);
        const HRESULT result = Work();
        const bool happened = FaultHappened();
        ApplySwitches({});
        EXPECT_EQ(g_liveObjects.load(), 0);
        EXPECT_EQ(g_liveBuffers.load(), 0);
        EXPECT_TRUE(happened || SUCCEEDED(result));
        ExpectWholeOrAbsent(result);
        return happened;
    }
};

TEST_F(Faults, OfEachCallKeepMessagesWhole)
{
    int calls = 1;
    while (RunWithFault("call:" + std::to_string(calls) + ":0x80040115") && !HasFailure())
    {
        ++calls;
    }
    EXPECT_GT(calls, 15);
}

TEST_F(Faults, OfEachAllocationKeepMessagesWhole)
{
    int allocations = 1;
    while (RunWithFault("alloc:" + std::to_string(allocations)) && !HasFailure())
    {
        ++allocations;
    }
    EXPECT_GT(allocations, 3);
}

} // namespace
} // namespace zebstore
