#include "platform/tags.h"
#include "tests/zebstore/provider/ProviderFixture.h"

namespace zebstore
{
namespace
{

class Folders : public Provider
{
protected:
    HRESULT DeleteCode(IMAPIFolder& parent, IMAPIFolder& folder, ULONG flags)
    {
        const Bytes id = GetBytes(&folder, PR_ENTRYID);
        return parent.DeleteFolder(static_cast<ULONG>(id.size()), Id(id), 0, nullptr, flags);
    }

    static Texts Subfolders(IMAPIFolder& folder, ULONG flags = 0)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(folder.GetHierarchyTable(flags, &table), S_OK);
        const Rows rows(table, {PR_DISPLAY_NAME_A});
        Texts names;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            names.push_back(rows.TextCell(i, 0));
        }
        return names;
    }
};

TEST_F(Folders, AreCreatedOnceOrOpened)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> made = NewFolder(*inbox, "Projects");
    IMAPIFolder* again = nullptr;
    EXPECT_EQ(inbox->CreateFolder(FOLDER_GENERIC, Text("projects"), nullptr, nullptr, 0, &again), MAPI_E_COLLISION);
    EXPECT_EQ(again, nullptr);
    const Ref<IMAPIFolder> opened = NewFolder(*inbox, "projects", OPEN_IF_EXISTS);
    EXPECT_EQ(GetBytes(opened.Get(), PR_ENTRYID), GetBytes(made.Get(), PR_ENTRYID));
    EXPECT_EQ(Subfolders(*inbox), Texts({"Projects"}));
    EXPECT_EQ(inbox->CreateFolder(FOLDER_GENERIC, Text(""), nullptr, nullptr, 0, &again), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(inbox->CreateFolder(FOLDER_SEARCH, Text("s"), nullptr, nullptr, 0, &again), MAPI_E_NO_SUPPORT);
}

TEST_F(Folders, KnowTheirPlace)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> made = NewFolder(*inbox, "Projects");
    EXPECT_EQ(GetBytes(made.Get(), PR_PARENT_ENTRYID), InboxId());
    EXPECT_EQ(GetLong(made.Get(), PR_FOLDER_TYPE), LONG(FOLDER_GENERIC));
    EXPECT_EQ(GetLong(made.Get(), PR_OBJECT_TYPE), LONG(MAPI_FOLDER));
    EXPECT_TRUE(Get(inbox.Get(), PR_SUBFOLDERS)->Value.b);
    EXPECT_FALSE(Get(made.Get(), PR_SUBFOLDERS)->Value.b);
    EXPECT_FALSE(GetBytes(inbox.Get(), PR_IPM_CONTACT_ENTRYID).empty());
    EXPECT_TRUE(GetBytes(made.Get(), PR_IPM_CONTACT_ENTRYID).empty());
}

TEST_F(Folders, SaveTheirPropertiesAtOnce)
{
    const Ref<IMAPIFolder> made = NewFolder(*Inbox(), "Projects");
    SPropValue hidden{};
    hidden.ulPropTag = PR_ATTR_HIDDEN;
    hidden.Value.b = TRUE;
    EXPECT_EQ(Set(made.Get(), hidden), S_OK);
    EXPECT_EQ(Set(made.Get(), NarrowValue(PR_CONTAINER_CLASS_A, "IPF.Task")), S_OK);
    const Ref<IMAPIFolder> again = OpenFolder(GetBytes(made.Get(), PR_ENTRYID), 0);
    EXPECT_TRUE(Get(again.Get(), hidden.ulPropTag)->Value.b);
    EXPECT_EQ(GetText(again.Get(), PR_CONTAINER_CLASS_A), "IPF.Task");
    EXPECT_EQ(Set(again.Get(), hidden), MAPI_E_NO_ACCESS);
    EXPECT_EQ(Set(made.Get(), LongValue(PR_CONTENT_COUNT, 5)), MAPI_E_COMPUTED);
    EXPECT_EQ(made->SaveChanges(KEEP_OPEN_READWRITE | FORCE_SAVE), S_OK);
}

TEST_F(Folders, CountTheirMessages)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    SaveMessage(*inbox, "a");
    const Bytes b = SaveMessage(*inbox, "b");
    EntryList list(b);
    EXPECT_EQ(inbox->SetReadFlags(&list, 0, nullptr, CLEAR_READ_FLAG), S_OK);
    EXPECT_EQ(GetLong(inbox.Get(), PR_CONTENT_COUNT), 2);
    EXPECT_EQ(GetLong(inbox.Get(), PR_CONTENT_UNREAD), 1);
    EXPECT_EQ(inbox->SetReadFlags(nullptr, 0, nullptr, 0), S_OK);
    EXPECT_EQ(GetLong(inbox.Get(), PR_CONTENT_UNREAD), 0);
}

