// Folders: what is made, opened, copied and deleted through them.
#include "FolderFixture.h"
#include "tests/support/Context.h"
#include "zebapi/PROPVALArray.h"

using namespace zeb::test;

namespace
{

class Folder : public FolderFixture
{
protected:
    Folder() { m_double.m_openable.Add("info", &m_info, MAPI_MESSAGE); }
    /// One subfolder of that name.
    void HasSubfolder(const std::string& name)
    {
        m_subfolders.m_rows = {{{PR_ENTRYID, 0, "two"}, {PR_DISPLAY_NAME_A, 0, "elsewhere"}},
                               {{PR_ENTRYID, 0, "one"}, {PR_DISPLAY_NAME_A, 0, name}},
                               {{PR_ENTRYID, 0, "three"}, {PR_DISPLAY_NAME_A, 0, name}}};
    }

    RecordingMessage m_info{m_journal, "info"};
    const HWND m_window = reinterpret_cast<HWND>(static_cast<ULONG_PTR>(0x55));
};

const Lines FindExisting = {"folder: GetHierarchyTable(0x8)", "subfolders: SetColumns([0xFFF0102,0x3001001E],0x0)",
                            "subfolders: Restrict(0x4,0x4,0x3001001E,0x3001001E='sub',0x0)",
                            "subfolders: QueryRows(1,0x0)"};

Lines operator+(Lines first, const Lines& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

} // namespace

TEST_F(Folder, AcceptsFoldersOnly)
{
    EXPECT_TRUE(*m_folder.GetInterfaceCIID() == IID_IMAPIFolder);
    EXPECT_EQ(m_folder.GetMAPIType(), static_cast<ULONG>(MAPI_FOLDER));
    EXPECT_TRUE(m_folder.IsMAPITypeAcceptable(MAPI_FOLDER));
    EXPECT_FALSE(m_folder.IsMAPITypeAcceptable(MAPI_MESSAGE));
}

TEST_F(Folder, AnotherObjectRaisesNoInterface)
{
    m_double.RefuseInterfaces();
    EXPECT_EQ(Raised([&] { m_folder.CreateMessage(0); }), E_NOINTERFACE);
    EXPECT_EQ(Raised([&] { CZebFolder().EmptyFolder(nullptr, 0, nullptr); }), E_POINTER);
}

TEST_F(Folder, CopiesShareTheFolder)
{
    CZebFolder copy(m_folder);
    CZebFolder assigned;
    assigned = m_folder;
    EXPECT_EQ(m_double.References(), 3u);
}

TEST_F(Folder, CreatesAFolderPlainly)
{
    const CZebFolder created = m_folder.CreateFolder("sub", false, false, 0, "about", FOLDER_GENERIC);
    EXPECT_TRUE(created.IsValid());
    EXPECT_EQ(m_new.References(), 1u);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateFolder(0x1,'sub','about',IMAPIFolder,0x0)"}));
}

TEST_F(Folder, HidesTheNewFolderWhenAsked)
{
    m_folder.CreateFolder("sub", true, true, 0, nullptr, FOLDER_SEARCH);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateFolder(0x2,'sub',null,IMAPIFolder,0x0)",
                              "new: SetProps(0x10F4000B=true,problems null)", "new: SaveChanges(0x6)"}));
    m_folder.CreateFolder("sub", true, false, 0, nullptr, FOLDER_GENERIC);
    EXPECT_EQ(Calls().size(), 2u);
}

TEST_F(Folder, LeavesAnExistingFolderUnchanged)
{
    HasSubfolder("sub");
    CZebFolder opened = m_folder.CreateFolder("sub", true, true, OPEN_IF_EXISTS, "about", FOLDER_GENERIC);
    EXPECT_EQ(m_existing.References(), 1u);
    EXPECT_EQ(Calls(), FindExisting + Lines{"folder: OpenEntry(6F6E65,IMAPIFolder,0x10)"});
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(Folder, CreatesWhatCouldNotBeOpened)
{
    const CZebFolder created = m_folder.CreateFolder("sub", false, false, OPEN_IF_EXISTS, "", FOLDER_GENERIC);
    EXPECT_EQ(m_new.References(), 1u);
    EXPECT_EQ(Calls(), FindExisting + Lines{"folder: CreateFolder(0x1,'sub','',IMAPIFolder,0x1)"});
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"0x00000490\""), 1u);
}

