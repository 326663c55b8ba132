// The address book, its containers and its entries through the library.
#include "tests/integration/AddressBooks.h"

#include "framework/ComError.h"
#include "platform/tags.h"

namespace zeb::test
{
namespace
{

using Names = std::vector<std::string>;

class AddressBook : public StoreHost
{
protected:
    AddressBook()
        : m_book(m_session->OpenAddressBook(nullptr, AB_NO_DIALOG))
    {
    }
    ~AddressBook() override { m_book.Free(); }

    CZebContainer ContactsFolder() { return m_store->OpenContactsFolder(MAPI_BEST_ACCESS); }

    void AddContact(const char* name, const char* address)
    {
        CZebFolder folder = m_store->OpenContactsFolder(MAPI_BEST_ACCESS);
        CZebPropValArray properties(4);
        properties[PR_SUBJECT_A] = name;
        properties[PR_DISPLAY_NAME_A] = name;
        properties[PR_MESSAGE_CLASS_A] = "IPM.Contact";
        properties[PR_EMAIL_ADDRESS_A] = address;
        folder.CreateMessage(properties, true, 0);
    }

    std::string ContactsHex() { return ContainerID(m_book, "Contacts").String().GetString(); }

    CZebAddressBook m_book;
};

template <class Body>
HRESULT Raised(Body&& body)
{
    try
    {
        body();
    }
    catch (const _com_error& error)
    {
        return error.Error();
    }
    return S_OK;
}

TEST_F(AddressBook, RootHoldsGlobalListAndContacts)
{
    CZebABContainer root = m_book.OpenRootContainer(MAPI_BEST_ACCESS);
    EXPECT_EQ(root.GetObjectType(), ULONG(MAPI_ABCONT));
    EXPECT_EQ(NamesOf(RowsOf(root.GetHierarchyTable(0))), (Names{"Global Address List", "Contacts"}));
    EXPECT_EQ(m_book.GetObjectType(), ULONG(MAPI_ADDRBOOK));
    EXPECT_FALSE(root.IsWAB());
}

TEST_F(AddressBook, OnlyTheGlobalListIsExchange)
{
    EXPECT_TRUE(m_book.OpenMainContainer(nullptr).IsExchange());
    EXPECT_FALSE(m_book.OpenRootContainer(MAPI_BEST_ACCESS).IsExchange());
    CZebABContainer contacts;
    m_book.OpenEntry(ContainerID(m_book, "Contacts"), contacts, MAPI_BEST_ACCESS);
    EXPECT_FALSE(contacts.IsExchange());
    EXPECT_FALSE(m_book.OpenMainContainer(ContactsHex().c_str()).IsExchange());
    CZebDistList list;
    m_book.OpenEntry(AddEntry(m_book, "Team", nullptr), list, MAPI_BEST_ACCESS);
    EXPECT_FALSE(list.IsExchange());
}

TEST_F(AddressBook, NoTextOpensTheDefaultDirectory)
{
    const CZebBinary directory = ContainerID(m_book, "Global Address List");
    EXPECT_TRUE(m_book.GetDefaultDirEntryID() == directory);
    EXPECT_TRUE(m_book.OpenMainContainer(nullptr).GetEntryID() == directory);
    EXPECT_TRUE(m_book.OpenMainContainer("").GetEntryID() == directory);
    EXPECT_TRUE(m_book.OpenMainContainer(directory.String()).GetEntryID() == directory);
}

TEST_F(AddressBook, AContactsIdentifierOpensItsFolder)
{
    AddContact("Ada Brandt", "ada@example.org");
    CZebContainer container = m_book.OpenContainer(ContainerID(m_book, "Contacts"), MAPI_BEST_ACCESS);
    EXPECT_EQ(container.GetObjectType(), ULONG(MAPI_FOLDER));
    EXPECT_TRUE(container.GetEntryID() == ContactsFolder().GetEntryID());
    EXPECT_EQ(NamesOf(RowsOf(container.GetContentsTable(0))), (Names{"Ada Brandt"}));
    CZebABContainer asContainer;
    m_book.OpenEntry(ContainerID(m_book, "Contacts"), asContainer, MAPI_BEST_ACCESS);
    EXPECT_EQ(asContainer.GetObjectType(), ULONG(MAPI_ABCONT));
    const std::vector<BookRow> rows = RowsOf(asContainer.GetContentsTable(0));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].address, "ada@example.org");
    CZebMailUser contact;
    m_book.OpenEntry(rows[0].id, contact, MAPI_BEST_ACCESS);
    EXPECT_STREQ(contact.GetDisplayName(), "Ada Brandt");
}

