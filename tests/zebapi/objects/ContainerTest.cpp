#include "zebapi/Container.h"
#include "ObjectsTest.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "zebapi/Folder.h"
#include "zebapi/Message.h"

using namespace zeb::test;

namespace
{

const char ExchangeBytes[] = "\xDC\xA7\x40\xC8\xC0\x42\x10\x1A\xB4\xB9\x08\x00\x2B\x2F\xE1\x82";
const std::string Exchange(ExchangeBytes, 16);

/// Opens what is protected.
template <class Base>
class Open : public Base
{
public:
    using Base::Base;
    using Base::SetWAB;
    void MarkWAB() { this->SetWAB(true); }
};

class Container : public ObjectsTest
{
protected:
    RecordingContainer m_double{m_journal};
    Open<CZebContainer> m_container{&m_double};
};

} // namespace

TEST_F(Container, AcceptsAnyTypeButRequestsContainers)
{
    EXPECT_TRUE(*m_container.GetInterfaceCIID() == IID_IMAPIContainer);
    EXPECT_EQ(m_container.GetMAPIType(), 0u);
    EXPECT_TRUE(m_container.IsMAPITypeAcceptable(MAPI_FOLDER));
    EXPECT_TRUE(m_container.IsMAPITypeAcceptable(99));
    CZebContainer* const same = m_container;
    EXPECT_EQ(same, std::addressof(m_container));
    const CZebContainer& constant = m_container;
    const CZebContainer* const constantSame = constant;
    EXPECT_EQ(constantSame, std::addressof(constant));
}

TEST_F(Container, QueriesItsInterfaceOutsideTheWab)
{
    RowTable table(m_journal);
    m_double.m_contents = &table;
    m_double.NoteQueries();
    EXPECT_TRUE(m_container.GetContentsTable(0x48).IsValid());
    EXPECT_EQ(Calls(), (Lines{"container: QueryInterface(IMAPIContainer)", "container: GetContentsTable(0x48)"}));
    m_container.MarkWAB();
    m_container.GetContentsTable(0x48);
    EXPECT_EQ(Calls(), (Lines{"container: GetContentsTable(0x48)"}));
}

TEST_F(Container, AnotherObjectRaisesNoInterface)
{
    m_double.RefuseInterfaces();
    EXPECT_EQ(Raised([&] { m_container.GetContentsTable(0); }), E_NOINTERFACE);
    CZebContainer empty;
    EXPECT_EQ(Raised([&] { empty.GetHierarchyTable(0); }), E_POINTER);
    Open<CZebContainer> emptyWAB;
    emptyWAB.MarkWAB();
    EXPECT_EQ(Raised([&] { emptyWAB.GetHierarchyTable(0); }), E_POINTER);
}

TEST_F(Container, HandsOutItsTables)
{
    RowTable hierarchy(m_journal);
    m_double.m_hierarchy = &hierarchy;
    {
        const CZebTable table = m_container.GetHierarchyTable(8);
        EXPECT_EQ(hierarchy.References(), 1u);
    }
    EXPECT_EQ(Calls(), (Lines{"container: GetHierarchyTable(0x8)"}));
    EXPECT_EQ(Thrown([&] { m_container.GetContentsTable(0); }), MAPI_E_CALL_FAILED) << "success without a table";
    m_double.Fail("GetHierarchyTable", MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Thrown([&] { m_container.GetHierarchyTable(0); }), MAPI_E_NO_SUPPORT);
}

TEST_F(Container, OpeningAnEntryPassesTheMarking)
{
    RecordingMessage message(m_journal);
    m_double.m_openable.Add("m", &message, MAPI_MESSAGE);
    CZebMessage target;
    m_container.OpenEntry(ID("m"), target, 0x10);
    EXPECT_EQ(Calls(), (Lines{"container: OpenEntry(6D,IMessage,0x10)"}));
    EXPECT_FALSE(target.IsWAB());
    m_container.MarkWAB();
    m_container.OpenEntry(ID("m"), target, 0x10);
    EXPECT_TRUE(target.IsWAB());
    EXPECT_EQ(message.References(), 1u);
}