TEST_F(Folder, CreatesAFolderByWideName)
{
    EXPECT_TRUE(m_folder.CreateFolderW(ZEBW("sub")).IsValid());
    m_folder.CreateFolderW(ZEBW("sub"), ZEBW("about"), OPEN_IF_EXISTS, FOLDER_SEARCH);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateFolder(0x1,'sub',null,IMAPIFolder,0x80000000)",
                              "folder: CreateFolder(0x2,'sub','about',IMAPIFolder,0x80000001)"}));
    EXPECT_EQ(m_new.References(), 0u) << "the handles are gone";
    m_double.Fail("CreateFolder", MAPI_E_COLLISION);
    EXPECT_EQ(ContextOf([&] { m_folder.CreateFolderW(ZEBW("Projects")); }), "CreateFolderW 'Projects'");
    EXPECT_EQ(Thrown([&] { m_folder.CreateFolderW(nullptr); }), MAPI_E_COLLISION);
}

TEST_F(Folder, SuccessWithoutANewFolderFails)
{
    m_double.m_created = nullptr;
    EXPECT_EQ(Thrown([&] { m_folder.CreateFolderW(ZEBW("sub")); }), MAPI_E_CALL_FAILED);
}

TEST_F(Folder, CopiesAndMovesSubfolders)
{
    CZebFolder dest(&m_existing);
    m_folder.CopyFolder(ID("ab"), dest);
    m_folder.CopyFolder(ID("ab"), dest, ZEBW("copy"), 0);
    m_folder.MoveFolder(ID("ab"), dest, ZEBW(""));
    EXPECT_EQ(Calls(), (Lines{"folder: CopyFolder(6162,IMAPIFolder,existing,null,0x0,progress null,0x80000010)",
                              "folder: CopyFolder(6162,IMAPIFolder,existing,'copy',0x0,progress null,0x80000000)",
                              "folder: CopyFolder(6162,IMAPIFolder,existing,null,0x0,progress null,0x80000001)"}));
    CZebFolder empty;
    EXPECT_EQ(Raised([&] { m_folder.CopyFolder(ID("ab"), empty); }), E_POINTER);
    m_double.Fail("CopyFolder", MAPI_E_COLLISION);
    EXPECT_EQ(ContextOf([&] { m_folder.MoveFolder(ID("ab"), dest); }), "CopyFolder entry 6162 (2 bytes)");
}

TEST_F(Folder, FurtherFlagsSkipTheLookUp)
{
    HasSubfolder("sub");
    m_folder.CreateFolder("sub", false, false, OPEN_IF_EXISTS | MAPI_DEFERRED_ERRORS, "", FOLDER_GENERIC);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateFolder(0x1,'sub','',IMAPIFolder,0x9)"}));
}

TEST_F(Folder, AFailedCreationNamesTheFolder)
{
    m_double.Fail("CreateFolder", MAPI_E_COLLISION);
    const auto context = [&](const char* name)
    { return ContextOf([&] { m_folder.CreateFolder(name, false, false, 0, nullptr, 1); }); };
    EXPECT_EQ(context("Projects"), "CreateFolder 'Projects'");
    EXPECT_EQ(context(nullptr), "CreateFolder ''");
}

TEST_F(Folder, AFailedCreationCarriesItsError)
{
    m_double.Fail("CreateFolder", MAPI_E_COLLISION);
    EXPECT_EQ(Thrown([&] { m_folder.CreateFolder("sub", true, true, 0, nullptr, 1); }), MAPI_E_COLLISION);
    m_double.m_error = "there is one";
    EXPECT_EQ(Described([&] { m_folder.CreateFolder("sub", true, true, 0, nullptr, 1); }),
              "Ver:1, Error:there is one, Component:folder, LowLewelError:2, Context:3 \n");
}

