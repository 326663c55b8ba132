// The store itself: its special folders, the types of opened objects, its tables, and the references that keep it open.
#include "platform/tags.h"
#include "tests/integration/Content.h"

namespace zeb::test
{
namespace
{

class Store : public StoreHost
{
protected:
    HRESULT Refused(const CZebBinary& id, CZebIProp& target)
    {
        const HRESULT byStore = FailureOf([&] { m_store->OpenEntry(id, target, MAPI_BEST_ACCESS); }).result;
        EXPECT_FALSE(target.IsValid());
        CZebFolder root = m_store->OpenRootFolder(0);
        EXPECT_EQ(FailureOf([&] { root.OpenEntry(id, target, MAPI_BEST_ACCESS); }).result, byStore);
        EXPECT_FALSE(target.IsValid());
        EXPECT_EQ(FailureOf([&] { m_session->OpenEntry(id, target, MAPI_BEST_ACCESS); }).result, byStore);
        EXPECT_FALSE(target.IsValid());
        return byStore;
    }
    CZebBinary m_message;
    CZebBinary m_folder;

    Store()
    {
        CZebFolder inbox = Inbox();
        m_message = SaveMessage(inbox, "m").GetEntryID();
        m_folder = inbox.GetEntryID();
    }
};

TEST_F(Store, OpensEverySpecialFolderItNames)
{
    const std::pair<ULONG, const char*> folders[] = {{PR_IPM_SUBTREE_ENTRYID, "Top of Personal Folders"},
                                                     {PR_IPM_WASTEBASKET_ENTRYID, "Deleted Items"},
                                                     {PR_IPM_OUTBOX_ENTRYID, "Outbox"},
                                                     {PR_IPM_SENTMAIL_ENTRYID, "Sent Items"},
                                                     {PR_FINDER_ENTRYID, "Search Root"},
                                                     {PR_VIEWS_ENTRYID, "Personal Views"},
                                                     {PR_COMMON_VIEWS_ENTRYID, "Common Views"}};
    const CZebBinary root = m_store->OpenRootFolder(MAPI_BEST_ACCESS).GetEntryID();
    for (const auto& [tag, name] : folders)
    {
        SCOPED_TRACE(name);
        CZebFolder folder = m_store->OpenSpecialFolder(tag, MAPI_BEST_ACCESS);
        EXPECT_EQ(folder.GetEntryID(), m_store->GetSpecialFolderEntryID(tag));
        EXPECT_EQ(folder.GetObjectType(), static_cast<ULONG>(MAPI_FOLDER));
        EXPECT_STREQ(folder.GetDisplayName(), name);
        EXPECT_TRUE(folder.IsChildOf(*m_session, root, false));
        EXPECT_EQ(NumberOf(folder, PR_ACCESS_LEVEL), 1);
        CZebFolder readOnly = m_store->OpenSpecialFolder(tag, 0);
        EXPECT_EQ(NumberOf(readOnly, PR_ACCESS_LEVEL), 0) << "the flags are handed on";
    }
    EXPECT_EQ(FailureOf([&] { m_store->GetSpecialFolderEntryID(PR_SUBJECT_A); }).result, MAPI_E_INVALID_TYPE);
    EXPECT_EQ(FailureOf([&] { m_store->OpenSpecialFolder(PROP_TAG(PT_BINARY, 0x6001), 0); }).result,
              MAPI_E_INVALID_TYPE);
}

TEST_F(Store, NoBytesOpenTheRoot)
{
    CZebFolder root = m_store->OpenRootFolder(MAPI_BEST_ACCESS);
    EXPECT_EQ(NumberOf(root, PR_FOLDER_TYPE), static_cast<LONG>(FOLDER_ROOT));
    CZebFolder again;
    m_store->OpenEntry(root.GetEntryID(), again, 0);
    EXPECT_EQ(again.GetEntryID(), root.GetEntryID());
    EXPECT_FALSE(root.IsChildOf(*m_session, root.GetEntryID(), false));
    EXPECT_EQ(NumberOf(root, PR_ACCESS_LEVEL), 1);
    CZebFolder readOnly = m_store->OpenRootFolder(0);
    EXPECT_EQ(NumberOf(readOnly, PR_ACCESS_LEVEL), 0);
}

TEST_F(Store, TheInboxNamesTheContactsFolder)
{
    CZebFolder contacts = m_store->OpenContactsFolder(MAPI_BEST_ACCESS);
    EXPECT_STREQ(contacts.GetDisplayName(), "Contacts");
    EXPECT_EQ(contacts.GetEntryID(), Inbox().GetBin(PR_IPM_CONTACT_ENTRYID));
    EXPECT_EQ(NumberOf(contacts, PR_ACCESS_LEVEL), 1);
    CZebFolder readOnly = m_store->OpenContactsFolder(0);
    EXPECT_EQ(NumberOf(readOnly, PR_ACCESS_LEVEL), 0);
    EXPECT_EQ(FailureOf([&] { m_store->GetSpecialFolderEntryID(PR_IPM_CONTACT_ENTRYID); }).result, MAPI_E_INVALID_TYPE);
}

TEST_F(Store, TheInboxReceivesEveryClass)
{
    EXPECT_STREQ(Inbox().GetDisplayName(), "Inbox");
    CZebFolder top = m_store->OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
    CZebFolder post = MakeFolder(top, "Post");
    const CZebBinary id = post.GetEntryID();
    const SBinary& bytes = id;
    const auto store = InterfaceOf<IMsgStore>(*m_store, IID_IMsgStore);
    auto* const entry = reinterpret_cast<LPENTRYID>(bytes.lpb);
    char note[] = "IPM.Note";
    char every[] = "";
    EXPECT_EQ(store->SetReceiveFolder(reinterpret_cast<LPTSTR>(note), 0, bytes.cb, entry), S_OK);
    EXPECT_STREQ(Inbox().GetDisplayName(), "Inbox") << "that was one class only";
    EXPECT_EQ(store->SetReceiveFolder(reinterpret_cast<LPTSTR>(every), 0, bytes.cb, entry), S_OK);
    EXPECT_STREQ(Inbox().GetDisplayName(), "Post");
    EXPECT_EQ(FailureOf([&] { m_store->OpenContactsFolder(0); }).result, MAPI_E_INVALID_TYPE)
        << "this one names no contacts";
    CZebFolder readOnly = m_store->OpenInboxFolder(0);
    EXPECT_EQ(NumberOf(readOnly, PR_ACCESS_LEVEL), 0);
}

TEST_F(Store, TheDefaultOneIsMarked)
{
    CZebTable table = m_session->GetMsgStoresTable();
    table.SetColumns(4, PR_ENTRYID, PR_DEFAULT_STORE, PR_DISPLAY_NAME_A, PR_OBJECT_TYPE);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_TRUE(static_cast<bool>(rows[0][PR_DEFAULT_STORE]));
    EXPECT_EQ(static_cast<LONG>(rows[0][PR_OBJECT_TYPE]), MAPI_STORE);
    CZebMsgStore byRow =
        m_session->OpenMsgStore(rows[0][PR_ENTRYID].operator const SBinary&(), nullptr, MAPI_BEST_ACCESS);
    EXPECT_TRUE(m_session->CompareEntryIDs(byRow.GetEntryID(), m_store->GetEntryID()));
    EXPECT_EQ(byRow.OpenInboxFolder(0).GetEntryID(), m_folder);
    EXPECT_EQ(m_store->GetObjectType(), static_cast<ULONG>(MAPI_STORE));
}

TEST_F(Store, RefusesObjectsOfAnotherType)
{
    // A wrapper with a specific interface is refused by the provider, one without by the library.
    CZebFolder folder = Inbox();
    EXPECT_EQ(Refused(m_message, folder), MAPI_E_INTERFACE_NOT_SUPPORTED);
    CZebMessage message;
    EXPECT_EQ(Refused(m_folder, message), MAPI_E_INTERFACE_NOT_SUPPORTED);
    CZebContainer container;
    EXPECT_EQ(Refused(m_message, container), MAPI_E_INTERFACE_NOT_SUPPORTED);
    CZebDistList list;
    EXPECT_EQ(Refused(m_folder, list), MAPI_E_INTERFACE_NOT_SUPPORTED);
    CZebMailUser user;
    EXPECT_EQ(Refused(m_folder, user), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(Refused(m_message, user), MAPI_E_INVALID_TYPE);
}

TEST_F(Store, OpensPlainObjectsAndContainers)
{
    CZebPropObj object;
    m_store->OpenEntry(m_message, object, 0);
    EXPECT_EQ(object.GetObjectType(), static_cast<ULONG>(MAPI_MESSAGE));
    m_store->OpenEntry(m_folder, object, 0);
    EXPECT_EQ(object.GetObjectType(), static_cast<ULONG>(MAPI_FOLDER));
    CZebContainer container;
    m_store->OpenEntry(m_folder, container, 0);
    EXPECT_EQ(container.GetContentsTable(0).GetRowCount(), 1u);
    EXPECT_FALSE(container.IsExchange());
    EXPECT_FALSE(container.IsWAB());
}

TEST_F(Store, RefusesUnknownIdentifiers)
{
    CZebPropObj target;
    EXPECT_EQ(FailureOf([&] { m_store->OpenEntry(CZebBinary("00112233"), target, 0); }).result, MAPI_E_INVALID_ENTRYID);
    const CStringA whole = m_message.String();
    for (int digits = 2; digits < whole.GetLength(); digits += 2)
    {
        m_store->OpenEntry(m_folder, target, 0);
        const CZebBinary cut(static_cast<const char*>(whole.Left(digits)));
        EXPECT_EQ(FailureOf([&] { m_store->OpenEntry(cut, target, 0); }).result, MAPI_E_INVALID_ENTRYID) << digits;
        EXPECT_FALSE(target.IsValid());
    }
}

TEST_F(Store, GivesFolderTablesByTheirFlags)
{
    CZebFolder inbox = Inbox();
    CZebFolder child = MakeFolder(inbox, "child");
    MakeFolder(child, "grandchild");
    SaveMessage(inbox, "associated", MAPI_ASSOCIATED);
    const std::pair<ULONG, Names> contents[] = {
        {0, {"m"}},
        {MAPI_DEFERRED_ERRORS, {"m"}},
        {MAPI_UNICODE, {"m"}},
        {MAPI_ASSOCIATED, {"associated"}},
        {MAPI_ASSOCIATED | MAPI_UNICODE | MAPI_DEFERRED_ERRORS, {"associated"}}};
    for (const auto& [flags, subjects] : contents)
    {
        EXPECT_EQ(SubjectsOf(inbox, flags), subjects) << std::hex << flags;
    }
    const std::pair<ULONG, Names> hierarchy[] = {
        {0, {"child"}},
        {MAPI_DEFERRED_ERRORS, {"child"}},
        {MAPI_UNICODE, {"child"}},
        {CONVENIENT_DEPTH, {"child", "grandchild"}},
        {CONVENIENT_DEPTH | MAPI_UNICODE | MAPI_DEFERRED_ERRORS, {"child", "grandchild"}}};
    for (const auto& [flags, names] : hierarchy)
    {
        EXPECT_EQ(SubfoldersOf(inbox, flags), names) << std::hex << flags;
    }
    constexpr ULONG SoftDeleted = 2;
    EXPECT_EQ(SubjectsOf(inbox, SoftDeleted), Names{}) << "what is deleted is gone";
    EXPECT_EQ(SubfoldersOf(inbox, SoftDeleted), Names{});
    for (const ULONG unknown : {ULONG(0x20000000), ULONG(0x40000000)})
    {
        EXPECT_EQ(FailureOf([&] { inbox.GetContentsTable(unknown); }).result, MAPI_E_UNKNOWN_FLAGS);
        EXPECT_EQ(FailureOf([&] { inbox.GetHierarchyTable(unknown); }).result, MAPI_E_UNKNOWN_FLAGS);
    }
}

TEST_F(Store, TablesHaveNarrowTextByDefault)
{
    CZebFolder inbox = Inbox();
    MakeFolder(inbox, "child");
    for (const bool wide : {false, true})
    {
        const ULONG flags = wide ? MAPI_UNICODE : 0;
        const ULONG wanted = wide ? PT_UNICODE : PT_STRING8;
        for (CZebTable table : {inbox.GetContentsTable(flags), inbox.GetHierarchyTable(flags)})
        {
            CZebRowSet rows;
            table.QueryRows(&rows, 0, nullptr, nullptr);
            ASSERT_EQ(rows.Count(), 1u);
            size_t texts = 0;
            for (ULONG i = 0; i < rows[0].Count(); ++i)
            {
                const ULONG type = PROP_TYPE(rows[0].TagAt(static_cast<int>(i)));
                EXPECT_NE(type, static_cast<ULONG>(wide ? PT_STRING8 : PT_UNICODE)) << i;
                texts += type == wanted ? 1 : 0;
            }
            EXPECT_GT(texts, 0u);
        }
    }
}

TEST_F(Store, TheWholeTreesHierarchyShowsDepth)
{
    CZebFolder inbox = Inbox();
    CZebFolder child = MakeFolder(inbox, "child");
    MakeFolder(child, "grandchild");
    CZebTable table = inbox.GetHierarchyTable(CONVENIENT_DEPTH);
    table.SetColumns(1, PR_DEPTH);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ASSERT_EQ(rows.Count(), 2u);
    EXPECT_EQ(static_cast<LONG>(rows[0][PR_DEPTH]), 1);
    EXPECT_EQ(static_cast<LONG>(rows[1][PR_DEPTH]), 2);
}

TEST_F(Store, CopiesOfWrappersOutliveTheOriginal)
{
    auto store = std::make_unique<CZebMsgStore>(*m_store);
    m_store->Free();
    auto folder = std::make_unique<CZebFolder>(store->OpenInboxFolder(MAPI_BEST_ACCESS));
    auto message = std::make_unique<CZebMessage>();
    folder->OpenEntry(m_message, *message, MAPI_BEST_ACCESS);
    store.reset();
    CZebFolder folderCopy(*folder);
    CZebContainer asContainer(*folder);
    CZebFolder assigned;
    assigned = *folder;
    folder.reset();
    const CZebMessage messageCopy(*message);
    message.reset();
    EXPECT_EQ(SubjectsOf(folderCopy), Names{"m"});
    EXPECT_EQ(asContainer.GetContentsTable(0).GetRowCount(), 1u);
    assigned.DeleteMessage(m_message);
    EXPECT_TRUE(SubjectsOf(folderCopy).empty());
    CZebTable table = folderCopy.GetContentsTable(0);
    folderCopy.Free();
    assigned.Free();
    asContainer.Free();
    CZebTable tableCopy(table);
    table = CZebTable();
    EXPECT_EQ(tableCopy.GetRowCount(), 0u);
    EXPECT_EQ(FailureOf([&] { CZebMessage(messageCopy).SetDisplayName("x"); }).result, MAPI_E_OBJECT_DELETED);
}

TEST_F(Store, RowsThatVanishAreLeftOut)
{
    CZebFolder inbox = Inbox();
    for (const char* subject : {"n", "o", "p"})
    {
        SaveMessage(inbox, subject);
    }
    CZebTable table = inbox.GetContentsTable(0);
    table.SetColumns(2, PR_ENTRYID, PR_SUBJECT_A);
    const ULONG count = table.GetRowCount();
    EXPECT_EQ(count, 4u);
    inbox.DeleteMessage(m_message);
    CZebRowSet rows;
    table.QueryRows(&rows, static_cast<LONG>(count), nullptr, nullptr);
    ASSERT_EQ(rows.Count(), 3u);
    EXPECT_STREQ(rows[0][PR_SUBJECT_A].String(true), "n");
    inbox.EmptyFolder(nullptr, 0, nullptr);
    CZebMessage gone;
    EXPECT_EQ(FailureOf([&] { inbox.OpenEntry(rows[0][PR_ENTRYID].operator const SBinary&(), gone, 0); }).result,
              MAPI_E_NOT_FOUND);
    EXPECT_FALSE(gone.IsValid());
    table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    table.QueryRows(&rows, static_cast<LONG>(count), nullptr, nullptr);
    EXPECT_EQ(rows.Count(), 0u);
}

} // namespace
} // namespace zeb::test