TEST_F(AddressBook, AnyOtherContainerOpensAsItself)
{
    CZebContainer directory = m_book.OpenContainer(m_book.GetDefaultDirEntryID(), MAPI_BEST_ACCESS);
    EXPECT_EQ(directory.GetObjectType(), ULONG(MAPI_ABCONT));
    EXPECT_STREQ(directory.GetDisplayName(), "Global Address List");
    EXPECT_EQ(directory.GetABItemDisplayNameTagForContainer(true), PR_DISPLAY_NAME_W);
}

TEST_F(AddressBook, ACutFolderIdentifierIsInvalid)
{
    const CZebBinary whole = ContainerID(m_book, "Contacts");
    const SBinary& bytes = whole;
    for (ULONG size = bytes.cb - 1; size >= 44; --size)
    {
        const Failure failure = FailureOf([&] { m_book.OpenContainer({size, bytes.lpb}, MAPI_BEST_ACCESS); });
        EXPECT_EQ(failure.result, MAPI_E_INVALID_ENTRYID) << size;
        // One that lacks a byte of the folder's identifier is not passed to the provider.
        EXPECT_EQ(failure.text.find("entry identifier") != std::string::npos, size > 44) << failure.text;
    }
    CZebABContainer container;
    const Failure failure =
        FailureOf([&] { m_book.OpenEntry({bytes.cb - 1, bytes.lpb}, container, MAPI_BEST_ACCESS); });
    EXPECT_EQ(failure.result, MAPI_E_INVALID_ENTRYID);
    EXPECT_NE(failure.text.find("identifier of the contacts folder"), std::string::npos) << failure.text;
    EXPECT_FALSE(container.IsValid());
}

TEST_F(AddressBook, EntriesAreListedFoundAndOpened)
{
    AddEntry(m_book, "Boris Cole", "boris@example.org");
    const CZebBinary ada = AddEntry(m_book, "Ada Brandt", "ada@example.org");
    CZebContainer directory = m_book.OpenMainContainer(nullptr);
    CZebTable table = directory.GetContentsTable(0);
    EXPECT_EQ(table.GetRowCount(), 2u);
    EXPECT_EQ(NamesOf(RowsOf(table)), (Names{"Ada Brandt", "Boris Cole"}));
    SPropValue sought{};
    sought.ulPropTag = PR_ANR_A;
    sought.Value.lpszA = const_cast<char*>("col");
    SRestriction restriction{};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty = {RELOP_EQ, PR_ANR_A, &sought};
    table.Restrict(&restriction, 0);
    EXPECT_EQ(NamesOf(RowsOf(table)), (Names{"Boris Cole"}));
    CZebMailUser user;
    directory.OpenEntry(ada, user, MAPI_BEST_ACCESS);
    EXPECT_STREQ(user.GetStringPropA(PR_EMAIL_ADDRESS_A), "ada@example.org");
    EXPECT_STREQ(user.GetStringPropA(PR_SMTP_ADDRESS_A), "ada@example.org");
    EXPECT_STREQ(user.GetStringPropA(PR_ADDRTYPE_A), "SMTP");
    EXPECT_EQ(user.GetObjectType(), ULONG(MAPI_MAILUSER));
}

TEST_F(AddressBook, AUserIsRenamedThroughWrapper)
{
    const CZebBinary id = AddEntry(m_book, "Ada", "ada@example.org");
    CZebMailUser user;
    m_book.OpenEntry(id, user, MAPI_BEST_ACCESS);
    user.SetDisplayName("Zara");
    AddEntry(m_book, "Max", "max@example.org");
    EXPECT_EQ(NamesOf(RowsOf(m_book.OpenMainContainer(nullptr).GetContentsTable(0))), (Names{"Max", "Zara"}));
}