TEST_F(Folder, SuccessWithoutAnObjectFails)
{
    m_double.m_created = nullptr;
    m_double.m_message = nullptr;
    EXPECT_EQ(Thrown([&] { m_folder.CreateFolder("sub", false, false, 0, nullptr, 1); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Thrown([&] { m_folder.CreateMessage(0); }), MAPI_E_CALL_FAILED);
}

TEST_F(Folder, FindsSubfoldersInBothWidths)
{
    HasSubfolder("sub");
    EXPECT_STREQ(m_folder.GetFolderEntryIdByNameA("sub").String(), "6F6E65");
    EXPECT_EQ(Calls(), FindExisting);
    HasSubfolder("sub");
    EXPECT_STREQ(m_folder.GetFolderEntryIdByNameW(ZEBW("sub")).String(), "6F6E65");
    EXPECT_EQ(Calls(),
              (Lines{"folder: GetHierarchyTable(0x8)", "subfolders: SetColumns([0xFFF0102,0x3001001F],0x0)",
                     "subfolders: Restrict(0x4,0x4,0x3001001F,0x3001001F=sub,0x0)", "subfolders: QueryRows(1,0x0)"}));
    HasSubfolder("sub");
    EXPECT_STREQ(m_folder.GetFolderEntryIdByName("sub").String(), "6F6E65");
    EXPECT_EQ(Calls(), FindExisting);
}

TEST_F(Folder, OpensSubfoldersInBothWidths)
{
    for (int form = 0; form < 3; ++form)
    {
        HasSubfolder("sub");
        const CZebFolder opened = form == 0   ? m_folder.OpenFolderByNameA("sub")
                                  : form == 1 ? m_folder.OpenFolderByNameW(ZEBW("sub"))
                                              : m_folder.OpenFolderByName("sub");
        EXPECT_EQ(m_existing.References(), 1u);
        EXPECT_EQ(Calls().back(), "folder: OpenEntry(6F6E65,IMAPIFolder,0x10)");
    }
}

TEST_F(Folder, MissingNamesThrowTheSystemsCode)
{
    EXPECT_EQ(Thrown([&] { m_folder.OpenFolderByNameA("sub"); }), 1168);
    EXPECT_EQ(Thrown([&] { m_folder.OpenFolderByNameW(ZEBW("sub")); }), 1168);
    EXPECT_EQ(Thrown([&] { m_folder.OpenQorInfoMessage(); }), 1168);
    m_subfolders.m_givesNothing = true;
    EXPECT_EQ(Thrown([&] { m_folder.GetFolderEntryIdByName("sub"); }), 1168);
    EXPECT_EQ(Thrown([&] { m_folder.GetFolderEntryIdByName(nullptr); }), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Folder, DeletingAndEmptyingPassTheirArguments)
{
    auto* progress = reinterpret_cast<IMAPIProgress*>(&m_double);
    m_folder.DeleteFolder(ID("ab"), m_window, 5, progress);
    m_folder.EmptyFolder(m_window, 10, progress);
    SBinary ids[] = {ID("a"), ID("b")};
    SBinaryArray list = {2, ids};
    m_folder.DeleteMessages(&list, m_window, 0x12, progress);
    EXPECT_EQ(Calls(), (Lines{"folder: DeleteFolder(6162,0x55,progress given,0x5)",
                              "folder: EmptyFolder(0x55,progress given,0xA)",
                              "folder: DeleteMessages([61,62],0x55,progress given,0x12)"}));
    m_double.Fail("DeleteFolder", MAPI_E_HAS_FOLDERS);
    EXPECT_EQ(Thrown([&] { m_folder.DeleteFolder(ID("ab"), nullptr, 0, nullptr); }), MAPI_E_HAS_FOLDERS);
}

TEST_F(Folder, CopiesAndMovesLists)
{
    CZebFolder dest(&m_existing);
    SBinary ids[] = {ID("a"), ID("b")};
    SBinaryArray list = {2, ids};
    auto* progress = reinterpret_cast<IMAPIProgress*>(&m_double);
    m_folder.CopyMessages(&list, dest, 6, m_window, progress);
    m_folder.MoveMessages(&list, dest, 6, m_window, progress);
    m_folder.MoveMessages(&list, dest, 0, nullptr, nullptr);
    EXPECT_EQ(Calls(), (Lines{"folder: CopyMessages([61,62],IMAPIFolder,existing,0x55,progress given,0x6)",
                              "folder: CopyMessages([61,62],IMAPIFolder,existing,0x55,progress given,0x7)",
                              "folder: CopyMessages([61,62],IMAPIFolder,existing,0x0,progress null,0x1)"}));
    CZebFolder empty;
    EXPECT_EQ(Raised([&] { m_folder.CopyMessages(&list, empty, 0, nullptr, nullptr); }), E_POINTER);
    EXPECT_TRUE(Calls().empty());
    m_double.Fail("CopyMessages", MAPI_E_DECLINE_COPY);
    EXPECT_EQ(Thrown([&] { m_folder.CopyMessages(&list, dest, 0, nullptr, nullptr); }), MAPI_E_DECLINE_COPY);
}

TEST_F(Folder, OneMessageMakesAList)
{
    CZebFolder dest(&m_existing);
    m_double.KeepLists();
    m_folder.DeleteMessage(ID("a"));
    m_folder.CopyMessage(ID("b"), dest, 4);
    m_folder.MoveMessage(ID("c"), dest, 0);
    EXPECT_EQ(Calls(), (Lines{"folder: DeleteMessages([61],0x0,progress null,0x0)",
                              "folder: CopyMessages([62],IMAPIFolder,existing,0x0,progress null,0x4)",
                              "folder: CopyMessages([63],IMAPIFolder,existing,0x0,progress null,0x1)"}));
    m_double.FreeLists();
}

TEST_F(Folder, PassesWindowsWithAllTheirBits)
{
    const auto window = reinterpret_cast<HWND>(static_cast<ULONG_PTR>(0x7777777780000001));
    SBinary entry = ID("ab");
    SBinaryArray list = {1, &entry};
    CZebFolder dest(&m_existing);
    m_folder.CopyMessages(&list, dest, 2, window, nullptr);
    m_folder.MoveMessages(&list, dest, 2, window, nullptr);
    m_folder.DeleteMessages(&list, window, 0, nullptr);
    m_folder.DeleteFolder(ID("ab"), window, 0, nullptr);
    m_folder.EmptyFolder(window, 0, nullptr);
    const std::string bits = "0x7777777780000001,progress null,";
    EXPECT_EQ(Calls(), (Lines{"folder: CopyMessages([6162],IMAPIFolder,existing," + bits + "0x2)",
                              "folder: CopyMessages([6162],IMAPIFolder,existing," + bits + "0x3)",
                              "folder: DeleteMessages([6162]," + bits + "0x0)",
                              "folder: DeleteFolder(6162," + bits + "0x0)", "folder: EmptyFolder(" + bits + "0x0)"}));
}

TEST_F(Folder, CreatesAMessage)
{
    const CZebMessage message = m_folder.CreateMessage(0x40);
    EXPECT_EQ(m_message.References(), 1u);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateMessage(null,0x40)"}));
}

TEST_F(Folder, CreatesMessagesWithPropertiesAndSaves)
{
    CZebPropValArray values(2);
    values[PR_SUBJECT_A] = "s";
    m_folder.CreateMessage(values, true, 0);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateMessage(null,0x0)", "message: SetProps(0x37001E='s',problems null)",
                              "message: SaveChanges(0x6)", "folder: SaveChanges(0x6)"}));
    m_folder.CreateMessage(values, false, 0);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateMessage(null,0x0)", "message: SetProps(0x37001E='s',problems null)"}));
}

