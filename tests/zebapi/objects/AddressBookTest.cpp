#include "zebapi/AddressBook.h"
#include "ObjectsTest.h"
#include "qorth/TimeProfile.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "tests/support/doubles/RecordingStore.h"
#include "zebapi/SESSION.h"

using namespace zeb::test;

namespace
{

class OpenBook : public CZebAddressBook
{
public:
    using CZebAddressBook::CZebAddressBook;
    using CZebAddressBook::GetAddrBook;
    using CZebAddressBook::SetSession;
    using CZebAddressBook::SetWABObject;
    void MarkWAB() { SetWAB(true); }
};

class AddressBook : public ObjectsTest
{
protected:
    AddressBook()
    {
        m_double.m_defaultDir = "dir";
        m_double.m_openable.Add("", &m_container, MAPI_ABCONT);
        m_double.m_openable.Add("dir", &m_container, MAPI_ABCONT);
        m_double.m_openable.Add("user", &m_user, MAPI_MAILUSER);
        m_double.m_openable.Add("list", &m_list, MAPI_DISTLIST);
        m_session.m_openable.Add("dir", &m_container, MAPI_ABCONT);
        m_session.m_openable.Add("user", &m_user, MAPI_MAILUSER);
        m_session.m_openable.Add("folder", &m_contacts, MAPI_FOLDER);
    }