TEST_F(Folders, KeepAssociatedContentsApart)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> hidden = NewMessage(*inbox, "hidden", MAPI_ASSOCIATED);
    EXPECT_EQ(hidden->SaveChanges(0), S_OK);
    EXPECT_EQ(Subjects(*inbox), Texts());
    EXPECT_EQ(Subjects(*inbox, MAPI_ASSOCIATED), Texts({"hidden"}));
}

TEST_F(Folders, DeleteTheirMessages)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Bytes a = SaveMessage(*inbox, "a");
    SaveMessage(*inbox, "b");
    EntryList list(a);
    EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, 0), S_OK);
    EXPECT_EQ(Subjects(*inbox), Texts({"b"}));
    EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, 0), MAPI_W_PARTIAL_COMPLETION);
    const Bytes id = InboxId();
    EntryList wrong(id);
    EXPECT_EQ(inbox->DeleteMessages(&wrong, 0, nullptr, 0), MAPI_E_INVALID_ENTRYID);
}

TEST_F(Folders, CopyAndMoveMessages)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> other = NewFolder(*inbox, "Other");
    const Bytes a = SaveMessage(*inbox, "a");
    EntryList list(a);
    EXPECT_EQ(inbox->CopyMessages(&list, &IID_IMAPIFolder, other.Get(), 0, nullptr, 0), S_OK);
    EXPECT_EQ(Subjects(*inbox), Texts({"a"}));
    EXPECT_EQ(Subjects(*other), Texts({"a"}));
    EXPECT_EQ(inbox->CopyMessages(&list, &IID_IMAPIFolder, other.Get(), 0, nullptr, MESSAGE_MOVE), S_OK);
    EXPECT_EQ(Subjects(*inbox), Texts());
    EXPECT_EQ(Subjects(*other), Texts({"a", "a"}));
    EXPECT_EQ(inbox->CopyMessages(&list, nullptr, other.Get(), 0, nullptr, 0), MAPI_W_PARTIAL_COMPLETION);
    EXPECT_EQ(inbox->CopyMessages(&list, nullptr, nullptr, 0, nullptr, 0), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Folders, DeleteTheirContentOnlyWhenAsked)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> parent = NewFolder(*inbox, "P");
    {
        const Ref<IMAPIFolder> child = NewFolder(*parent, "C");
    }
    EXPECT_EQ(DeleteCode(*inbox, *parent, 0), MAPI_E_HAS_FOLDERS);
    SaveMessage(*parent);
    EXPECT_EQ(DeleteCode(*inbox, *parent, DEL_FOLDERS), MAPI_E_HAS_MESSAGES);
    EXPECT_EQ(DeleteCode(*inbox, *parent, DEL_FOLDERS | DEL_MESSAGES), S_OK);
    EXPECT_EQ(Subfolders(*inbox), Texts());
    EXPECT_EQ(DeleteCode(*OpenFolder(GetBytes(inbox.Get(), PR_PARENT_ENTRYID)), *inbox, DEL_FOLDERS | DEL_MESSAGES),
              MAPI_E_NO_ACCESS);
}

TEST_F(Folders, AreCopiedAndMovedAsTrees)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> source = NewFolder(*inbox, "Source");
    const Ref<IMAPIFolder> inner = NewFolder(*source, "Inner");
    const Ref<IMAPIFolder> target = NewFolder(*inbox, "Target");
    SaveMessage(*source, "s");
    SaveMessage(*inner, "i");
    const Bytes id = GetBytes(source.Get(), PR_ENTRYID);
    const ULONG size = static_cast<ULONG>(id.size());
    EXPECT_EQ(inbox->CopyFolder(size, Id(id), nullptr, target.Get(), Text("Copy"), 0, nullptr, COPY_SUBFOLDERS), S_OK);
    EXPECT_EQ(Subfolders(*target, CONVENIENT_DEPTH), Texts({"Copy", "Inner"}));
    EXPECT_EQ(inbox->CopyFolder(size, Id(id), nullptr, inner.Get(), nullptr, 0, nullptr, FOLDER_MOVE),
              MAPI_E_FOLDER_CYCLE);
    EXPECT_EQ(inbox->CopyFolder(size, Id(id), nullptr, inner.Get(), nullptr, 0, nullptr, COPY_SUBFOLDERS),
              MAPI_E_FOLDER_CYCLE);
    EXPECT_EQ(inbox->CopyFolder(size, Id(id), nullptr, target.Get(), nullptr, 0, nullptr, FOLDER_MOVE), S_OK);
    EXPECT_EQ(Subfolders(*inbox), Texts({"Target"}));
    EXPECT_EQ(Subfolders(*target), Texts({"Copy", "Source"}));
}

TEST_F(Folders, AreEmptied)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    {
        const Ref<IMAPIFolder> child = NewFolder(*inbox, "C");
    }
    SaveMessage(*inbox);
    EXPECT_EQ(inbox->EmptyFolder(0, nullptr, 0), S_OK);
    EXPECT_EQ(Subfolders(*inbox), Texts());
    EXPECT_EQ(Subjects(*inbox), Texts());
}