TEST_F(Folder, WithoutPropertiesOnlyFoldersAreSaved)
{
    CZebPropValArray values(2);
    m_folder.CreateMessage(values, true, 0);
    EXPECT_EQ(Calls(), (Lines{"folder: CreateMessage(null,0x0)", "folder: SaveChanges(0x6)"}));
}

namespace
{

const Lines CreateInfo = {"folder: CreateMessage(null,0x0)",
                          "message: SetProps(0x37001E='QorInfo',0x3001001E='QorInfo',0x1A001E='IPM.Note.QorInfo',"
                          "problems null)"};
const Lines FindInfo = {"folder: GetContentsTable(0x8)", "messages: SetColumns([0xFFF0102,0x37001E],0x0)",
                        "messages: Restrict(0x4,0x4,0x37001E,0x37001E='QorInfo',0x0)", "messages: QueryRows(1,0x0)"};

} // namespace

TEST_F(Folder, CreatesTheInformationMessage)
{
    m_folder.CreateQorInfoMessage(false, true);
    EXPECT_EQ(Calls(), CreateInfo + Lines{"message: SaveChanges(0x6)"});
    m_folder.CreateQorInfoMessage(false, false);
    EXPECT_EQ(Calls(), CreateInfo);
}

TEST_F(Folder, OpensTheExistingInformationMessage)
{
    m_messages.m_rows = {{{PR_ENTRYID, 0, "x"}, {PR_SUBJECT_A, 0, "other"}},
                         {{PR_ENTRYID, 0, "info"}, {PR_SUBJECT_A, 0, "QorInfo"}}};
    const CZebMessage opened = m_folder.OpenQorInfoMessage();
    EXPECT_EQ(m_info.References(), 1u);
    EXPECT_EQ(Calls(), FindInfo + Lines{"folder: OpenEntry(696E666F,IMessage,0x10)"});
    const CZebMessage again = m_folder.CreateQorInfoMessage(true, true);
    EXPECT_EQ(m_info.References(), 2u);
    EXPECT_EQ(Calls(), FindInfo + Lines{"folder: OpenEntry(696E666F,IMessage,0x10)"});
}

TEST_F(Folder, CreatesAnotherInformationMessageUnlessOpening)
{
    m_messages.m_rows = {{{PR_ENTRYID, 0, "info"}, {PR_SUBJECT_A, 0, "QorInfo"}}};
    m_folder.CreateQorInfoMessage(false, false);
    EXPECT_EQ(Calls(), CreateInfo);
}

TEST_F(Folder, CreatesTheUnopenableInformationMessage)
{
    m_folder.CreateQorInfoMessage(true, true);
    EXPECT_EQ(Calls(), FindInfo + CreateInfo + Lines{"message: SaveChanges(0x6)"});
    EXPECT_EQ(Caught(), 1u);
}
