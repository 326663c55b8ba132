// A class derived from a session or from the map of names changes all operations that build on what it overrides.
#include "ObjectsTest.h"
#include "tests/support/doubles/RecordingStore.h"
#include "zebapi/NAMEID.h"
#include "zebapi/RowSet.h"
#include "zebapi/SESSION.h"

using namespace zeb::test;

namespace
{

/// Writes its operations down and does them.
class WatchedSession : public CZebSession
{
public:
    explicit WatchedSession(Journal& journal, IMAPISession* session = nullptr)
        : CZebSession(session)
        , m_journal(journal)
    {
    }
    using CZebSession::operator=;

    void Free() override { Note("Free"), CZebSession::Free(); }
    bool IsValid() const override { return Note("IsValid"), m_claimsToBeValid && CZebSession::IsValid(); }
    CZebTable GetMsgStoresTable() override { return Note("GetMsgStoresTable"), CZebSession::GetMsgStoresTable(); }
    void OpenEntry(const SBinary& entryId, CZebIProp& target, ULONG flags) override
    {
        Note("OpenEntry"), CZebSession::OpenEntry(entryId, target, flags);
    }
    CZebMsgStore OpenMsgStore(const SBinary& entryId, HWND parent, ULONG flags) override
    {
        return Note("OpenMsgStore"), CZebSession::OpenMsgStore(entryId, parent, flags);
    }
    bool CompareEntryIDs(const SBinary& a, const SBinary& b) override
    {
        return Note("CompareEntryIDs"), CZebSession::CompareEntryIDs(a, b);
    }

    bool m_claimsToBeValid = true;

private:
    void Note(const char* operation) const { m_journal.Write(operation); }

    Journal& m_journal;
};

class SessionSlots : public ObjectsTest
{
protected:
    Journal m_own;
    RecordingSession m_double{m_journal};
    WatchedSession m_session{m_own, &m_double};
};

/// A target whose answers an opener has to ask for.
class WatchedTarget : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override { return &IID_IMessage; }
    bool IsMAPITypeAcceptable(unsigned int) override { return m_accepts; }
    void Free() override
    {
        ++m_frees;
        CZebIProp::Free();
    }
    bool m_accepts = true;
    int m_frees = 0;
};

class WatchedMap : public CZebNameIdMap
{
public:
    using CZebNameIdMap::operator=;
    void EmptyIdMap() override { ++m_emptied; }
    int m_emptied = 0;
};

class ShiftedHelper : public CZebNameIdHelper
{
public:
    ULONG GetID(ULONG index) const override { return 0x9000 + index; }
};

using NameIdSlots = ObjectsTest;

} // namespace

TEST_F(SessionSlots, TheyFindTheDefaultStore)
{
    RowTable stores(m_journal);
    stores.m_rows = {{{PR_DEFAULT_STORE, 1, ""}, {PR_ENTRYID, 0, "id"}}};
    RecordingStore store(m_journal);
    m_double.m_stores = &stores;
    m_double.m_store = &store;
    CZebSession& base = m_session;
    EXPECT_TRUE(base.OpenDefaultMsgStore(nullptr, 0).IsValid());
    EXPECT_EQ(m_own.Take(), (Lines{"GetMsgStoresTable", "OpenMsgStore"}));
}

TEST_F(SessionSlots, LoggingOffFrees)
{
    CZebSession& base = m_session;
    base.Logoff(0, 0, 0);
    EXPECT_EQ(m_own.Take(), (Lines{"Free"}));
    EXPECT_FALSE(m_session.CZebSession::IsValid());
}

TEST_F(SessionSlots, AssigningAsksBothForValidity)
{
    WatchedSession target(m_own);
    CZebSession& base = target;
    base = m_session;
    EXPECT_EQ(m_own.Take(), (Lines{"IsValid", "IsValid"}));
    EXPECT_EQ(Caught(), 0u);
    target.m_claimsToBeValid = false;
    base = m_session;
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"MAPI_E_INTERFACE_NOT_SUPPORTED\""), 1u)
        << "the answer of the derived class counts";
}

TEST_F(SessionSlots, AnObjectWalksUpThroughThem)
{
    RecordingProp item(m_journal, "item");
    item.m_bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
    item.m_bag.Set(PR_PARENT_ENTRYID, "parent");
    RecordingProp parent(m_journal, "parent");
    parent.m_bag.Set(PR_OBJECT_TYPE, MAPI_FOLDER);
    parent.m_bag.Set(PR_FOLDER_TYPE, FOLDER_ROOT);
    m_double.m_openable.Add("parent", &parent, MAPI_FOLDER);
    CZebIProp prop(&item);
    EXPECT_FALSE(prop.IsChildOf(m_session, ID("elsewhere"), false));
    EXPECT_EQ(m_own.Take(), (Lines{"CompareEntryIDs", "OpenEntry"}));
}

TEST_F(SessionSlots, OpeningAsksTheTargetsOwnOperations)
{
    RecordingProp object(m_journal);
    m_double.m_openable.Add("id", &object, MAPI_FOLDER);
    WatchedTarget target;
    m_session.OpenEntry(ID("id"), target, 0);
    EXPECT_EQ(Calls(), (Lines{"session: OpenEntry(6964,IMessage,0x0)"}));
    target.m_accepts = false;
    target.m_frees = 0;
    EXPECT_EQ(Thrown([&] { m_session.OpenEntry(ID("id"), target, 0); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(target.m_frees, 2) << "emptied before the call, and when the type is refused";
}

TEST_F(NameIdSlots, AssigningEmptiesThroughTheOwnOperation)
{
    CZebNameIdMap source;
    source.SetTag(0x80840001, 0x86000001);
    WatchedMap target;
    target.SetTag(0x80830001, 0x85120001);
    CZebNameIdMap& base = target;
    base = source;
    EXPECT_EQ(target.m_emptied, 1);
    EXPECT_EQ(target.GetTag(0x8083001E, false), 0x8512001Eu) << "the derived class has kept its entry";
    EXPECT_EQ(target.GetTag(0x8084001E, false), 0x8600001Eu);
}

TEST_F(NameIdSlots, ATagHasTheOwnIdentifier)
{
    const ShiftedHelper helper;
    const CZebNameIdHelper& base = helper;
    EXPECT_EQ(base.GetTag(2, PT_LONG), 0x90020003u);
    EXPECT_EQ(base.GetTag(999, PT_LONG), 0x93E70003u) << "the range is the identifier's to check";
}
