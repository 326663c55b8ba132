// Folders whose calls fail or give nothing, and folders of a derived class.
#include "FolderFixture.h"
#include "tests/support/doubles/RecordingStore.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/SESSION.h"
#include "zebapi/TAGS.h"

#include <functional>

using namespace zeb::test;

namespace
{

class FailingFolder : public FolderFixture
{
protected:
    FailingFolder()
    {
        m_double.m_openable.Add("hollow", nullptr, MAPI_FOLDER);
        m_subfolders.m_rows = {{{PR_ENTRYID, 0, "one"}, {PR_DISPLAY_NAME_A, 0, "sub"}}};
    }
    /// What the exception says when the object has an extended error of its own.
    static std::string ErrorOf(const char* object)
    {
        return std::string("Ver:1, Error:why not, Component:") + object + ", LowLewelError:2, Context:3 \n";
    }
};

} // namespace

TEST_F(FailingFolder, EveryCallCarriesTheExtendedError)
{
    m_double.m_error = "why not";
    SBinaryArray none = {0, nullptr};
    CZebMessage message;
    const std::vector<std::pair<const char*, std::function<void()>>> calls = {
        {"OpenEntry", [&] { m_folder.OpenEntry(ID("one"), message, 0); }},
        {"GetContentsTable", [&] { m_folder.GetContentsTable(0); }},
        {"GetHierarchyTable", [&] { m_folder.GetHierarchyTable(0); }},
        {"DeleteFolder", [&] { m_folder.DeleteFolder(ID("x"), nullptr, 0, nullptr); }},
        {"DeleteMessages", [&] { m_folder.DeleteMessages(&none, nullptr, 0, nullptr); }},
        {"CopyMessages", [&] { m_folder.CopyMessages(&none, m_folder, 0, nullptr, nullptr); }},
        {"EmptyFolder", [&] { m_folder.EmptyFolder(nullptr, 0, nullptr); }},
        {"CreateMessage", [&] { m_folder.CreateMessage(0); }},
        {"CreateFolder", [&] { m_folder.CreateFolder("n", false, false, 0, nullptr, FOLDER_GENERIC); }}};
    for (const auto& [name, call] : calls)
    {
        m_double.Fail(name, MAPI_E_NO_ACCESS);
        EXPECT_EQ(Described(call), ErrorOf("folder")) << name;
        EXPECT_EQ(Thrown(call), MAPI_E_NO_ACCESS) << name;
    }
}

