// Sessions on profiles with stores of the embedded provider.
#include "tests/integration/Host.h"

#include <cstring>

namespace zeb::test
{
namespace
{

class Sessions : public StoreHost
{
protected:
    /// The identifier of the only store in the stores table.
    static CZebBinary StoreIn(CZebSession& session)
    {
        CZebTable table = session.GetMsgStoresTable();
        CZebRowSet rows;
        table.QueryRows(&rows, 0, nullptr, nullptr);
        EXPECT_EQ(rows.Count(), 1u);
        return CZebBinary(static_cast<const SBinary&>(rows[0][PR_ENTRYID]));
    }
};

TEST_F(Sessions, ListTheProfilesStoreAsDefault)
{
    CZebTable table = m_session->GetMsgStoresTable();
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_TRUE(static_cast<bool>(rows[0][PR_DEFAULT_STORE]));
    EXPECT_TRUE(m_session->CompareEntryIDs(rows[0][PR_ENTRYID], m_store->GetEntryID()));
}

TEST_F(Sessions, OpenStoresByDefaultOrIdentifier)
{
    const CZebBinary id = StoreIn(*m_session);
    CZebMsgStore byId = m_session->OpenMsgStore(id, nullptr, MAPI_BEST_ACCESS);
    EXPECT_EQ(byId.GetObjectType(), static_cast<ULONG>(MAPI_STORE));
    EXPECT_TRUE(m_session->CompareEntryIDs(byId.GetEntryID(), m_store->GetEntryID()));
    byId.OpenInboxFolder(MAPI_BEST_ACCESS).CreateFolder("made", false, true, 0, "", FOLDER_GENERIC);
    EXPECT_TRUE(Inbox().OpenFolderByName("made").IsValid());
    // Without a flag for write access the store is read-only.
    CZebMsgStore forReading = m_session->OpenMsgStore(id, nullptr, 0);
    EXPECT_EQ(FailureOf([&] { forReading.SetDisplayName("x"); }).result, MAPI_E_NO_ACCESS);
}

TEST_F(Sessions, OpenSeveralProfilesByName)
{
    CreateProfile("second", File("second.zeb"), false);
    CZebSession second = LogOn("second");
    {
        CZebMsgStore store = OpenDefaultStore(second);
        EXPECT_FALSE(m_session->CompareEntryIDs(store.GetEntryID(), m_store->GetEntryID()));
        store.OpenInboxFolder(MAPI_BEST_ACCESS).CreateFolder("second's", false, true, 0, "", FOLDER_GENERIC);
        EXPECT_EQ(FailureOf([&] { Inbox().OpenFolderByName("second's"); }).result, 1168);
        const Failure thrown = FailureOf([&] { m_session->OpenMsgStore(store.GetEntryID(), nullptr, 0); });
        EXPECT_EQ(thrown.result, MAPI_E_NOT_FOUND);
        EXPECT_NE(thrown.text.find("'test'"), std::string::npos) << "names the profile: " << thrown.text;
    }
    second.Logoff(0, 0, 0);
}

TEST_F(Sessions, WithoutAStoreHaveNoDefault)
{
    const CComPtr<IProfAdmin> profiles = CZebProfAdmin::Open().GetInterface();
    char name[] = "bare";
    ThrowIfFailed(profiles->CreateProfile(reinterpret_cast<LPTSTR>(name), nullptr, 0, 0), profiles);
    CZebSession bare = LogOn("bare");
    EXPECT_EQ(FailureOf([&] { bare.OpenDefaultMsgStore(nullptr, 0); }).result, MAPI_E_NOT_FOUND);
    bare.Logoff(0, 0, 0);
}

TEST_F(Sessions, CompareIdentifiersOfEveryKind)
{
    AddMessage("one", 1);
    AddMessage("two", 1);
    CZebTable table = Contents();
    table.SetColumns(1, PR_ENTRYID);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    const SBinary& one = rows[0][PR_ENTRYID];
    const SBinary& two = rows[1][PR_ENTRYID];
    const CZebBinary inbox = Inbox().GetEntryID();
    const CZebBinary store = m_store->GetEntryID();
    EXPECT_TRUE(m_session->CompareEntryIDs(one, one));
    EXPECT_FALSE(m_session->CompareEntryIDs(one, two));
    EXPECT_FALSE(m_session->CompareEntryIDs(one, inbox));
    EXPECT_FALSE(m_session->CompareEntryIDs(inbox, store));
    EXPECT_TRUE(m_session->CompareEntryIDs(store, StoreIn(*m_session)));
    const SBinary nothing{0, nullptr};
    EXPECT_TRUE(m_session->CompareEntryIDs(nothing, nothing));
    EXPECT_FALSE(m_session->CompareEntryIDs(nothing, inbox));
    EXPECT_EQ(FailureOf([&] { m_session->CompareEntryIDs(SBinary{5, nullptr}, inbox); }).result,
              MAPI_E_INVALID_ENTRYID);
}

TEST_F(Sessions, LogoffEndsAllCopies)
{
    CZebSession copy(*m_session);
    CZebSession assigned;
    assigned = copy;
    EXPECT_TRUE(assigned.GetMsgStoresTable().IsValid());
    CZebFolder inbox = Inbox();
    m_store.reset();
    copy.Logoff(0, 0, 0);
    EXPECT_FALSE(copy.IsValid());
    EXPECT_TRUE(assigned.IsValid()) << "a wrapper of its own";
    const Failure thrown = FailureOf([&] { assigned.OpenDefaultMsgStore(nullptr, 0); });
    EXPECT_EQ(thrown.result, MAPI_E_END_OF_SESSION);
    EXPECT_NE(thrown.text.find("logged off"), std::string::npos) << thrown.text;
    CZebPropObj target;
    EXPECT_EQ(FailureOf([&] { assigned.OpenEntry(inbox.GetEntryID(), target, 0); }).result, MAPI_E_END_OF_SESSION);
    assigned.Logoff(0, 0, 0);
    EXPECT_FALSE(assigned.IsValid());
    // Opened objects stay valid.
    inbox.CreateFolder("afterwards", false, true, 0, "", FOLDER_GENERIC);
    EXPECT_TRUE(inbox.OpenFolderByName("afterwards").IsValid());
}

TEST_F(Sessions, LoggedOffTwiceAreEmpty)
{
    CZebSession copy(*m_session);
    m_session->Logoff(0, 0, 0);
    m_session->Logoff(0, 0, 0);
    EXPECT_FALSE(m_session->IsValid());
    copy.Logoff(0, 0, 0);
    EXPECT_FALSE(copy.IsValid());
    EXPECT_THROW(copy.GetMsgStoresTable(), _com_error);
}

TEST_F(Sessions, DistinguishClassesOfMessages)
{
    CZebPropValArray values(1);
    values[PR_MESSAGE_CLASS_A] = "IPM.Note.Special";
    CZebMessage message = Inbox().CreateMessage(values, true, 0);
    const CString itsClass = Opened<CZebMessage>(message.GetEntryID()).GetStringProp(PR_MESSAGE_CLASS_A);
    EXPECT_TRUE(Zeb_IsClassSubclassOf(itsClass, "ipm.note"));
    EXPECT_FALSE(Zeb_IsClassSubclassOf(itsClass, "IPM.Contact"));
    EXPECT_FALSE(Zeb_IsClassSubclassOf(itsClass, nullptr));
}

} // namespace
} // namespace zeb::test