TEST_F(Container, WrongTypesLeaveTheTargetEmpty)
{
    RecordingMessage message(m_journal);
    RecordingDistList list(m_journal);
    m_double.m_openable.Add("m", &message, MAPI_MESSAGE);
    m_double.m_openable.Add("l", &list, MAPI_DISTLIST);
    CZebFolder folder;
    EXPECT_EQ(Thrown([&] { m_container.OpenEntry(ID("m"), folder, 0); }), MAPI_E_INVALID_TYPE);
    EXPECT_FALSE(folder.IsValid());
    CZebMailUser user;
    EXPECT_EQ(Thrown([&] { m_container.OpenEntry(ID("l"), user, 0); }), MAPI_E_INVALID_TYPE);
    EXPECT_FALSE(user.IsValid());
    EXPECT_EQ(message.References() + list.References(), 0u);
}

TEST_F(Container, AnEmptyOneLeavesTheTarget)
{
    RecordingMessage message(m_journal);
    CZebMessage target(&message);
    CZebContainer empty;
    EXPECT_EQ(Raised([&] { empty.OpenEntry(ID("m"), target, 0); }), E_POINTER);
    EXPECT_TRUE(target.IsValid());
}

TEST_F(Container, MayBeItsOwnTarget)
{
    RecordingContainer child(m_journal, "child");
    m_double.m_openable.Add("c", &child, MAPI_ABCONT);
    m_container.OpenEntry(ID("c"), m_container, 0);
    EXPECT_EQ(m_double.References(), 0u);
    EXPECT_EQ(child.References(), 1u);
    m_container.Free();
}

TEST_F(Container, IsExchangeReadsTheProviderOnce)
{
    m_double.m_bag.Set(0x36150102, Exchange);
    EXPECT_TRUE(m_container.IsExchange());
    EXPECT_TRUE(m_container.IsExchange());
    EXPECT_EQ(Calls(), (Lines{"container: GetProps([0x36150102],0x0)"}));
}

TEST_F(Container, AnUnreadableProviderIsNotExchange)
{
    m_double.Fail("GetProps", MAPI_E_NO_ACCESS);
    EXPECT_FALSE(m_container.IsExchange());
    EXPECT_FALSE(m_container.IsExchange());
    EXPECT_EQ(Calls().size(), 1u);
    EXPECT_EQ(Caught(), 1u);
}

TEST_F(Container, AnotherProviderIsNotExchange)
{
    m_double.m_bag.Set(0x36150102, "0123456789abcdef");
    EXPECT_FALSE(m_container.IsExchange());
    CZebBinary none;
    EXPECT_FALSE(CZebContainer::IsExchangeProviderID(none));
    CZebBinary exchange("DCA740C8C042101AB4B908002B2FE182");
    EXPECT_TRUE(CZebContainer::IsExchangeProviderID(exchange));
}

TEST_F(Container, CopiesTakeTheKnownProvider)
{
    m_double.m_bag.Set(0x36150102, Exchange);
    EXPECT_TRUE(m_container.IsExchange());
    CZebContainer copy(m_container);
    RecordingContainer other(m_journal, "other");
    CZebContainer assigned(&other);
    EXPECT_FALSE(assigned.IsExchange());
    Calls();
    assigned = m_container;
    EXPECT_TRUE(copy.IsExchange());
    EXPECT_TRUE(assigned.IsExchange());
    CZebContainer unasked(&other);
    assigned = unasked;
    EXPECT_TRUE(Calls().empty());
    EXPECT_FALSE(assigned.IsExchange());
    EXPECT_EQ(Calls(), (Lines{"other: GetProps([0x36150102],0x0)"}));
}

TEST_F(Container, FreeingKeepsTheProvider)
{
    m_double.m_bag.Set(0x36150102, Exchange);
    EXPECT_TRUE(m_container.IsExchange());
    m_container.Free();
    EXPECT_TRUE(m_container.IsExchange());
}

TEST_F(Container, TheNameMarksAMobileOne)
{
    EXPECT_TRUE(CZebContainer::IsMobileContainer("Contacts (mobile)"));
    EXPECT_TRUE(CZebContainer::IsMobileContainer("(MoBiLe) x"));
    EXPECT_FALSE(CZebContainer::IsMobileContainer("Contacts mobile"));
    EXPECT_FALSE(CZebContainer::IsMobileContainer(""));
}

TEST_F(Container, ItemsCarryNamesAsDisplayNames)
{
    EXPECT_EQ(m_container.GetABItemDisplayNameTagForContainer(true), PR_DISPLAY_NAME_W);
    EXPECT_EQ(m_container.GetABItemDisplayNameTagForContainer(false), PR_DISPLAY_NAME_A);
}

