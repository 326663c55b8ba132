// Who lies in which folder: the walk up through the parents, and the properties of a direct child.
#include "ObjectsTest.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "tests/support/doubles/RecordingStore.h"
#include "zebapi/Folder.h"
#include "zebapi/MsgStore.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/SESSION.h"
#include "zebapi/TAGS.h"

#include <list>
#include <string>

using namespace zeb::test;

namespace
{

/// A folder with the identifier "here", and children of several parents that a session can open.
class Ancestry : public ObjectsTest
{
protected:
    Ancestry()
    {
        m_here.m_bag.Set(PR_ENTRYID, "here");
        m_here.m_openable.Add("child", &m_child, MAPI_MESSAGE);
        m_child.m_bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
        m_child.m_bag.Set(PR_SUBJECT_A, "s");
    }
    /// A folder that the session opens.
    void IsFolder(RecordingFolder& folder, const char* id, const char* parent, LONG folderType = FOLDER_GENERIC)
    {
        folder.m_bag.Set(PR_OBJECT_TYPE, MAPI_FOLDER);
        folder.m_bag.Set(PR_FOLDER_TYPE, folderType);
        folder.m_bag.Set(PR_PARENT_ENTRYID, parent);
        m_sessionDouble.m_openable.Add(id, &folder, MAPI_FOLDER);
    }

    RecordingMessage m_child{m_journal, "child"};
    RecordingFolder m_middle{m_journal, "middle"};
    RecordingFolder m_top{m_journal, "top"};
    RecordingFolder m_here{m_journal, "here"};
    RecordingSession m_sessionDouble{m_journal};
    CZebSession m_session{&m_sessionDouble};
    CZebFolder m_folder{&m_here};
    CZebMessage m_message{&m_child};
};

} // namespace

TEST_F(Ancestry, ADirectChildsPropertiesAreRead)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "here");
    CZebPropValArray result;
    m_folder.GetPropsOfChild(m_session, ID("child"), result, 1, PR_SUBJECT_A);
    EXPECT_TRUE(result.hasRealValue(PR_SUBJECT_A));
    EXPECT_EQ(Calls(), (Lines{"here: OpenEntry(6368696C64,IMAPIProp,0x10)", "child: GetProps([0x37001E],0x0)",
                              "here: GetProps([0xFFF0102],0x0)", "child: GetProps([0xFFE0003],0x0)",
                              "child: GetProps([0xE090102],0x0)", "session: CompareEntryIDs(68657265,68657265,0x0)"}));
}

TEST_F(Ancestry, WideTextIsReadWithoutFlag)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "here");
    CZebPropValArray result;
    m_folder.GetPropsOfChild(m_session, ID("child"), result, 1, PR_SUBJECT_W);
    EXPECT_EQ(Calls()[1], "child: GetProps([0x37001F],0x0)");
    CZebPropTagArray tags;
    tags.AddOne(PR_BODY_W);
    m_folder.GetPropsOfChild(m_session, ID("child"), tags, result);
    EXPECT_EQ(Calls()[1], "child: GetProps([0x1000001F],0x0)");
}

TEST_F(Ancestry, OthersAreNotFoundButRead)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "middle");
    IsFolder(m_middle, "middle", "here");
    CZebPropValArray result;
    EXPECT_EQ(Thrown([&] { m_folder.GetPropsOfChild(m_session, ID("child"), result, 1, PR_SUBJECT_A); }),
              MAPI_E_NOT_FOUND);
    EXPECT_TRUE(result.hasRealValue(PR_SUBJECT_A));
    for (const std::string& call : Calls())
    {
        EXPECT_EQ(call.find("session: OpenEntry"), std::string::npos) << "only the direct parent counts";
    }
    CZebPropTagArray tags;
    tags.AddOne(PR_SUBJECT_A);
    EXPECT_EQ(Thrown([&] { m_folder.GetPropsOfChild(m_session, ID("child"), tags, result); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Thrown([&] { m_folder.GetPropsOfChild(m_session, ID("none"), tags, result); }), MAPI_E_NOT_FOUND);
}

TEST_F(Ancestry, WalksUpToTheContainer)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "middle");
    IsFolder(m_middle, "middle", "top");
    IsFolder(m_top, "top", "here");
    EXPECT_TRUE(m_message.IsChildOf(m_session, ID("here"), false));
    EXPECT_EQ(Calls(),
              (Lines{"child: GetProps([0xFFE0003],0x0)", "child: GetProps([0xE090102],0x0)",
                     "session: CompareEntryIDs(6D6964646C65,68657265,0x0)",
                     "session: OpenEntry(6D6964646C65,IMAPIProp,0x10)", "middle: GetProps([0xFFE0003],0x0)",
                     "middle: GetProps([0x36010003],0x0)", "middle: GetProps([0xE090102],0x0)",
                     "session: CompareEntryIDs(746F70,68657265,0x0)", "session: OpenEntry(746F70,IMAPIProp,0x10)",
                     "top: GetProps([0xFFE0003],0x0)", "top: GetProps([0x36010003],0x0)",
                     "top: GetProps([0xE090102],0x0)", "session: CompareEntryIDs(68657265,68657265,0x0)"}));
    EXPECT_FALSE(m_message.IsChildOf(m_session, ID("here"), true));
    EXPECT_TRUE(m_message.IsChildOf(m_session, ID("middle"), true));
}