TEST_F(AddressBook, ItemsAreUsersAndListsOnly)
{
    const CZebBinary user = AddEntry(m_book, "Ada", "ada@example.org");
    const CZebBinary list = AddEntry(m_book, "Team", nullptr);
    CZebABItem item;
    m_book.OpenEntry(user, item, MAPI_BEST_ACCESS);
    EXPECT_STREQ(item.GetDisplayName(), "Ada");
    CZebMailUser converted = item;
    EXPECT_STREQ(converted.GetDisplayName(), "Ada");
    m_book.OpenEntry(list, item, MAPI_BEST_ACCESS);
    EXPECT_EQ(static_cast<CZebDistList>(item).GetContentsTable(0).GetRowCount(), 0u);
    EXPECT_EQ(FailureOf([&] { m_book.OpenEntry(m_book.GetDefaultDirEntryID(), item, 0); }).result, MAPI_E_INVALID_TYPE);
    EXPECT_FALSE(item.IsValid());
    CZebMailUser wrong;
    EXPECT_EQ(FailureOf([&] { m_book.OpenEntry(list, wrong, 0); }).result, MAPI_E_INVALID_TYPE);
    EXPECT_FALSE(wrong.IsValid());
    CZebPropObj any;
    m_book.OpenEntry(list, any, 0);
    EXPECT_EQ(any.GetObjectType(), ULONG(MAPI_DISTLIST));
}

TEST_F(AddressBook, AMessageIsAnItemToo)
{
    AddMessage("mail", 1);
    const CZebBinary id = RowsOf(Inbox().GetContentsTable(0)).at(0).id;
    CZebABItem item;
    m_book.OpenEntry(id, item, MAPI_BEST_ACCESS);
    EXPECT_EQ(item.GetObjectType(), ULONG(MAPI_MESSAGE));
}

TEST_F(AddressBook, AListOpensFromItself)
{
    const CZebBinary id = AddEntry(m_book, "Loop", nullptr);
    AddMember(m_book, id, id);
    CZebDistList list;
    m_book.OpenEntry(id, list, MAPI_BEST_ACCESS);
    for (int level = 0; level < 20; ++level)
    {
        const std::vector<BookRow> members = RowsOf(list.GetContentsTable(0));
        ASSERT_EQ(NamesOf(members), (Names{"Loop"}));
        CZebDistList inner;
        list.OpenEntry(members[0].id, inner, MAPI_BEST_ACCESS);
        list = inner;
    }
    EXPECT_TRUE(m_book.CompareEntryIDs(list.GetEntryID().String(), id.String()));
}

TEST_F(AddressBook, IdentifiersAreComparedByTheSession)
{
    const CZebBinary ada = AddEntry(m_book, "Ada", "ada@example.org");
    const CZebBinary boris = AddEntry(m_book, "Boris", "boris@example.org");
    CStringA lower = ada.String();
    lower.MakeLower();
    EXPECT_TRUE(m_book.CompareEntryIDs(ada.String(), lower));
    EXPECT_FALSE(m_book.CompareEntryIDs(ada.String(), boris.String()));
    EXPECT_TRUE(m_book.CompareEntryIDs(nullptr, ""));
    EXPECT_FALSE(m_book.CompareEntryIDs(ada.String(), nullptr));
}

TEST_F(AddressBook, ACopyOutlivesItsOriginal)
{
    const CZebBinary ada = AddEntry(m_book, "Ada", "ada@example.org");
    CZebAddressBook copy(m_book);
    m_book.Free();
    EXPECT_FALSE(m_book.IsValid());
    CZebMailUser user;
    copy.OpenEntry(ada, user, MAPI_BEST_ACCESS);
    EXPECT_STREQ(user.GetDisplayName(), "Ada");
    EXPECT_EQ(Raised([&] { m_book.OpenRootContainer(0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { m_book.CompareEntryIDs("00", "00"); }), E_POINTER);
}

TEST_F(AddressBook, EntriesSurviveANewSession)
{
    const CZebBinary ada = AddEntry(m_book, "Ada", "ada@example.org");
    m_book.Free();
    m_store.reset();
    m_session->Logoff(0, 0, 0);
    *m_session = LogOn();
    m_store = std::make_unique<CZebMsgStore>(OpenDefaultStore(*m_session));
    CZebMailUser user;
    m_session->OpenEntry(ada, user, MAPI_BEST_ACCESS);
    EXPECT_STREQ(user.GetDisplayName(), "Ada");
}

} // namespace
} // namespace zeb::test