TEST_F(Folders, KeepAStatusOfEachMessage)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Bytes id = SaveMessage(*inbox);
    const ULONG size = static_cast<ULONG>(id.size());
    ULONG status = 9;
    EXPECT_EQ(inbox->GetMessageStatus(size, Id(id), 0, &status), S_OK);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(inbox->SetMessageStatus(size, Id(id), 6, 4, &status), S_OK);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(inbox->GetMessageStatus(size, Id(id), 0, &status), S_OK);
    EXPECT_EQ(status, 4u);
    EXPECT_EQ(NewFolder(*inbox, "x")->GetMessageStatus(size, Id(id), 0, &status), MAPI_E_NOT_FOUND);
}

TEST_F(Folders, OpenedForReadingRefuseChanges)
{
    const Ref<IMAPIFolder> inbox = OpenFolder(InboxId(), 0);
    IMessage* message = nullptr;
    EXPECT_EQ(inbox->CreateMessage(nullptr, 0, &message), MAPI_E_NO_ACCESS);
    EXPECT_NE(ErrorText(*inbox.Get(), MAPI_E_NO_ACCESS).find("reading"), std::string::npos);
    IMAPIFolder* folder = nullptr;
    EXPECT_EQ(inbox->CreateFolder(FOLDER_GENERIC, Text("x"), nullptr, nullptr, 0, &folder), MAPI_E_NO_ACCESS);
    EXPECT_EQ(inbox->EmptyFolder(0, nullptr, 0), MAPI_E_NO_ACCESS);
}

TEST_F(Folders, HaveNoSearchCriteria)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    EXPECT_EQ(inbox->SetSearchCriteria(nullptr, nullptr, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(inbox->GetSearchCriteria(0, nullptr, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(inbox->SaveContentsSort(nullptr, 0), MAPI_E_NO_SUPPORT);
}

TEST_F(Folders, GiveTheirTablesAsProperties)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    SaveMessage(*inbox, "a");
    IUnknown* table = nullptr;
    ASSERT_EQ(inbox->OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMAPITable, 0, 0, &table), S_OK);
    const Rows rows(static_cast<IMAPITable*>(table), {PR_SUBJECT_A});
    EXPECT_EQ(rows.Count(), 1u);
    EXPECT_EQ(inbox->OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMessage, 0, 0, &table), MAPI_E_INTERFACE_NOT_SUPPORTED);
    NewFolder(*inbox, "Projects");
    ASSERT_EQ(inbox->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, &table), S_OK);
    EXPECT_EQ(Rows(static_cast<IMAPITable*>(table), {PR_DISPLAY_NAME_A}).TextCell(0, 0), "Projects");
}

TEST_F(Folders, TheirTablesAreCompleteAndFlat)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Inbox()->GetContentsTable(0, &table), S_OK);
    const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
    ULONG status = 7;
    EXPECT_EQ(table->WaitForCompletion(0, 0, &status), S_OK);
    EXPECT_EQ(status, ULONG(TBLSTAT_COMPLETE));
    EXPECT_EQ(table->WaitForCompletion(0, 0, nullptr), S_OK);
    EXPECT_EQ(table->GetCollapseState(0, 0, nullptr, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(table->SetCollapseState(0, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    void* same = nullptr;
    EXPECT_EQ(table->QueryInterface(IID_IMessage, &same), E_NOINTERFACE);
    ASSERT_EQ(table->QueryInterface(IID_IMAPITable, &same), S_OK);
    static_cast<IUnknown*>(same)->Release();
}

TEST_F(Folders, MakeOnlyMessagesAndFolders)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    IMessage* message = nullptr;
    EXPECT_EQ(inbox->CreateMessage(&IID_IMsgStore, 0, &message), MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_EQ(message, nullptr);
    IMAPIFolder* folder = nullptr;
    EXPECT_EQ(inbox->CreateFolder(FOLDER_GENERIC, Text("x"), nullptr, &IID_IMsgStore, 0, &folder),
              MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_EQ(folder, nullptr);
}

TEST_F(Folders, AreCopiedByTheirParentsOnly)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> child = NewFolder(*inbox, "Projects");
    const Bytes below = GetBytes(NewFolder(*child, "Deep").Get(), PR_ENTRYID);
    const auto size = static_cast<ULONG>(below.size());
    EXPECT_EQ(inbox->CopyFolder(size, Id(below), nullptr, inbox.Get(), nullptr, 0, nullptr, 0), MAPI_E_NOT_FOUND);
    EXPECT_EQ(child->CopyFolder(size, Id(below), nullptr, NewMessage(*inbox).Get(), nullptr, 0, nullptr, 0),
              MAPI_E_NO_SUPPORT);
}

} // namespace
} // namespace zebstore