TEST_F(Ancestry, NothingIsBelowAnEmptyIdentifier)
{
    EXPECT_FALSE(m_message.IsChildOf(m_session, SBinary{0, nullptr}, false));
    EXPECT_TRUE(Calls().empty());
}

TEST_F(Ancestry, TheWalkStopsAtARoot)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "top");
    IsFolder(m_top, "top", "here", FOLDER_ROOT);
    EXPECT_FALSE(m_message.IsChildOf(m_session, ID("here"), false));
    CZebFolder root(&m_top);
    EXPECT_FALSE(root.IsChildOf(m_session, ID("here"), true));
    EXPECT_EQ(Calls().back(), "top: GetProps([0x36010003],0x0)") << "a root is not asked for its parent";
}

TEST_F(Ancestry, StoresAndBooksHaveNoParent)
{
    for (LONG type : {MAPI_STORE, MAPI_ADDRBOOK})
    {
        RecordingProp object(m_journal);
        object.m_bag.Set(PR_OBJECT_TYPE, type);
        object.m_bag.Set(PR_PARENT_ENTRYID, "here");
        CZebIProp prop(&object);
        EXPECT_FALSE(prop.IsChildOf(m_session, ID("here"), false)) << type;
    }
    RecordingProp untyped(m_journal);
    untyped.m_bag.Set(PR_OBJECT_TYPE, 0);
    untyped.m_bag.Set(PR_PARENT_ENTRYID, "here");
    CZebIProp prop(&untyped);
    EXPECT_TRUE(prop.IsChildOf(m_session, ID("here"), false));
}

TEST_F(Ancestry, AnObjectWithoutAParentThrows)
{
    EXPECT_EQ(Thrown([&] { m_message.IsChildOf(m_session, ID("here"), false); }), MAPI_E_INVALID_TYPE);
}

TEST_F(Ancestry, NothingIsAboveAnInvalidParent)
{
    class Orphan : public CZebMessage
    {
    public:
        using CZebMessage::CZebMessage;
        CZebBinary GetParentID() override { return {}; }
    };
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "here");
    Orphan orphan(&m_child);
    EXPECT_FALSE(orphan.IsChildOf(m_session, ID("here"), false));
    EXPECT_EQ(Calls(), (Lines{"child: GetProps([0xFFE0003],0x0)"})) << "no identifiers are compared";
}

TEST_F(Ancestry, ACircleOfParentsEnds)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "middle");
    IsFolder(m_middle, "middle", "top");
    IsFolder(m_top, "top", "middle");
    EXPECT_FALSE(m_message.IsChildOf(m_session, ID("here"), false));
}

TEST_F(Ancestry, ASelfParentEndsTheWalk)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "middle");
    IsFolder(m_middle, "middle", "middle");
    EXPECT_FALSE(m_message.IsChildOf(m_session, ID("here"), false));
    EXPECT_TRUE(m_message.IsChildOf(m_session, ID("middle"), false));
    CZebFolder own(&m_middle);
    EXPECT_TRUE(own.IsChildOf(m_session, ID("middle"), true));
}

TEST_F(Ancestry, CircularFoldersAnswerEveryQuestion)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "middle");
    IsFolder(m_middle, "middle", "top");
    IsFolder(m_top, "top", "middle");
    RecordingStore storeDouble(m_journal);
    storeDouble.m_bag.Set(PR_IPM_WASTEBASKET_ENTRYID, "bin");
    CZebMsgStore store(&storeDouble);
    EXPECT_FALSE(store.IsUnderDeleted(m_session, m_message));
    CZebPropValArray result;
    EXPECT_EQ(Thrown([&] { m_folder.GetPropsOfChild(m_session, ID("child"), result, 1, PR_SUBJECT_A); }),
              MAPI_E_NOT_FOUND);
    EXPECT_TRUE(result.hasRealValue(PR_SUBJECT_A));
}

TEST_F(Ancestry, FourThousandParentsAreWalked)
{
    std::list<RecordingFolder> chain;
    for (int i = 0; i < 4000; ++i)
    {
        chain.emplace_back(m_journal, "link");
        IsFolder(chain.back(), std::to_string(i).c_str(), std::to_string(i + 1).c_str());
    }
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "0");
    EXPECT_TRUE(m_message.IsChildOf(m_session, ID("4000"), false));
}

TEST_F(Ancestry, AnUnopenableParentThrows)
{
    m_child.m_bag.Set(PR_PARENT_ENTRYID, "gone");
    EXPECT_EQ(Thrown([&] { m_message.IsChildOf(m_session, ID("here"), false); }), MAPI_E_NOT_FOUND);
}