    RecordingContainer m_container{m_journal};
    RecordingFolder m_contacts{m_journal, "contacts"};
    RecordingProp m_user{m_journal, "user"};
    RecordingDistList m_list{m_journal};
    RecordingSession m_session{m_journal};
    RecordingProp m_wabObject{m_journal, "wab"};
    RecordingAddrBook m_double{m_journal};
    OpenBook m_book{&m_double};
};

/// A contact identifier of a type, which wraps `nested`.
std::string ContactID(char type, const std::string& nested)
{
    const std::string head("\0\0\0\0\xFE\x42\xAA\x0A\x18\xC7\x1A\x10\xE8\x85\x0B\x65\x1C\x24\0\0\3\0\0\0", 24);
    return head + type + std::string("\0\0\0", 3) + std::string(8, '\0') + std::string(type == 3 ? 8 : 0, '\0') +
           nested;
}

SBinary IDOf(const std::string& bytes)
{
    return {static_cast<ULONG>(bytes.size()), reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
}

std::string HexOf(const std::string& bytes)
{
    return Hex(bytes.data(), bytes.size());
}

} // namespace

TEST_F(AddressBook, IsOneOfItsType)
{
    EXPECT_TRUE(*m_book.GetInterfaceCIID() == IID_IAddrBook);
    EXPECT_EQ(m_book.GetMAPIType(), static_cast<ULONG>(MAPI_ADDRBOOK));
    EXPECT_EQ(m_book.GetAddrBook().Get(), &m_double);
    m_double.RefuseInterfaces();
    EXPECT_EQ(Raised([&] { m_book.GetAddrBook(); }), E_NOINTERFACE);
    EXPECT_EQ(Raised([] { OpenBook().GetAddrBook(); }), E_POINTER);
}

TEST_F(AddressBook, CopiesHoldBothExtraReferences)
{
    m_book.SetSession(&m_session);
    m_book.SetWABObject(&m_wabObject);
    {
        CZebAddressBook copy(m_book);
        CZebAddressBook assigned;
        assigned = m_book;
        EXPECT_EQ(m_session.References(), 3u);
        EXPECT_EQ(m_wabObject.References(), 3u);
        EXPECT_EQ(m_double.References(), 3u);
        assigned.Free();
        EXPECT_EQ(m_session.References(), 2u);
        EXPECT_EQ(m_wabObject.References(), 2u);
    }
    const CZebAddressBook& same = m_book;
    static_cast<CZebAddressBook&>(m_book) = same;
    EXPECT_EQ(m_session.References(), 1u);
    EXPECT_EQ(m_wabObject.References(), 1u);
    m_book.Free();
    EXPECT_EQ(m_session.References() + m_wabObject.References() + m_double.References(), 0u);
}

TEST_F(AddressBook, AHeldSessionOpensEntriesUnmarked)
{
    m_book.SetSession(&m_session);
    CZebMailUser user;
    m_book.OpenEntry(ID("user"), user, 0x10);
    EXPECT_EQ(Calls(), (Lines{"session: OpenEntry(75736572,IMAPIProp,0x10)"}));
    EXPECT_FALSE(user.IsWAB());
}

TEST_F(AddressBook, AWabBookOpensEntriesItself)
{
    m_book.SetSession(&m_session);
    m_book.MarkWAB();
    CZebMailUser user;
    m_book.OpenEntry(ID("user"), user, 0x10);
    EXPECT_EQ(Calls(), (Lines{"book: OpenEntry(75736572,IMAPIProp,0x10)"}));
    EXPECT_TRUE(user.IsWAB());
}

TEST_F(AddressBook, WithoutSessionItOpensEntriesItself)
{
    CZebDistList list;
    m_book.OpenEntry(ID("list"), list, 0);
    EXPECT_EQ(Calls(), (Lines{"book: OpenEntry(6C697374,IDistList,0x0)"}));
    CZebMailUser user;
    EXPECT_EQ(Thrown([&] { m_book.OpenEntry(ID("list"), user, 0); }), MAPI_E_INVALID_TYPE);
    EXPECT_FALSE(user.IsValid());
    m_double.m_error = "closed";
    EXPECT_EQ(Described([&] { m_book.OpenEntry(ID("none"), user, 0); }),
              "Ver:1, Error:closed, Component:book, LowLewelError:2, Context:3 \n");
}

TEST_F(AddressBook, AnEmptyOneLeavesTheTarget)
{
    CZebAddressBook empty;
    CZebMailUser user(&m_user);
    EXPECT_EQ(Raised([&] { empty.OpenEntry(ID("user"), user, 0); }), E_POINTER);
    EXPECT_TRUE(user.IsValid());
    EXPECT_EQ(Raised([&] { empty.OpenRootContainer(0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetDefaultDirEntryID(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenMainContainer(nullptr); }), E_POINTER);
}

TEST_F(AddressBook, NoBytesOpenTheRoot)
{
    m_book.MarkWAB();
    CZebABContainer root = m_book.OpenRootContainer(0x10);
    EXPECT_EQ(Calls(), (Lines{"book: OpenEntry(-,IMAPIContainer,0x10)"}));
    EXPECT_TRUE(root.IsWAB());
    EXPECT_TRUE(root.IsMAPITypeAcceptable(MAPI_ABCONT));
    EXPECT_FALSE(root.IsMAPITypeAcceptable(MAPI_FOLDER));
}

TEST_F(AddressBook, ARootMustBeAContainer)
{
    m_double.m_openable.Add("", &m_list, MAPI_DISTLIST);
    EXPECT_EQ(Thrown([&] { m_book.OpenRootContainer(0); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(m_list.References(), 0u);
}

TEST_F(AddressBook, TheDefaultDirectoryIsAskedFor)
{
    EXPECT_STREQ(m_book.GetDefaultDirEntryID().String(), "646972");
    EXPECT_EQ(Calls(), (Lines{"book: GetDefaultDir()"}));
    m_double.Fail("GetDefaultDir", MAPI_E_NOT_FOUND);
    EXPECT_EQ(Thrown([&] { m_book.GetDefaultDirEntryID(); }), MAPI_E_NOT_FOUND);
}

TEST_F(AddressBook, NoTextMeansTheDefaultDirectory)
{
    const Lines expected = {"book: GetDefaultDir()", "book: OpenEntry(646972,IMAPIContainer,0x10)"};
    EXPECT_TRUE(m_book.OpenMainContainer(nullptr).IsValid());
    EXPECT_EQ(Calls(), expected);
    EXPECT_TRUE(m_book.OpenMainContainer("").IsValid());
    EXPECT_EQ(Calls(), expected);
    EXPECT_TRUE(m_book.OpenMainContainer("646972").IsValid());
    EXPECT_EQ(Calls(), (Lines{expected[1]}));
}

TEST_F(AddressBook, TheSessionOpensAContactsFolder)
{
    m_book.SetSession(&m_session);
    const std::string id = ContactID(3, "folder");
    CZebContainer container = m_book.OpenContainer(IDOf(id), 0x11);
    EXPECT_EQ(Calls(), (Lines{"session: OpenEntry(666F6C646572,IMAPIContainer,0x11)"}));
    EXPECT_EQ(m_contacts.References(), 1u);
}

TEST_F(AddressBook, AnotherContactOpensAsItself)
{
    m_book.SetSession(&m_session);
    for (char type : {4, 5})
    {
        const std::string id = ContactID(type, "folder");
        m_session.m_openable.Add(id, &m_container, MAPI_ABCONT);
        m_book.OpenContainer(IDOf(id), 0);
        EXPECT_EQ(Calls(), (Lines{"session: OpenEntry(" + HexOf(id) + ",IMAPIContainer,0x0)"}));
    }
}

TEST_F(AddressBook, AnEmptyContactsFolderIsInvalid)
{
    m_book.SetSession(&m_session);
    const std::string id = ContactID(3, "");
    EXPECT_EQ(Thrown([&] { m_book.OpenContainer(IDOf(id), 0); }), MAPI_E_INVALID_ENTRYID);
    EXPECT_TRUE(Calls().empty());
}

TEST_F(AddressBook, AContactsFolderNeedsASession)
{
    const std::string id = ContactID(3, "folder");
    EXPECT_EQ(Raised([&] { m_book.OpenContainer(IDOf(id), 0); }), E_POINTER);
}

TEST_F(AddressBook, AWabComparesTextsIgnoringCase)
{
    m_book.MarkWAB();
    EXPECT_TRUE(m_book.CompareEntryIDs("00AB", "00ab"));
    EXPECT_FALSE(m_book.CompareEntryIDs("00AB", "00AC"));
    EXPECT_TRUE(m_book.CompareEntryIDs(nullptr, ""));
    EXPECT_TRUE(Calls().empty());
}

TEST_F(AddressBook, OtherwiseTheSessionComparesTexts)
{
    EXPECT_EQ(Raised([&] { m_book.CompareEntryIDs("00AB", "00ab"); }), E_POINTER);
    m_book.SetSession(&m_session);
    EXPECT_TRUE(m_book.CompareEntryIDs("00AB", "00ab"));
    EXPECT_TRUE(m_book.CompareEntryIDs(nullptr, ""));
    EXPECT_FALSE(m_book.CompareEntryIDs("00AB", nullptr));
    EXPECT_EQ(Calls(), (Lines{"session: CompareEntryIDs(00AB,00AB,0x0)", "session: CompareEntryIDs(-,-,0x0)",
                              "session: CompareEntryIDs(00AB,-,0x0)"}));
}

TEST_F(AddressBook, ItemsAreMessagesUsersAndLists)
{
    CZebABItem item;
    EXPECT_TRUE(*item.GetInterfaceCIID() == IID_IMAPIProp);
    EXPECT_EQ(item.GetMAPIType(), 0u);
    for (unsigned int type = 0; type <= 12; ++type)
    {
        EXPECT_EQ(item.IsMAPITypeAcceptable(type),
                  type == MAPI_MESSAGE || type == MAPI_MAILUSER || type == MAPI_DISTLIST)
            << type;
    }
    m_book.OpenEntry(ID("user"), item, 0);
    EXPECT_TRUE(item.IsValid());
    EXPECT_EQ(Thrown([&] { m_book.OpenEntry(ID("dir"), item, 0); }), MAPI_E_INVALID_TYPE);
    EXPECT_FALSE(item.IsValid());
}

TEST_F(AddressBook, ItemsConvertToWrappersAndBack)
{
    m_book.MarkWAB();
    CZebABItem item(&m_user);
    item.SetWAB(m_book);
    const CZebABItem& constant = item;
    CZebMailUser user = constant;
    CZebDistList list = constant;
    CZebMessage message = constant;
    EXPECT_EQ(m_user.References(), 4u);
    EXPECT_FALSE(user.IsWAB());
    CZebABItem back;
    back = user;
    back = list;
    back = message;
    back = constant;
    EXPECT_TRUE(back.IsWAB());
    CZebABItem copy(back);
    EXPECT_EQ(m_user.References(), 6u);
    EXPECT_FALSE(static_cast<CZebMailUser>(CZebABItem()).IsValid());
}

TEST_F(AddressBook, OpeningMainContainersIsMeasured)
{
    std::vector<std::string> measured;
    CTimeProfile::SetReporter([&](const char* name, double) { measured.emplace_back(name); });
    m_book.OpenRootContainer(0);
    m_book.OpenMainContainer("646972");
    m_double.Fail("GetDefaultDir", MAPI_E_NOT_FOUND);
    Thrown([&] { m_book.OpenMainContainer(nullptr); });
    CTimeProfile::SetReporter({});
    EXPECT_EQ(measured,
              (std::vector<std::string>{"CZebAddressBook::OpenRootContainer", "CZebAddressBook::OpenMainContainer",
                                        "CZebAddressBook::OpenMainContainer"}));
}

TEST_F(AddressBook, OutsideTheWabRootsAreUnmarked)
{
    EXPECT_FALSE(m_book.OpenRootContainer(0).IsWAB());
    EXPECT_FALSE(m_book.OpenContainer(ID("dir"), 0).IsWAB());
}

TEST_F(AddressBook, WabMarksContainersButNotContacts)
{
    m_book.SetSession(&m_session);
    m_book.MarkWAB();
    EXPECT_TRUE(m_book.OpenContainer(ID("dir"), 0).IsWAB());
    EXPECT_EQ(Calls(), (Lines{"book: OpenEntry(646972,IMAPIContainer,0x0)"}));
    const std::string id = ContactID(3, "folder");
    EXPECT_FALSE(m_book.OpenContainer(IDOf(id), 0).IsWAB());
    EXPECT_EQ(Calls(), (Lines{"session: OpenEntry(666F6C646572,IMAPIContainer,0x0)"}));
}

TEST_F(AddressBook, OverriddenOperationsApplyToTheOthers)
{
    class Derived : public OpenBook
    {
    public:
        using OpenBook::OpenBook;
        CZebBinary GetDefaultDirEntryID() override
        {
            calls.emplace_back("GetDefaultDirEntryID");
            return OpenBook::GetDefaultDirEntryID();
        }
        CZebContainer OpenContainer(const SBinary& entryID, ULONG flags) override
        {
            calls.emplace_back("OpenContainer");
            return OpenBook::OpenContainer(entryID, flags);
        }
        void OpenEntry(const SBinary& entryID, CZebIProp& target, ULONG flags) override
        {
            calls.emplace_back("OpenEntry");
            OpenBook::OpenEntry(entryID, target, flags);
        }
        CComPtr<IAddrBook> GetAddrBook() override
        {
            calls.emplace_back("GetAddrBook");
            return OpenBook::GetAddrBook();
        }
        Lines calls;
    } book(&m_double);
    book.OpenMainContainer("");
    EXPECT_EQ(book.calls, (Lines{"GetDefaultDirEntryID", "GetAddrBook", "OpenContainer", "OpenEntry", "GetAddrBook"}));
    book.calls.clear();
    book.OpenRootContainer(0);
    EXPECT_EQ(book.calls, (Lines{"GetAddrBook"}));
}

TEST_F(AddressBook, TheSessionJudgesCutWrappedIdentifiers)
{
    m_book.SetSession(&m_session);
    m_session.Fail("OpenEntry", MAPI_E_INVALID_ENTRYID);
    const std::string id = ContactID(3, "fol");
    EXPECT_EQ(Thrown([&] { m_book.OpenContainer(IDOf(id), 0); }), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(Calls(), (Lines{"session: OpenEntry(666F6C,IMAPIContainer,0x0)"}));
}

TEST_F(AddressBook, FreeingClearsTheMarking)
{
    m_book.SetSession(&m_session);
    m_book.MarkWAB();
    m_book.Free();
    EXPECT_FALSE(m_book.IsValid());
    EXPECT_FALSE(m_book.IsWAB());
    EXPECT_EQ(Caught(), 0u);
}

TEST_F(AddressBook, OpenedIntoItselfKeepsItsMarking)
{
    m_double.m_openable.Add("self", &m_double, MAPI_ADDRBOOK);
    m_book.MarkWAB();
    m_book.OpenEntry(ID("self"), m_book, MAPI_BEST_ACCESS);
    EXPECT_TRUE(m_book.IsValid());
    EXPECT_TRUE(m_book.IsWAB());
}

TEST_F(AddressBook, AFailedComparisonCarriesTheError)
{
    m_book.SetSession(&m_session);
    m_session.m_error = "no comparison";
    m_session.Fail("CompareEntryIDs", MAPI_E_UNKNOWN_ENTRYID);
    EXPECT_NE(Described([&] { m_book.CompareEntryIDs("00", "01"); }).find("no comparison"), std::string::npos);
    EXPECT_NE(m_log.Texts().at(0).find("File zebapi/objects/AddressBook.cpp"), std::string::npos)
        << m_log.Texts().at(0);
}
