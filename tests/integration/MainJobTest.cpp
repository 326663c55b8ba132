// The main use case: from the start to the subjects of the inbox.
#include "tests/integration/Content.h"

#include <vector>

namespace zeb::test
{
namespace
{

using MainJob = Host;

std::vector<std::string> SubjectsOfInbox(CZebMsgStore& store)
{
    CZebTable table = store.OpenInboxFolder(MAPI_BEST_ACCESS).GetContentsTable(0);
    table.SetColumns(2, PR_ENTRYID, PR_SUBJECT_A);
    CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_ASCEND);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, order);
    std::vector<std::string> subjects;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        subjects.push_back(rows[i][PR_SUBJECT_A].String(true).GetString());
    }
    return subjects;
}

TEST_F(MainJob, ReadsSubjectsOfTheDefaultInbox)
{
    Start();
    CreateProfile("mine", File("mine.zeb"));
    EXPECT_STREQ(Zeb_GetMAPI().GetDefaultProfileName().GetString(), "mine");
    EXPECT_TRUE(Zeb_HasDefaultProfile());

    CZebSession session = LogOn();
    {
        CZebMsgStore store = OpenDefaultStore(session);
        CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
        for (const char* subject : {"two", "one"})
        {
            SaveMessage(inbox, subject);
        }
        EXPECT_EQ(SubjectsOfInbox(store), (std::vector<std::string>{"one", "two"}));
    }
    Zeb_GetMAPI().Uninitialize(&session);
    EXPECT_FALSE(session.IsValid());
    EXPECT_FALSE(Zeb_GetMAPI().WasInitialized());
}

TEST_F(MainJob, OpensTheProfilesDefaultStore)
{
    Start();
    CreateProfile("mine", File("mine.zeb"));
    CZebSession session = LogOn();
    {
        CZebMsgStore store = session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS);
        EXPECT_EQ(store.GetObjectType(), ULONG(MAPI_STORE));
    }
    Zeb_GetMAPI().Uninitialize(&session);
}

TEST_F(MainJob, MessagesSurviveARestartOfMapi)
{
    Start();
    CreateProfile("mine", File("mine.zeb"));
    {
        CZebSession session = LogOn("mine");
        {
            CZebMsgStore store = OpenDefaultStore(session);
            CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
            SaveMessage(inbox, "kept");
        }
        Zeb_GetMAPI().Uninitialize(&session);
    }
    Start();
    CZebSession session = LogOn("mine");
    {
        CZebMsgStore store = OpenDefaultStore(session);
        EXPECT_EQ(SubjectsOfInbox(store), (std::vector<std::string>{"kept"}));
    }
    session.Logoff(0, 0, 0);
}

TEST_F(MainJob, AnEmptyInboxHasNoRows)
{
    WithStore([&](CZebSession&, CZebMsgStore& store) { EXPECT_TRUE(SubjectsOfInbox(store).empty()); });
}

TEST_F(MainJob, FoldersAreFoundByName)
{
    WithStore([&](CZebSession&, CZebMsgStore& store)
    {
        CZebFolder top = store.OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
        top.CreateFolder("Projects", false, true, 0, "", FOLDER_GENERIC);
        EXPECT_STREQ(top.OpenFolderByName("Projects").GetDisplayName().GetString(), "Projects");
        EXPECT_EQ(FailureOf([&] { top.OpenFolderByName("Nowhere"); }).result, 1168);
        EXPECT_TRUE(store.OpenRootFolder(MAPI_BEST_ACCESS).IsValid());
        EXPECT_TRUE(store.OpenContactsFolder(MAPI_BEST_ACCESS).IsValid());
        for (const ULONG tag : {PR_IPM_OUTBOX_ENTRYID, PR_IPM_WASTEBASKET_ENTRYID, PR_IPM_SENTMAIL_ENTRYID,
                                PR_FINDER_ENTRYID, PR_VIEWS_ENTRYID})
        {
            EXPECT_TRUE(store.OpenSpecialFolder(tag, MAPI_BEST_ACCESS).IsValid()) << std::hex << tag;
        }
    });
}

TEST_F(MainJob, DeletedMessagesAreMovedOrGone)
{
    WithStore([&](CZebSession&, CZebMsgStore& store)
    {
        CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
        const CZebBinary first = SaveMessage(inbox, "away").GetEntryID();
        const CZebBinary second = SaveMessage(inbox, "away").GetEntryID();
        CZebFolder deleted = store.OpenSpecialFolder(PR_IPM_WASTEBASKET_ENTRYID, MAPI_BEST_ACCESS);
        store.DeleteMessage(first, false);
        EXPECT_EQ(deleted.GetContentsTable(0).GetRowCount(), 1u);
        store.DeleteMessage(second, true);
        EXPECT_EQ(deleted.GetContentsTable(0).GetRowCount(), 1u);
        EXPECT_EQ(inbox.GetContentsTable(0).GetRowCount(), 0u);
    });
}

} // namespace
} // namespace zeb::test