TEST_F(FailingFolder, WarningsPass)
{
    SBinary id = ID("a");
    SBinaryArray list = {1, &id};
    for (const char* name : {"DeleteMessages", "CopyMessages", "EmptyFolder", "DeleteFolder"})
    {
        m_double.Fail(name, MAPI_W_PARTIAL_COMPLETION);
    }
    m_folder.DeleteMessages(&list, nullptr, 0, nullptr);
    m_folder.CopyMessages(&list, m_folder, 0, nullptr, nullptr);
    m_folder.EmptyFolder(nullptr, 0, nullptr);
    m_folder.DeleteFolder(ID("x"), nullptr, 0, nullptr);
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(FailingFolder, AnEmptyOneRaisesEPointer)
{
    CZebFolder empty;
    CZebPropValArray values(1);
    values[PR_SUBJECT_A] = "s";
    CZebPropTagArray tags;
    tags.AddOne(PR_SUBJECT_A);
    SBinary id = ID("a");
    SBinaryArray list = {1, &id};
    RecordingSession sessionDouble(m_journal);
    CZebSession session(&sessionDouble);
    const std::vector<std::pair<const char*, std::function<void()>>> uses = {
        {"OpenFolderByName", [&] { empty.OpenFolderByName("n"); }},
        {"OpenFolderByNameW", [&] { empty.OpenFolderByNameW(ZEBW("n")); }},
        {"CreateFolder", [&] { empty.CreateFolder("n", true, true, 0, nullptr, FOLDER_GENERIC); }},
        {"CreateFolder, open", [&] { empty.CreateFolder("n", true, true, 1, nullptr, FOLDER_GENERIC); }},
        {"DeleteFolder", [&] { empty.DeleteFolder(id, nullptr, 0, nullptr); }},
        {"DeleteMessages", [&] { empty.DeleteMessages(&list, nullptr, 0, nullptr); }},
        {"CopyMessages", [&] { empty.CopyMessages(&list, m_folder, 0, nullptr, nullptr); }},
        {"MoveMessages", [&] { empty.MoveMessages(&list, m_folder, 0, nullptr, nullptr); }},
        {"EmptyFolder", [&] { empty.EmptyFolder(nullptr, 0, nullptr); }},
        {"CreateMessage", [&] { empty.CreateMessage(0); }},
        {"CreateMessage with properties", [&] { empty.CreateMessage(values, true, 0); }},
        {"OpenQorInfoMessage", [&] { empty.OpenQorInfoMessage(); }},
        {"CreateQorInfoMessage", [&] { empty.CreateQorInfoMessage(true, true); }},
        {"GetPropsOfChild", [&] { empty.GetPropsOfChild(session, id, tags, values); }},
        {"GetPropsOfChild by numbers", [&] { empty.GetPropsOfChild(session, id, values, 1, PR_SUBJECT_A); }}};
    for (const auto& [name, use] : uses)
    {
        EXPECT_EQ(Raised(use), E_POINTER) << name;
    }
    EXPECT_TRUE(Calls().empty());
    EXPECT_TRUE(values.hasRealValue(PR_SUBJECT_A)) << "the result is left alone";
}

TEST_F(FailingFolder, FailedOpensLeaveTheTargetEmpty)
{
    CZebFolder target(&m_existing);
    EXPECT_EQ(Thrown([&] { m_folder.OpenEntry(ID("gone"), target, 0); }), MAPI_E_NOT_FOUND);
    EXPECT_FALSE(target.IsValid());
    EXPECT_EQ(m_existing.References(), 0u);
}

TEST_F(FailingFolder, SuccessWithoutAnEntryFails)
{
    CZebFolder target;
    EXPECT_EQ(Thrown([&] { m_folder.OpenEntry(ID("hollow"), target, 0); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Thrown([&] { m_folder.GetContentsTable(0); }), S_OK);
    m_double.m_contents = nullptr;
    m_double.m_hierarchy = nullptr;
    EXPECT_EQ(Thrown([&] { m_folder.GetContentsTable(0); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Thrown([&] { m_folder.GetHierarchyTable(0); }), MAPI_E_CALL_FAILED);
}

TEST_F(FailingFolder, AFailedHidingIsNotSaved)
{
    m_new.m_error = "why not";
    m_new.Fail("SetProps", MAPI_E_NO_ACCESS);
    EXPECT_EQ(Described([&] { m_folder.CreateFolder("n", true, true, 0, nullptr, FOLDER_GENERIC); }), ErrorOf("new"));
    for (const std::string& call : Calls())
    {
        EXPECT_EQ(call.find("new: SaveChanges"), std::string::npos);
    }
    m_new.Fail("SaveChanges", MAPI_E_DISK_ERROR);
    EXPECT_EQ(Thrown([&] { m_folder.CreateFolder("n", false, true, 0, nullptr, FOLDER_GENERIC); }), MAPI_E_DISK_ERROR);
}

TEST_F(FailingFolder, AnUnopenableFolderIsCreated)
{
    m_double.Fail("OpenEntry", MAPI_E_NO_ACCESS);
    const CZebFolder made = m_folder.CreateFolder("sub", false, false, OPEN_IF_EXISTS, nullptr, 2);
    EXPECT_EQ(m_new.References(), 1u);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"MAPI_E_NO_ACCESS\""), 1u);
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(Calls().back(), "folder: CreateFolder(0x2,'sub',null,IMAPIFolder,0x1)");
}

TEST_F(FailingFolder, ASearchThrowsTheTablesAnswer)
{
    m_subfolders.m_error = "why not";
    for (const char* name : {"QueryRows", "Restrict", "SetColumns"})
    {
        m_subfolders.Fail(name, MAPI_E_TOO_COMPLEX);
        EXPECT_EQ(Described([&] { m_folder.GetFolderEntryIdByNameA("sub"); }), ErrorOf("subfolders")) << name;
        EXPECT_EQ(Calls().back().find("subfolders: GetLastError"), 0u) << name;
    }
}

TEST_F(FailingFolder, ARowWithoutAnIdentifierThrows)
{
    m_subfolders.m_rows = {{{PR_DISPLAY_NAME_A, 0, "sub"}}};
    EXPECT_EQ(Thrown([&] { m_folder.GetFolderEntryIdByNameA("sub"); }), MAPI_E_UNEXPECTED_ID);
    m_subfolders.m_rows = {{{PROP_TAG(PT_ERROR, 0x0FFF), MAPI_E_NOT_FOUND, ""}, {PR_DISPLAY_NAME_A, 0, "sub"}}};
    EXPECT_EQ(Thrown([&] { m_folder.GetFolderEntryIdByNameA("sub"); }), MAPI_E_INVALID_TYPE);
}

TEST_F(FailingFolder, AVanishingRowIsNotFound)
{
    m_subfolders.m_whileReading = [this] { m_subfolders.m_rows.clear(); };
    EXPECT_EQ(Thrown([&] { m_folder.OpenFolderByNameA("sub"); }), 1168);
    m_messages.m_rows = {{{PR_ENTRYID, 0, "info"}, {PR_SUBJECT_A, 0, "QorInfo"}}};
    m_messages.m_whileReading = [this] { m_messages.m_rows.clear(); };
    EXPECT_EQ(Thrown([&] { m_folder.OpenQorInfoMessage(); }), 1168);
}

TEST_F(FailingFolder, VanishedEntriesThrowTheProvidersCode)
{
    m_subfolders.m_rows = {{{PR_ENTRYID, 0, "gone"}, {PR_DISPLAY_NAME_A, 0, "sub"}}};
    EXPECT_EQ(Thrown([&] { m_folder.OpenFolderByNameA("sub"); }), MAPI_E_NOT_FOUND);
}

TEST_F(FailingFolder, RefusedPropertiesPreventTheSave)
{
    CZebPropValArray values(1);
    values[PR_SUBJECT_A] = "s";
    m_message.Fail("SetProps", MAPI_E_NO_ACCESS);
    EXPECT_EQ(Thrown([&] { m_folder.CreateMessage(values, true, 0); }), MAPI_E_NO_ACCESS);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateMessage(null,0x0)", "message: SetProps(0x37001E='s',problems null)"}));
    m_double.Fail("SaveChanges", MAPI_E_DISK_ERROR);
    CZebPropValArray nothing(1);
    EXPECT_EQ(Thrown([&] { m_folder.CreateMessage(nothing, true, 0); }), MAPI_E_DISK_ERROR);
}

TEST_F(FailingFolder, TheMessagesFlagsReachMapi)
{
    CZebPropValArray values(1);
    values[PR_SUBJECT_A] = "s";
    m_folder.CreateMessage(values, false, 0x48);
    EXPECT_EQ(Calls().front(), "folder: CreateMessage(null,0x48)");
}

TEST_F(FailingFolder, AnUnopenableInformationMessageIsCreated)
{
    m_messages.m_rows = {{{PR_ENTRYID, 0, "gone"}, {PR_SUBJECT_A, 0, "QorInfo"}}};
    const CZebMessage made = m_folder.CreateQorInfoMessage(true, false);
    EXPECT_EQ(m_message.References(), 1u);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"MAPI_E_NOT_FOUND\""), 1u);
    EXPECT_EQ(Calls().back().find("message: SetProps("), 0u) << "not saved";
    m_message.Fail("SaveChanges", MAPI_E_DISK_ERROR);
    EXPECT_EQ(Thrown([&] { m_folder.CreateQorInfoMessage(false, true); }), MAPI_E_DISK_ERROR);
}

TEST_F(FailingFolder, ARefusingChildThrowsAtOnce)
{
    RecordingSession sessionDouble(m_journal);
    CZebSession session(&sessionDouble);
    RecordingMessage child(m_journal, "child");
    child.Fail("GetProps", MAPI_E_NO_ACCESS);
    m_double.m_openable.Add("child", &child, MAPI_MESSAGE);
    CZebPropValArray result;
    EXPECT_EQ(Thrown([&] { m_folder.GetPropsOfChild(session, ID("child"), nullptr, result); }), MAPI_E_NO_ACCESS);
    EXPECT_EQ(Calls(), (Lines{"folder: OpenEntry(6368696C64,IMAPIProp,0x10)", "child: GetProps(all,0x0)"}));
    EXPECT_FALSE(result.IsValid());
}

TEST_F(FailingFolder, AssignedToItselfStaysTheSame)
{
    m_double.m_bag.Set(0x36150102, "provider");
    m_folder.IsExchange();
    CZebFolder& self = m_folder;
    m_folder = self;
    EXPECT_TRUE(m_folder.IsValid());
    EXPECT_EQ(m_double.References(), 1u);
    Calls();
    m_folder.IsExchange();
    EXPECT_TRUE(Calls().empty()) << "it was asked already";
}

TEST_F(FailingFolder, QueriesItsInterfaceInWabToo)
{
    class Marked : public CZebFolder
    {
    public:
        using CZebFolder::CZebFolder;
        using CZebFolder::SetWAB;
        void Mark() { SetWAB(true); }
    };
    Marked folder(&m_double);
    folder.Mark();
    m_double.NoteQueries();
    folder.EmptyFolder(nullptr, 0, nullptr);
    EXPECT_EQ(Calls(), (Lines{"folder: QueryInterface(IMAPIFolder)", "folder: EmptyFolder(0x0,progress null,0x0)"}));
    folder.GetContentsTable(0);
    EXPECT_EQ(Calls(), (Lines{"folder: GetContentsTable(0x0)"}));
    m_double.RefuseInterfaces();
    EXPECT_EQ(Raised([&] { folder.EmptyFolder(nullptr, 0, nullptr); }), E_NOINTERFACE);
}

namespace
{

/// Says which of its own operations are called by the others.
class OwnFolder : public CZebFolder
{
public:
    using CZebFolder::CZebFolder;

    CComPtr<IMAPIContainer> GetContainer() override { return Noted("GetContainer", CZebFolder::GetContainer()); }
    CComPtr<IMAPIFolder> GetFolder() override { return Noted("GetFolder", CZebFolder::GetFolder()); }
    void OpenEntry(const SBinary& id, CZebIProp& target, ULONG flags) override
    {
        m_calls.push_back("OpenEntry");
        CZebFolder::OpenEntry(id, target, flags);
    }
    CZebTable GetContentsTable(ULONG flags) override
    {
        return Noted("GetContentsTable", CZebFolder::GetContentsTable(flags));
    }
    CZebTable GetHierarchyTable(ULONG flags) override
    {
        return Noted("GetHierarchyTable", CZebFolder::GetHierarchyTable(flags));
    }
    ULONG GetDisplayNameTag(bool unicode) const override { return unicode ? PR_COMMENT_W : PR_COMMENT_A; }
    CZebBinary GetFolderEntryIdByNameA(const char*) override { return Noted("FindA", CZebBinary("6F6E65")); }
    CZebBinary GetFolderEntryIdByNameW(const WCHAR*) override { return Noted("FindW", CZebBinary("6F6E65")); }
    CZebFolder OpenFolderByNameA(const char* name) override
    {
        return Noted("OpenA", CZebFolder::OpenFolderByNameA(name));
    }
    // The block of entries of a list of one stays allocated, as it is meant to: it is freed here.
    void DeleteMessages(SBinaryArray* list, HWND, ULONG, IMAPIProgress*) override
    {
        Zeb_MemFree(list->lpbin);
        m_calls.push_back("DeleteMessages");
    }
    void CopyMessages(SBinaryArray* list, CZebFolder&, ULONG flags, HWND, IMAPIProgress*) override
    {
        Zeb_MemFree(list->lpbin);
        m_calls.push_back("CopyMessages " + std::to_string(flags));
    }
    void CopyMessage(const SBinary& id, CZebFolder& dest, ULONG flags) override
    {
        m_calls.push_back("CopyMessage " + std::to_string(flags));
        CZebFolder::CopyMessage(id, dest, flags);
    }
    CZebMessage CreateMessage(ULONG flags) override { return Noted("CreateMessage", CZebFolder::CreateMessage(flags)); }
    CZebMessage OpenQorInfoMessage() override { return Noted("OpenQorInfoMessage", CreateMessage(0)); }
    void SaveChanges(ULONG flags) override { m_calls.push_back("SaveChanges " + std::to_string(flags)); }
    void GetPropsOfChild(CZebSession&, const SBinary&, SPropTagArray* tags, CZebPropValArray&) override
    {
        m_calls.push_back("GetPropsOfChild " + std::to_string(tags->cValues));
    }
    using CZebFolder::CreateMessage;
    using CZebFolder::GetPropsOfChild;

    Lines Calls() { return std::move(m_calls); }

private:
    template <class Result>
    Result Noted(const char* name, Result result)
    {
        m_calls.push_back(name);
        return result;
    }
    Lines m_calls;
};

class Overridden : public FailingFolder
{
protected:
    OwnFolder m_own{&m_double};
    CZebFolder& m_base = m_own;
};

} // namespace

TEST_F(Overridden, NamesUseTheFoldersOwnOperations)
{
    m_base.OpenFolderByName("x");
    EXPECT_EQ(m_own.Calls(), (Lines{"FindA", "OpenEntry", "GetContainer", "OpenA"}));
    m_base.OpenFolderByNameW(ZEBW("x"));
    EXPECT_EQ(m_own.Calls(), (Lines{"FindW", "OpenEntry", "GetContainer"}));
    m_base.GetFolderEntryIdByName("x");
    EXPECT_EQ(m_own.Calls(), (Lines{"FindA"}));
    m_base.CreateFolder("x", false, false, OPEN_IF_EXISTS, nullptr, 1);
    EXPECT_EQ(m_own.Calls(), (Lines{"FindA", "OpenEntry", "GetContainer", "OpenA"}));
    m_own.CZebFolder::GetFolderEntryIdByNameA("sub");
    EXPECT_EQ(m_own.Calls(), (Lines{"GetContainer", "GetHierarchyTable"}));
    m_own.CZebFolder::GetFolderEntryIdByNameW(ZEBW("sub"));
    EXPECT_EQ(m_own.Calls(), (Lines{"GetContainer", "GetHierarchyTable"}));
    EXPECT_EQ(m_base.GetABItemDisplayNameTagForContainer(true), PR_COMMENT_W);
    EXPECT_EQ(m_base.GetABItemDisplayNameTagForContainer(false), PR_COMMENT_A);
}

TEST_F(Overridden, MessagesUseTheFoldersOwnOperations)
{
    CZebFolder dest(&m_existing);
    m_base.MoveMessage(ID("a"), dest, 4);
    EXPECT_EQ(m_own.Calls(), (Lines{"CopyMessage 5", "CopyMessages 5"}));
    SBinaryArray list = {0, nullptr};
    m_base.MoveMessages(&list, dest, 4, nullptr, nullptr);
    EXPECT_EQ(m_own.Calls(), (Lines{"CopyMessages 5"}));
    m_base.DeleteMessage(ID("a"));
    EXPECT_EQ(m_own.Calls(), (Lines{"DeleteMessages"}));
    EXPECT_TRUE(FailingFolder::Calls().empty());
}

TEST_F(Overridden, CreationUsesTheFoldersOwnOperations)
{
    CZebPropValArray values(1);
    m_base.CreateMessage(values, true, 0);
    EXPECT_EQ(m_own.Calls(), (Lines{"GetFolder", "CreateMessage", "SaveChanges 6"}));
    m_base.CreateQorInfoMessage(true, false);
    EXPECT_EQ(m_own.Calls(), (Lines{"GetFolder", "CreateMessage", "OpenQorInfoMessage"}));
    m_base.CreateQorInfoMessage(false, false);
    EXPECT_EQ(m_own.Calls(), (Lines{"GetFolder", "CreateMessage"}));
    EXPECT_EQ(Thrown([&] { m_own.CZebFolder::OpenQorInfoMessage(); }), 1168);
    EXPECT_EQ(m_own.Calls(), (Lines{"GetContainer", "GetContentsTable"}));
}

TEST_F(Overridden, ChildPropertiesUseTheFoldersOperation)
{
    RecordingSession sessionDouble(m_journal);
    CZebSession session(&sessionDouble);
    CZebPropValArray result;
    m_base.GetPropsOfChild(session, ID("a"), result, 3, PR_SUBJECT_A, PR_BODY_A, PR_IMPORTANCE);
    EXPECT_EQ(m_own.Calls(), (Lines{"GetPropsOfChild 3"}));
}