namespace
{

class Wrappers : public ObjectsTest
{
};

class OpenMessage : public CZebMessage
{
public:
    using CZebMessage::CZebMessage;
    using CZebMessage::GetMessageA;
};

class OpenList : public CZebDistList
{
public:
    using CZebDistList::CZebDistList;
    using CZebDistList::GetDistList;
};

} // namespace

TEST_F(Wrappers, EachAcceptsItsTypeAndInterface)
{
    CZebMessage message;
    CZebMailUser user;
    CZebDistList list;
    CZebPropObj object;
    EXPECT_TRUE(*message.GetInterfaceCIID() == IID_IMessage);
    EXPECT_TRUE(*user.GetInterfaceCIID() == IID_IMAPIProp);
    EXPECT_TRUE(*list.GetInterfaceCIID() == IID_IDistList);
    EXPECT_TRUE(*object.GetInterfaceCIID() == IID_IMAPIProp);
    EXPECT_EQ(object.GetMAPIType(), 0u);
    for (unsigned int type = 0; type <= 12; ++type)
    {
        EXPECT_EQ(message.IsMAPITypeAcceptable(type), type == MAPI_MESSAGE) << type;
        EXPECT_EQ(user.IsMAPITypeAcceptable(type), type == MAPI_MAILUSER) << type;
        EXPECT_EQ(list.IsMAPITypeAcceptable(type), type == MAPI_DISTLIST) << type;
        EXPECT_EQ(object.IsMAPITypeAcceptable(type), type >= 1 && type <= 8) << type;
    }
}

TEST_F(Wrappers, QueryTheirInterfaceInWabToo)
{
    RecordingMessage message(m_journal);
    RecordingDistList list(m_journal);
    message.NoteQueries();
    list.NoteQueries();
    OpenMessage openMessage(&message);
    OpenList openList(&list);
    Open<CZebContainer> wab;
    wab.MarkWAB();
    static_cast<CZebIProp&>(openList).SetWAB(wab);
    EXPECT_EQ(openMessage.GetMessageA().Get(), &message);
    EXPECT_EQ(openList.GetDistList().Get(), &list);
    EXPECT_EQ(Calls(), (Lines{"message: QueryInterface(IMessage)", "list: QueryInterface(IDistList)"}));
    message.RefuseInterfaces();
    list.RefuseInterfaces();
    EXPECT_EQ(Raised([&] { openMessage.GetMessageA(); }), E_NOINTERFACE);
    EXPECT_EQ(Raised([&] { openList.GetDistList(); }), E_NOINTERFACE);
    EXPECT_EQ(Raised([] { OpenMessage().GetMessageA(); }), E_POINTER);
}

TEST_F(Wrappers, CopiesShareTheObject)
{
    RecordingMessage message(m_journal);
    RecordingProp plain(m_journal);
    const CZebMessage source(&message);
    CZebMessage copy(source);
    CZebMessage assigned;
    assigned = source;
    EXPECT_EQ(message.References(), 3u);
    const CZebMailUser user(&plain);
    CZebMailUser userCopy(user);
    CZebMailUser userAssigned;
    userAssigned = user;
    const CZebPropObj object(&plain);
    CZebPropObj objectCopy(object);
    CZebPropObj objectAssigned;
    objectAssigned = object;
    EXPECT_EQ(plain.References(), 6u);
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(Wrappers, AssigningListsKeepsTheKnownProvider)
{
    RecordingDistList exchange(m_journal, "exchange");
    exchange.m_bag.Set(0x36150102, Exchange);
    RecordingDistList other(m_journal, "other");
    CZebDistList target(&exchange);
    EXPECT_TRUE(target.IsExchange());
    const CZebDistList source(&other);
    target = source;
    EXPECT_TRUE(target.IsExchange());
    EXPECT_EQ(other.References(), 2u);
    // A copy starts unasked.
    CZebDistList asked(&exchange);
    asked.IsExchange();
    Calls();
    CZebDistList copy(asked);
    EXPECT_TRUE(copy.IsExchange());
    EXPECT_EQ(Calls(), (Lines{"exchange: GetProps([0x36150102],0x0)"}));
}

TEST_F(Container, OpenedIntoItselfKeepsItsMarking)
{
    m_double.m_openable.Add("self", &m_double, MAPI_ABCONT);
    m_container.MarkWAB();
    m_container.OpenEntry(ID("self"), m_container, MAPI_BEST_ACCESS);
    EXPECT_TRUE(m_container.IsValid());
    EXPECT_TRUE(m_container.IsWAB());
}
