// Messages of a store: created, saved, copied, moved, deleted, found again; the information message; children.
#include "tests/integration/Content.h"

namespace zeb::test
{
namespace
{

class StoreMessages : public StoreHost
{
protected:
    CZebFolder m_inbox = Inbox();
    CZebFolder m_other = MakeFolder(m_inbox, "other");
    CZebFolder m_deleted = m_store->OpenSpecialFolder(PR_IPM_WASTEBASKET_ENTRYID, MAPI_BEST_ACCESS);

    HRESULT OpeningThrows(const CZebBinary& id)
    {
        CZebMessage message;
        return FailureOf([&] { m_store->OpenEntry(id, message, MAPI_BEST_ACCESS); }).result;
    }
    /// A list that frees all of itself.
    struct List
    {
        explicit List(std::vector<CZebBinary> given)
            : ids(std::move(given))
        {
            for (const CZebBinary& id : ids)
            {
                entries.push_back(id);
            }
            array = {static_cast<ULONG>(entries.size()), entries.data()};
        }
        std::vector<CZebBinary> ids;
        std::vector<SBinary> entries;
        SBinaryArray array = {};
    };
};

TEST_F(StoreMessages, AreInTheFolderOnceSaved)
{
    CZebPropValArray properties(1);
    properties[PR_SUBJECT_A] = "dropped";
    m_inbox.CreateMessage(properties, false, 0);
    EXPECT_TRUE(SubjectsOf(m_inbox).empty());
    CZebMessage kept = m_inbox.CreateMessage(0);
    properties[PR_SUBJECT_A] = "kept";
    kept.SetProps(properties, false, nullptr);
    EXPECT_TRUE(SubjectsOf(m_inbox).empty());
    kept.SaveChanges(KEEP_OPEN_READWRITE);
    EXPECT_EQ(SubjectsOf(m_inbox), Names{"kept"});
    properties[PR_SUBJECT_A] = "at once";
    CZebMessage saved = m_inbox.CreateMessage(properties, true, 0);
    EXPECT_EQ(m_inbox.GetContentsTable(0).GetRowCount(), 2u);
    EXPECT_EQ(saved.GetParentID(), m_inbox.GetEntryID());
    EXPECT_EQ(saved.GetObjectType(), static_cast<ULONG>(MAPI_MESSAGE));
}

TEST_F(StoreMessages, WithoutAnyPropertyAreNotSaved)
{
    CZebPropValArray nothing(2);
    m_inbox.CreateMessage(nothing, true, 0);
    EXPECT_TRUE(SubjectsOf(m_inbox).empty());
}

TEST_F(StoreMessages, CanBeWrittenAfterFirstSave)
{
    CZebMessage message = SaveMessage(m_inbox, "first");
    CZebPropValArray properties(1);
    properties[PR_SUBJECT_A] = "second";
    message.SetProps(properties, true, nullptr);
    EXPECT_EQ(SubjectsOf(m_inbox), Names{"second"});
}

TEST_F(StoreMessages, AssociatedOnesAreSeparate)
{
    SaveMessage(m_inbox, "plain");
    SaveMessage(m_inbox, "associated", MAPI_ASSOCIATED);
    EXPECT_EQ(SubjectsOf(m_inbox), Names{"plain"});
    EXPECT_EQ(SubjectsOf(m_inbox, MAPI_ASSOCIATED), Names{"associated"});
    EXPECT_EQ(FailureOf([&] { m_inbox.CreateMessage(0x40000000); }).result, MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(StoreMessages, AreCopiedWhole)
{
    CZebMessage message = SaveMessage(m_inbox, "a");
    CZebPropValArray body(2);
    body[PR_BODY_A] = std::string(100000, 'b').c_str();
    body[PR_IMPORTANCE] = static_cast<LONG>(IMPORTANCE_HIGH);
    message.SetProps(body, true, nullptr);
    m_inbox.CopyMessage(message.GetEntryID(), m_other, 0);
    EXPECT_EQ(SubjectsOf(m_inbox), Names{"a"});
    EXPECT_EQ(SubjectsOf(m_other), Names{"a"});
    CZebTable table = m_other.GetContentsTable(0);
    table.SetColumns(1, PR_ENTRYID);
    CZebRowSet rows;
    table.QueryRows(&rows, 1, nullptr, nullptr);
    CZebMessage copy;
    m_other.OpenEntry(rows[0][PR_ENTRYID].operator const SBinary&(), copy, 0);
    EXPECT_NE(copy.GetEntryID(), message.GetEntryID());
    EXPECT_EQ(copy.GetParentID(), m_other.GetEntryID());
    EXPECT_EQ(copy.GetLongStringA(PR_BODY_A).GetLength(), 100000);
    EXPECT_EQ(NumberOf(copy, PR_IMPORTANCE), static_cast<LONG>(IMPORTANCE_HIGH));
}

TEST_F(StoreMessages, AreCopiedIntoTheirOwnFolder)
{
    const CZebBinary id = SaveMessage(m_inbox, "a").GetEntryID();
    m_inbox.CopyMessage(id, m_inbox, 0);
    EXPECT_EQ(SubjectsOf(m_inbox), (Names{"a", "a"}));
    m_inbox.MoveMessage(id, m_inbox, 0);
    EXPECT_EQ(SubjectsOf(m_inbox), (Names{"a", "a"}));
    EXPECT_TRUE(CZebFolder(m_inbox).IsValid());
}

TEST_F(StoreMessages, MovedOnesLeaveTheirOldFolder)
{
    const CZebBinary a = SaveMessage(m_inbox, "a").GetEntryID();
    List bc({SaveMessage(m_inbox, "b").GetEntryID(), SaveMessage(m_inbox, "c").GetEntryID()});
    m_inbox.MoveMessage(a, m_other, 0);
    EXPECT_EQ(SubjectsOf(m_inbox), (Names{"b", "c"}));
    EXPECT_EQ(SubjectsOf(m_other), Names{"a"});
    EXPECT_EQ(OpeningThrows(a), MAPI_E_NOT_FOUND) << "the place is part of the identifier";
    m_inbox.MoveMessages(&bc.array, m_other, 0, nullptr, nullptr);
    EXPECT_TRUE(SubjectsOf(m_inbox).empty());
    EXPECT_EQ(SubjectsOf(m_other), (Names{"a", "b", "c"}));
}

TEST_F(StoreMessages, OfOtherFoldersAreSkipped)
{
    List both({SaveMessage(m_inbox, "here").GetEntryID(), SaveMessage(m_deleted, "there").GetEntryID()});
    m_inbox.CopyMessages(&both.array, m_other, 0, nullptr, nullptr);
    EXPECT_EQ(SubjectsOf(m_other), Names{"here"});
    m_inbox.MoveMessages(&both.array, m_other, 0, nullptr, nullptr);
    EXPECT_EQ(SubjectsOf(m_other), (Names{"here", "here"}));
    m_inbox.DeleteMessages(&both.array, nullptr, 0, nullptr);
    EXPECT_EQ(SubjectsOf(m_deleted), Names{"there"});
}

TEST_F(StoreMessages, AreNotMovedWithoutWriteAccess)
{
    const CZebBinary id = SaveMessage(m_inbox, "a").GetEntryID();
    CZebFolder readOnly;
    m_store->OpenEntry(m_other.GetEntryID(), readOnly, 0);
    const Failure thrown = FailureOf([&] { m_inbox.MoveMessage(id, readOnly, 0); });
    EXPECT_EQ(thrown.result, MAPI_E_NO_ACCESS);
    EXPECT_NE(thrown.text.find("reading"), std::string::npos) << thrown.text;
    EXPECT_EQ(SubjectsOf(m_inbox), Names{"a"});
}

TEST_F(StoreMessages, TheFolderDeletesForGood)
{
    const CZebBinary a = SaveMessage(m_inbox, "a").GetEntryID();
    SaveMessage(m_inbox, "b");
    m_inbox.DeleteMessage(a);
    EXPECT_EQ(SubjectsOf(m_inbox), Names{"b"});
    EXPECT_TRUE(SubjectsOf(m_deleted).empty());
    EXPECT_EQ(OpeningThrows(a), MAPI_E_NOT_FOUND);
}

TEST_F(StoreMessages, TheStoreDeletesSoftlyOrHard)
{
    List soft({SaveMessage(m_inbox, "a").GetEntryID(), SaveMessage(m_inbox, "b").GetEntryID()});
    List hard({SaveMessage(m_inbox, "c").GetEntryID(), SaveMessage(m_inbox, "d").GetEntryID()});
    m_store->DeleteMessages(&soft.array, false);
    EXPECT_EQ(SubjectsOf(m_deleted), (Names{"a", "b"}));
    m_store->DeleteMessages(&hard.array, true);
    EXPECT_TRUE(SubjectsOf(m_inbox).empty());
    EXPECT_EQ(SubjectsOf(m_deleted), (Names{"a", "b"}));
    for (const List* list : {&soft, &hard})
    {
        for (const CZebBinary& id : list->ids)
        {
            EXPECT_EQ(OpeningThrows(id), MAPI_E_NOT_FOUND);
        }
    }
}

TEST_F(StoreMessages, DeletedSoftlyFromDeletedItemsStay)
{
    const CZebBinary id = SaveMessage(m_deleted, "a").GetEntryID();
    m_store->DeleteMessage(id, false);
    EXPECT_EQ(SubjectsOf(m_deleted), Names{"a"});
    m_store->DeleteMessage(id, true);
    EXPECT_TRUE(SubjectsOf(m_deleted).empty());
}

TEST_F(StoreMessages, DeletionAffectsTheFirstsFolderOnly)
{
    for (const bool hard : {false, true})
    {
        List both({SaveMessage(m_inbox, "first").GetEntryID(), SaveMessage(m_other, "second").GetEntryID()});
        m_store->DeleteMessages(&both.array, hard);
        EXPECT_TRUE(SubjectsOf(m_inbox).empty());
        EXPECT_EQ(SubjectsOf(m_other), Names{"second"});
        m_other.EmptyFolder(nullptr, 0, nullptr);
    }
    EXPECT_EQ(SubjectsOf(m_deleted), Names{"first"});
}

TEST_F(StoreMessages, AMissingMessageIsNotDeleted)
{
    const CZebBinary id = SaveMessage(m_inbox, "a").GetEntryID();
    m_inbox.DeleteMessage(id);
    EXPECT_EQ(FailureOf([&] { m_store->DeleteMessage(id, true); }).result, MAPI_E_NOT_FOUND);
    EXPECT_EQ(FailureOf([&] { m_store->DeleteMessage(id, false); }).result, MAPI_E_NOT_FOUND);
}

TEST_F(StoreMessages, ThoseUnderDeletedItemsAreRecognized)
{
    CZebFolder bin = MakeFolder(m_deleted, "bin");
    CZebFolder inner = MakeFolder(bin, "inner");
    CZebMessage direct = SaveMessage(m_deleted, "direct");
    CZebMessage deep = SaveMessage(inner, "deep");
    CZebMessage outside = SaveMessage(m_inbox, "outside");
    EXPECT_TRUE(m_store->IsUnderDeleted(*m_session, direct));
    EXPECT_TRUE(m_store->IsUnderDeleted(*m_session, deep));
    EXPECT_TRUE(m_store->IsUnderDeleted(*m_session, inner));
    EXPECT_FALSE(m_store->IsUnderDeleted(*m_session, outside));
    EXPECT_FALSE(m_store->IsUnderDeleted(*m_session, m_inbox));
    EXPECT_FALSE(m_store->IsUnderDeleted(*m_session, m_deleted)) << "not under itself";
    EXPECT_FALSE(m_store->IsUnderDeleted(*m_session, *m_store));
    CZebFolder root = m_store->OpenRootFolder(MAPI_BEST_ACCESS);
    EXPECT_FALSE(m_store->IsUnderDeleted(*m_session, root));
}

TEST_F(StoreMessages, InformationMessageIsFoundOnceCreated)
{
    EXPECT_EQ(FailureOf([&] { m_inbox.OpenQorInfoMessage(); }).result, 1168);
    m_inbox.CreateQorInfoMessage(false, false);
    EXPECT_EQ(FailureOf([&] { m_inbox.OpenQorInfoMessage(); }).result, 1168) << "it was not saved";
    CZebMessage made = m_inbox.CreateQorInfoMessage(true, true);
    CZebMessage found = m_inbox.OpenQorInfoMessage();
    EXPECT_EQ(found.GetEntryID(), made.GetEntryID());
    EXPECT_STREQ(found.GetStringProp(PR_SUBJECT_A), "QorInfo");
    EXPECT_STREQ(found.GetDisplayName(), "QorInfo");
    EXPECT_STREQ(found.GetStringProp(PR_MESSAGE_CLASS_A), "IPM.Note.QorInfo");
    EXPECT_EQ(SubjectsOf(m_inbox), Names{"QorInfo"}) << "an ordinary message";
    EXPECT_TRUE(SubjectsOf(m_inbox, MAPI_ASSOCIATED).empty());
    EXPECT_EQ(FailureOf([&] { m_other.OpenQorInfoMessage(); }).result, 1168) << "each folder has its own";
    CZebPropValArray note(1);
    note[PR_BODY_A] = "n";
    found.SetProps(note, true, nullptr);
    EXPECT_STREQ(made.GetStringProp(PR_SUBJECT_A), "QorInfo");
}

TEST_F(StoreMessages, InformationMessageIsReopenedOrRecreated)
{
    CZebMessage first = m_inbox.CreateQorInfoMessage(false, true);
    CZebMessage again = m_inbox.CreateQorInfoMessage(true, true);
    EXPECT_EQ(again.GetEntryID(), first.GetEntryID());
    EXPECT_EQ(m_inbox.GetContentsTable(0).GetRowCount(), 1u);
    CZebMessage second = m_inbox.CreateQorInfoMessage(false, true);
    EXPECT_NE(second.GetEntryID(), first.GetEntryID());
    EXPECT_EQ(SubjectsOf(m_inbox), (Names{"QorInfo", "QorInfo"}));
    const CZebBinary found = m_inbox.OpenQorInfoMessage().GetEntryID();
    EXPECT_TRUE(found == first.GetEntryID() || found == second.GetEntryID());
}

TEST_F(StoreMessages, InformationMessageNeedsItsWholeSubject)
{
    for (const char* subject : {"QorInfo2", "My QorInfo", "Qor", ""})
    {
        SaveMessage(m_inbox, subject);
    }
    SaveMessage(m_inbox, "QorInfo", MAPI_ASSOCIATED);
    EXPECT_EQ(FailureOf([&] { m_inbox.OpenQorInfoMessage(); }).result, 1168);
    const CZebBinary id = SaveMessage(m_inbox, "QorInfo").GetEntryID();
    EXPECT_EQ(m_inbox.OpenQorInfoMessage().GetEntryID(), id) << "whatever its class";
}

TEST_F(StoreMessages, PropertiesOfAnyChildAreRead)
{
    CZebPropValArray values;
    const CZebBinary message = SaveMessage(m_inbox, "child").GetEntryID();
    m_inbox.GetPropsOfChild(*m_session, message, values, 2, PR_SUBJECT_A, PR_OBJECT_TYPE);
    ASSERT_EQ(values.Count(), 2u);
    EXPECT_STREQ(values[PR_SUBJECT_A].String(true), "child");
    m_inbox.GetPropsOfChild(*m_session, m_other.GetEntryID(), values, 1, PR_DISPLAY_NAME_A);
    EXPECT_STREQ(values[PR_DISPLAY_NAME_A].String(true), "other") << "a folder is a child too";
    m_inbox.GetPropsOfChild(*m_session, message, static_cast<SPropTagArray*>(nullptr), values);
    EXPECT_TRUE(values.hasRealValue(PR_SUBJECT_A)) << "all of them";
    EXPECT_GT(values.Count(), 5u);
}

TEST_F(StoreMessages, NonChildrenAreReadButRefused)
{
    SaveMessage(m_inbox, "child");
    const CZebBinary grandchild = SaveMessage(m_other, "grandchild").GetEntryID();
    const CZebBinary foreign = SaveMessage(m_deleted, "foreign").GetEntryID();
    CZebPropValArray values;
    CZebPropTagArray tags;
    tags.AddOne(PR_SUBJECT_A);
    for (const auto& [id, subject] : {std::pair{grandchild, "grandchild"}, std::pair{foreign, "foreign"}})
    {
        EXPECT_EQ(FailureOf([&, &id = id] { m_inbox.GetPropsOfChild(*m_session, id, values, 1, PR_SUBJECT_A); }).result,
                  MAPI_E_NOT_FOUND);
        EXPECT_STREQ(values[PR_SUBJECT_A].String(true), subject);
        values.Empty();
        EXPECT_EQ(FailureOf([&, &id = id] { m_inbox.GetPropsOfChild(*m_session, id, tags, values); }).result,
                  MAPI_E_NOT_FOUND);
        EXPECT_STREQ(values[PR_SUBJECT_A].String(true), subject);
    }
    EXPECT_EQ(FailureOf([&] { m_inbox.GetPropsOfChild(*m_session, m_inbox.GetEntryID(), tags, values); }).result,
              MAPI_E_NOT_FOUND)
        << "not its own child";
    m_other.DeleteMessage(grandchild);
    EXPECT_EQ(FailureOf([&] { m_other.GetPropsOfChild(*m_session, grandchild, tags, values); }).result,
              MAPI_E_NOT_FOUND);
    EXPECT_EQ(FailureOf([&] { m_inbox.GetPropsOfChild(*m_session, CZebBinary("0011"), tags, values); }).result,
              MAPI_E_INVALID_ENTRYID);
}

} // namespace
} // namespace zeb::test
