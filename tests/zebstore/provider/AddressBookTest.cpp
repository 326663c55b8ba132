#include "platform/text.h"
#include "tests/zebstore/provider/AddressBookFixture.h"

#include <algorithm>

namespace zebstore
{
namespace
{

using AddressBooks = AddressBookProvider;

const Bytes ExchangeProvider = {0xDC, 0xA7, 0x40, 0xC8, 0xC0, 0x42, 0x10, 0x1A,
                                0xB4, 0xB9, 0x08, 0x00, 0x2B, 0x2F, 0xE1, 0x82};

TEST_F(AddressBooks, HaveARootWithTwoContainers)
{
    ULONG type = 0;
    const auto root = OpenInBook<IABContainer>({}, MAPI_BEST_ACCESS, &type);
    EXPECT_EQ(type, MAPI_ABCONT);
    IMAPITable* table = nullptr;
    ASSERT_EQ(root->GetHierarchyTable(CONVENIENT_DEPTH, &table), S_OK);
    const Rows rows(table, {PR_DISPLAY_NAME_A, PR_DISPLAY_TYPE, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH});
    ASSERT_EQ(rows.Count(), 2u);
    EXPECT_EQ(rows.TextCell(0, 0), "Global Address List");
    EXPECT_EQ(rows.Cell(0, 1).Value.l, LONG(DT_GLOBAL));
    EXPECT_EQ(rows.Cell(0, 2).Value.l, LONG(MAPI_ABCONT));
    EXPECT_EQ(rows.Cell(0, 3).Value.l, LONG(AB_RECIPIENTS | AB_MODIFIABLE));
    EXPECT_EQ(rows.TextCell(1, 0), "Contacts");
    EXPECT_EQ(rows.Cell(1, 1).Value.l, LONG(DT_LOCAL));
    EXPECT_EQ(rows.Cell(1, 3).Value.l, LONG(AB_RECIPIENTS | AB_UNMODIFIABLE));
    ASSERT_EQ(root->GetContentsTable(0, &table), MAPI_E_NO_SUPPORT);
    const Bytes again = GetBytes(root.Get(), PR_ENTRYID);
    EXPECT_EQ(GetText(OpenInBook<IABContainer>(again).Get(), PR_DISPLAY_NAME_A), "Address Book");
}

TEST_F(AddressBooks, OnlyTheGlobalListIsExchange)
{
    EXPECT_EQ(GetBytes(Directory().Get(), PR_AB_PROVIDER_ID), ExchangeProvider);
    EXPECT_EQ(GetBytes(Root().Get(), PR_AB_PROVIDER_ID).size(), 16u);
    EXPECT_NE(GetBytes(Root().Get(), PR_AB_PROVIDER_ID), ExchangeProvider);
    EXPECT_NE(GetBytes(Contacts().Get(), PR_AB_PROVIDER_ID), ExchangeProvider);
    HRESULT code = S_OK;
    Get(OpenInBook<IDistList>(AddList("Team")).Get(), PR_AB_PROVIDER_ID, &code);
    EXPECT_EQ(code, MAPI_E_NOT_FOUND);
}

TEST_F(AddressBooks, KeepUsersWithTheirAddresses)
{
    const Bytes id = AddUser("Ada Brandt", "ada@example.org");
    ULONG type = 0;
    const auto user = OpenInBook<IMailUser>(id, 0, &type);
    EXPECT_EQ(type, MAPI_MAILUSER);
    EXPECT_EQ(GetText(user.Get(), PR_DISPLAY_NAME_A), "Ada Brandt");
    EXPECT_EQ(GetText(user.Get(), PR_EMAIL_ADDRESS_A), "ada@example.org");
    EXPECT_EQ(GetText(user.Get(), PR_ADDRTYPE_A), "SMTP");
    EXPECT_EQ(GetText(user.Get(), SmtpAddress), "ada@example.org");
    EXPECT_EQ(GetLong(user.Get(), PR_OBJECT_TYPE), MAPI_MAILUSER);
    EXPECT_EQ(GetLong(user.Get(), PR_DISPLAY_TYPE), DT_MAILUSER);
    EXPECT_EQ(GetBytes(user.Get(), PR_ENTRYID), id);
    const Bytes key = GetBytes(user.Get(), PR_SEARCH_KEY);
    EXPECT_EQ(std::string(key.begin(), key.end()), std::string("SMTP:ADA@EXAMPLE.ORG", 21));
    m_book = {};
    m_session = {};
    EXPECT_EQ(GetText(OpenInBook<IMailUser>(id).Get(), PR_DISPLAY_NAME_A), "Ada Brandt");
}

TEST_F(AddressBooks, OtherTypesHaveNoSmtpAddress)
{
    const Ref<IMAPIProp> user = New(*Directory(), PR_DEF_CREATE_MAILUSER);
    Set(user.Get(), NarrowValue(PR_DISPLAY_NAME_A, "Fax machine"));
    Set(user.Get(), NarrowValue(PR_ADDRTYPE_A, "FAX"));
    Set(user.Get(), NarrowValue(PR_EMAIL_ADDRESS_A, "+49 30 123"));
    ASSERT_EQ(user->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetText(user.Get(), PR_ADDRTYPE_A), "FAX");
    HRESULT code = S_OK;
    Get(user.Get(), SmtpAddress, &code);
    EXPECT_EQ(code, MAPI_E_NOT_FOUND);
}

TEST_F(AddressBooks, ListTheirEntriesByName)
{
    for (const char* name : {"Chen", "ada", "Boris"})
    {
        AddUser(name);
    }
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"ada", "Boris", "Chen"}));
    IMAPITable* table = nullptr;
    ASSERT_EQ(Directory()->GetContentsTable(MAPI_UNICODE, &table), S_OK);
    const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
    ULONG count = 0;
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 3u);
    AddUser("Bertha");
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 4u);
    table->AddRef();
    EXPECT_EQ(NamesOf(table), (Texts{"ada", "Bertha", "Boris", "Chen"}));
}

TEST_F(AddressBooks, SortByAnythingAndBackwards)
{
    AddUser("A", "3@x.org");
    AddUser("B", "1@x.org");
    AddUser("C", "2@x.org");
    const auto sorted = [&](ULONG tag, ULONG direction)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(Directory()->GetContentsTable(0, &table), S_OK);
        SizedSSortOrderSet(1, order) = {1, 0, 0, {{tag, direction}}};
        EXPECT_EQ(table->SortTable(reinterpret_cast<LPSSortOrderSet>(&order), 0), S_OK);
        return NamesOf(table);
    };
    EXPECT_EQ(sorted(PR_DISPLAY_NAME_A, TABLE_SORT_DESCEND), (Texts{"C", "B", "A"}));
    EXPECT_EQ(sorted(PR_DISPLAY_NAME_W, TABLE_SORT_ASCEND), (Texts{"A", "B", "C"}));
    EXPECT_EQ(sorted(PR_EMAIL_ADDRESS_A, TABLE_SORT_ASCEND), (Texts{"B", "C", "A"}));
}

TEST_F(AddressBooks, SortEqualNamesByFurtherKeys)
{
    AddUser("A", "1@x.org");
    AddUser("A", "2@x.org");
    IMAPITable* table = nullptr;
    ASSERT_EQ(Directory()->GetContentsTable(0, &table), S_OK);
    SizedSSortOrderSet(2, order) = {
        2, 0, 0, {{PR_DISPLAY_NAME_A, TABLE_SORT_ASCEND}, {PR_EMAIL_ADDRESS_A, TABLE_SORT_DESCEND}}};
    EXPECT_EQ(table->SortTable(reinterpret_cast<LPSSortOrderSet>(&order), 0), S_OK);
    const Rows rows(table, {PR_EMAIL_ADDRESS_A});
    EXPECT_EQ(rows.TextCell(0, 0), "2@x.org");
    EXPECT_EQ(rows.TextCell(1, 0), "1@x.org");
}

TEST_F(AddressBooks, AnswerToTheBeginningsOfNames)
{
    AddUser("Ada Brandt", "adab@example.org");
    AddUser("Adam Cole", "cole@example.org");
    const std::string zoe = zeb::platform::NarrowFromWide(ZEBW("Zo\u00eb Hart"), 8);
    AddUser(zoe.c_str(), "z@example.org");
    const auto found = [&](const char* name, ULONG tag = PR_ANR_A)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(Directory()->GetContentsTable(0, &table), S_OK);
        SPropValue value = NarrowValue(tag, name);
        SRestriction restriction{};
        restriction.rt = RES_PROPERTY;
        restriction.res.resProperty = {RELOP_EQ, tag, &value};
        EXPECT_EQ(table->Restrict(&restriction, 0), S_OK);
        return NamesOf(table);
    };
    EXPECT_EQ(found("ada"), (Texts{"Ada Brandt", "Adam Cole"}));
    EXPECT_EQ(found("bran ADA"), (Texts{"Ada Brandt"}));
    EXPECT_EQ(found("Cole, Adam"), (Texts{"Adam Cole"}));
    EXPECT_EQ(found("adab@ex"), (Texts{"Ada Brandt"}));
    EXPECT_EQ(found("randt"), Texts());
    EXPECT_EQ(found(""), Texts());
    EXPECT_EQ(found("=ada"), Texts());
    EXPECT_EQ(found("=ada brandt"), (Texts{"Ada Brandt"}));
    EXPECT_EQ(found("cole@example.org", PR_EMAIL_ADDRESS_A), (Texts{"Adam Cole"}));
    EXPECT_EQ(found("zoe"), (Texts{zoe}));
    AddUser(zeb::platform::NarrowFromWide(ZEBW("\u00feora (x)"), 8).c_str());
    EXPECT_EQ(found("ora"), Texts());
    EXPECT_EQ(found("(x"), Texts());
    AddUser("(x) Boris");
    EXPECT_EQ(found("(x"), (Texts{"(x) Boris"}));
    const auto named = OpenInBook<IMailUser>(AddUser("Chief"));
    Set(named.Get(), NarrowValue(PR_GIVEN_NAME_A, "Augusta"));
    Set(named.Get(), NarrowValue(PR_SURNAME_A, "Dorn"));
    Set(named.Get(), NarrowValue(PR_ACCOUNT_A, "gadorn"));
    ASSERT_EQ(named->SaveChanges(0), S_OK);
    EXPECT_EQ(found("dorn, augusta"), (Texts{"Chief"}));
    EXPECT_EQ(found("gado"), (Texts{"Chief"}));
}

TEST_F(AddressBooks, ShowListsAsLists)
{
    AddList("Team");
    IMAPITable* table = nullptr;
    ASSERT_EQ(Directory()->GetContentsTable(0, &table), S_OK);
    const Rows rows(table, {PR_OBJECT_TYPE, PR_DISPLAY_TYPE});
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_EQ(rows.Cell(0, 0).Value.l, LONG(MAPI_DISTLIST));
    EXPECT_EQ(rows.Cell(0, 1).Value.l, LONG(DT_DISTLIST));
}

TEST_F(AddressBooks, RefuseOtherRelationsInNameSearch)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Directory()->GetContentsTable(0, &table), S_OK);
    const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
    SPropValue value = NarrowValue(PR_ANR_A, "ada");
    SRestriction restriction{};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty = {RELOP_NE, PR_ANR_A, &value};
    EXPECT_EQ(table->Restrict(&restriction, 0), MAPI_E_TOO_COMPLEX);
}

TEST_F(AddressBooks, ChangesAreSavedTogether)
{
    const Bytes id = AddUser("Ada", "ada@example.org");
    const auto first = OpenInBook<IMailUser>(id);
    const auto second = OpenInBook<IMailUser>(id);
    EXPECT_EQ(Set(first.Get(), NarrowValue(PR_DISPLAY_NAME_A, "Ada Brandt")), S_OK);
    EXPECT_EQ(GetText(second.Get(), PR_DISPLAY_NAME_A), "Ada");
    EXPECT_EQ(first->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(Set(second.Get(), NarrowValue(PR_EMAIL_ADDRESS_A, "b@example.org")), S_OK);
    EXPECT_EQ(second->SaveChanges(KEEP_OPEN_READWRITE), MAPI_E_OBJECT_CHANGED);
    EXPECT_EQ(second->SaveChanges(KEEP_OPEN_READWRITE | FORCE_SAVE), S_OK);
    EXPECT_EQ(GetText(second.Get(), SmtpAddress), "b@example.org");
    EXPECT_EQ(GetText(OpenInBook<IMailUser>(id).Get(), PR_DISPLAY_NAME_A), "Ada");
}

TEST_F(AddressBooks, EntriesNeedANameToSave)
{
    const Ref<IMAPIProp> user = New(*Directory(), PR_DEF_CREATE_MAILUSER);
    EXPECT_TRUE(GetBytes(user.Get(), PR_ENTRYID).empty());
    EXPECT_EQ(user->SaveChanges(KEEP_OPEN_READWRITE), MAPI_E_MISSING_REQUIRED_COLUMN);
    EXPECT_NE(ErrorText(*user.Get(), MAPI_E_MISSING_REQUIRED_COLUMN).find("display name"), std::string::npos);
    EXPECT_EQ(NamesIn(*Directory()), Texts());
    Set(user.Get(), NarrowValue(PR_DISPLAY_NAME_A, "Named"));
    EXPECT_EQ(user->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_FALSE(GetBytes(user.Get(), PR_ENTRYID).empty());
}

TEST_F(AddressBooks, IdentifyingPropertiesCanNotBeWritten)
{
    const auto user = OpenInBook<IMailUser>(AddUser("Ada"));
    EXPECT_EQ(Set(user.Get(), LongValue(PR_OBJECT_TYPE, 3)), MAPI_E_COMPUTED);
    EXPECT_EQ(Set(user.Get(), BinaryValue(PR_ENTRYID, {1})), MAPI_E_COMPUTED);
}

TEST_F(AddressBooks, WritingNeedsWriteAccess)
{
    const Bytes id = AddUser("Ada");
    const auto user = OpenInBook<IMailUser>(id, 0);
    EXPECT_EQ(Set(user.Get(), NarrowValue(PR_DISPLAY_NAME_A, "B")), MAPI_E_NO_ACCESS);
    OpenInBook<IMailUser>(OneOff("A", "SMTP", "a@b.org"), MAPI_MODIFY, nullptr, MAPI_E_NO_ACCESS);
    const auto saved = OpenInBook<IMailUser>(id);
    EXPECT_EQ(Set(saved.Get(), NarrowValue(PR_DISPLAY_NAME_A, "B")), S_OK);
    EXPECT_EQ(saved->SaveChanges(0), S_OK);
    EXPECT_EQ(Set(saved.Get(), NarrowValue(PR_DISPLAY_NAME_A, "C")), MAPI_E_NO_ACCESS);
}

TEST_F(AddressBooks, DuplicatesAreRefusedOrReplaced)
{
    const Bytes id = AddUser("Ada", "ada@example.org");
    const auto save = [&](ULONG flags, const char* address)
    {
        const Ref<IMAPIProp> user = New(*Directory(), PR_DEF_CREATE_MAILUSER, flags);
        Set(user.Get(), NarrowValue(PR_DISPLAY_NAME_A, "ada"));
        Set(user.Get(), NarrowValue(PR_EMAIL_ADDRESS_A, address));
        return user->SaveChanges(KEEP_OPEN_READWRITE);
    };
    EXPECT_EQ(save(CREATE_CHECK_DUP_STRICT, "ADA@example.org"), MAPI_E_COLLISION);
    EXPECT_EQ(save(CREATE_CHECK_DUP_LOOSE, "other@example.org"), MAPI_E_COLLISION);
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada"}));
    EXPECT_EQ(save(CREATE_CHECK_DUP_LOOSE | CREATE_REPLACE, "new@example.org"), S_OK);
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"ada"}));
    EXPECT_EQ(GetText(OpenInBook<IMailUser>(id).Get(), PR_EMAIL_ADDRESS_A), "new@example.org");
    EXPECT_EQ(save(CREATE_CHECK_DUP_STRICT, "other@example.org"), S_OK);
    EXPECT_EQ(save(0, "other@example.org"), S_OK);
    EXPECT_EQ(NamesIn(*Directory()).size(), 3u);
}

TEST_F(AddressBooks, CopyAndDeleteEntries)
{
    const Bytes oneOff = OneOff("Eve", "SMTP", "eve@example.org");
    EntryList entries(oneOff);
    EXPECT_EQ(Directory()->CopyEntries(&entries, 0, nullptr, 0), S_OK);
    EXPECT_EQ(Directory()->CopyEntries(&entries, 0, nullptr, AB_NO_DIALOG | CREATE_CHECK_DUP_LOOSE), MAPI_E_COLLISION);
    const Bytes boris = AddUser("Boris");
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Boris", "Eve"}));
    EntryList away(boris);
    EXPECT_EQ(Directory()->DeleteEntries(&away, 0), S_OK);
    EXPECT_EQ(Directory()->DeleteEntries(&away, 0), MAPI_W_PARTIAL_COMPLETION);
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Eve"}));
    OpenInBook<IMailUser>(boris, 0, nullptr, MAPI_E_NOT_FOUND);
    EXPECT_NE(BookErrorText(MAPI_E_NOT_FOUND).find("main.zeb"), std::string::npos);
}

TEST_F(AddressBooks, OnlyEqualKindsAreDuplicates)
{
    AddList("Eve");
    const Bytes oneOff = OneOff("Eve", "SMTP", "eve@example.org");
    EntryList entries(oneOff);
    EXPECT_EQ(Directory()->CopyEntries(&entries, 0, nullptr, CREATE_CHECK_DUP_LOOSE), S_OK);
    EXPECT_EQ(Directory()->CopyEntries(&entries, 0, nullptr, AB_NO_DIALOG), S_OK);
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Eve", "Eve", "Eve"}));
}

TEST_F(AddressBooks, ACopyHasItsOwnIdentifier)
{
    const Bytes oneOff = OneOff("Eve", "SMTP", "eve@example.org");
    IMAPIProp* entry = nullptr;
    ASSERT_EQ(Directory()->CreateEntry(static_cast<ULONG>(oneOff.size()), Id(oneOff), 0, &entry), S_OK);
    const Ref<IMAPIProp> copy = Ref<IMAPIProp>::Adopt(entry);
    EXPECT_EQ(GetText(copy.Get(), PR_EMAIL_ADDRESS_A), "eve@example.org");
    EXPECT_TRUE(GetBytes(copy.Get(), PR_ENTRYID).empty());
    EXPECT_TRUE(GetBytes(copy.Get(), PR_RECORD_KEY).empty());
}

TEST_F(AddressBooks, AReplacingEntryContinuesTheOther)
{
    const Bytes id = AddUser("Ada", "ada@example.org");
    const Ref<IMAPIProp> user = New(*Directory(), PR_DEF_CREATE_MAILUSER, CREATE_CHECK_DUP_LOOSE | CREATE_REPLACE);
    Set(user.Get(), NarrowValue(PR_DISPLAY_NAME_A, "Ada"));
    EXPECT_EQ(user->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetBytes(user.Get(), PR_ENTRYID), id);
    Set(user.Get(), NarrowValue(PR_DISPLAY_NAME_A, "Ada Brandt"));
    EXPECT_EQ(user->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada Brandt"}));
}

TEST_F(AddressBooks, EntriesWithoutAddressComputeNone)
{
    const auto user = OpenInBook<IMailUser>(AddUser("Ada"));
    for (const ULONG tag : {ULONG(PR_SEARCH_KEY), ULONG(PR_ADDRTYPE_A), SmtpAddress})
    {
        HRESULT code = S_OK;
        Get(user.Get(), tag, &code);
        EXPECT_EQ(code, MAPI_E_NOT_FOUND) << std::hex << tag;
    }
}

TEST_F(AddressBooks, TheSessionOpensTheirEntriesToo)
{
    const Bytes user = AddUser("Ada");
    EXPECT_EQ(GetText(Open<IMailUser>(user, IID_IMailUser).Get(), PR_DISPLAY_NAME_A), "Ada");
    EXPECT_EQ(GetText(Open<IMAPIProp>(DirectoryId(), IID_IABContainer).Get(), PR_DISPLAY_NAME_A),
              "Global Address List");
    EXPECT_EQ(GetText(Open<IMAPIProp>(ContactsId(), IID_IMAPIContainer).Get(), PR_DISPLAY_NAME_A), "Contacts");
    ULONG same = 0;
    EXPECT_EQ(Book().CompareEntryIDs(static_cast<ULONG>(user.size()), Id(user), static_cast<ULONG>(user.size()),
                                     Id(user), 0, &same),
              S_OK);
    EXPECT_EQ(same, 1u);
}

TEST_F(AddressBooks, TheGlobalListIsTheDefault)
{
    const auto given = [&](auto get)
    {
        ULONG size = 0;
        ENTRYID* id = nullptr;
        EXPECT_EQ((Book().*get)(&size, &id), S_OK);
        const Buffer<ENTRYID> owner(id);
        const BYTE* bytes = reinterpret_cast<const BYTE*>(id);
        return Bytes(bytes, bytes + size);
    };
    EXPECT_EQ(given(&IAddrBook::GetDefaultDir), DirectoryId());
    EXPECT_EQ(given(&IAddrBook::GetPAB), ContactsId());
    const Bytes contacts = ContactsId();
    EXPECT_EQ(Book().SetDefaultDir(static_cast<ULONG>(contacts.size()), Id(contacts)), S_OK);
    const Bytes directory = DirectoryId();
    EXPECT_EQ(Book().SetPAB(static_cast<ULONG>(directory.size()), Id(directory)), S_OK);
    m_book = {};
    EXPECT_EQ(given(&IAddrBook::GetDefaultDir), contacts);
    EXPECT_EQ(given(&IAddrBook::GetPAB), directory);
    const Bytes user = AddUser("Ada");
    EXPECT_EQ(Book().SetDefaultDir(static_cast<ULONG>(user.size()), Id(user)), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(given(&IAddrBook::GetDefaultDir), contacts);
}

const SPropValue* FoundIn(const SRow& row, ULONG tag)
{
    const SPropValue* const end = row.lpProps + row.cValues;
    const SPropValue* const found = std::find_if(row.lpProps, row.lpProps + row.cValues,
                                                 [&](const SPropValue& each) { return each.ulPropTag == tag; });
    return found == end ? nullptr : found;
}

TEST_F(AddressBooks, TheSearchPathIsKept)
{
    const auto path = [&]
    {
        SRowSet* rows = nullptr;
        EXPECT_EQ(Book().GetSearchPath(0, &rows), S_OK);
        Texts names;
        for (ULONG i = 0; rows && i < rows->cRows; ++i)
        {
            if (const SPropValue* name = FoundIn(rows->aRow[i], PR_DISPLAY_NAME_A))
            {
                names.emplace_back(name->Value.lpszA);
            }
        }
        FreeProws(rows);
        return names;
    };
    EXPECT_EQ(path(), (Texts{"Contacts", "Global Address List"}));
    const Bytes directory = DirectoryId();
    SPropValue id = BinaryValue(PR_ENTRYID, directory);
    SizedSRowSet(1, set) = {1, {{0, 1, &id}}};
    EXPECT_EQ(Book().SetSearchPath(0, reinterpret_cast<LPSRowSet>(&set)), S_OK);
    EXPECT_EQ(path(), (Texts{"Global Address List"}));
    id.Value.bin.cb = 3;
    EXPECT_EQ(Book().SetSearchPath(0, reinterpret_cast<LPSRowSet>(&set)), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(path(), (Texts{"Global Address List"}));
    id = LongValue(PR_DEPTH, 1);
    EXPECT_EQ(Book().SetSearchPath(0, reinterpret_cast<LPSRowSet>(&set)), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(path(), (Texts{"Global Address List"}));
    SRowSet* wide = nullptr;
    ASSERT_EQ(Book().GetSearchPath(MAPI_UNICODE, &wide), S_OK);
    const SPropValue* name = FoundIn(wide->aRow[0], PR_DISPLAY_NAME_W);
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(zeb::platform::WideString(name->Value.lpszW), ZEBW("Global Address List"));
    FreeProws(wide);
}

TEST_F(AddressBooks, ATemplateDoesNotOpen)
{
    for (const ULONG tag : {PR_DEF_CREATE_MAILUSER, PR_DEF_CREATE_DL})
    {
        OpenInBook<IMAPIProp>(GetBytes(Directory().Get(), tag), 0, nullptr, MAPI_E_INVALID_ENTRYID);
    }
}

TEST_F(AddressBooks, AContainerRefusesOtherProperties)
{
    const auto directory = Directory();
    EXPECT_EQ(Set(directory.Get(), NarrowValue(PR_COMMENT_A, "x")), MAPI_E_NO_SUPPORT);
    HRESULT code = S_OK;
    Get(directory.Get(), PR_COMMENT_A, &code);
    EXPECT_EQ(code, MAPI_E_NOT_FOUND);
}

TEST_F(AddressBooks, RootAndContainersOpenAsTables)
{
    const auto root = Root();
    EXPECT_EQ(GetLong(root.Get(), PR_DEPTH), 0);
    EXPECT_EQ(GetLong(Directory().Get(), PR_DEPTH), 1);
    EXPECT_EQ(GetLong(Directory().Get(), PR_ACCESS_LEVEL), 1);
    EXPECT_EQ(GetLong(Contacts().Get(), PR_ACCESS_LEVEL), 0);
    IUnknown* table = nullptr;
    ASSERT_EQ(root->OpenProperty(PR_CONTAINER_HIERARCHY, &IID_IMAPITable, 0, 0, &table), S_OK);
    EXPECT_EQ(NamesOf(static_cast<IMAPITable*>(table)), (Texts{"Global Address List", "Contacts"}));
    AddUser("Ada");
    ASSERT_EQ(Directory()->OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMAPITable, 0, 0, &table), S_OK);
    EXPECT_EQ(NamesOf(static_cast<IMAPITable*>(table)), (Texts{"Ada"}));
}

TEST_F(AddressBooks, SayWhatTheyAre)
{
    EXPECT_EQ(GetLong(&Book(), PR_OBJECT_TYPE), MAPI_ADDRBOOK);
    EXPECT_EQ(GetText(&Book(), PR_DISPLAY_NAME_A), "Address Book");
    EXPECT_EQ(GetBytes(&Book(), PR_MAPPING_SIGNATURE).size(), 16u);
    HRESULT code = S_OK;
    Get(&Book(), PR_SUBJECT_A, &code);
    EXPECT_EQ(code, MAPI_E_NOT_FOUND);
    EXPECT_TRUE(FAILED(Set(&Book(), NarrowValue(PR_COMMENT_A, "x"))));
    EXPECT_EQ(GetText(&Book(), PR_COMMENT_A), "<none>");
}

TEST_F(AddressBooks, ContainersHaveNoSearchCriteria)
{
    EXPECT_EQ(Directory()->SetSearchCriteria(nullptr, nullptr, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Directory()->GetSearchCriteria(0, nullptr, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    IMAPIProp* entry = nullptr;
    EXPECT_EQ(Directory()->CreateEntry(0, nullptr, 0, &entry), MAPI_E_INVALID_ENTRYID);
    IUnknown* object = nullptr;
    EXPECT_EQ(Directory()->OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMessage, 0, 0, &object),
              MAPI_E_INTERFACE_NOT_SUPPORTED);
}

TEST_F(AddressBooks, DialogsAreNotSupported)
{
    EXPECT_EQ(Book().Address(nullptr, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Book().Details(nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Book().RecipOptions(0, 0, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Book().NewEntry(0, 0, 0, nullptr, 0, nullptr, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_NE(BookErrorText(MAPI_E_NO_SUPPORT).find("dialog"), std::string::npos);
    ULONG_PTR connection = 0;
    EXPECT_EQ(Book().Advise(0, nullptr, 0, nullptr, &connection), MAPI_E_NO_SUPPORT);
    ULONG count = 1;
    SPropValue* options = nullptr;
    EXPECT_EQ(Book().QueryDefaultRecipOpt(Text("SMTP"), 0, &count, &options), S_OK);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(GetLong(&Book(), PR_OBJECT_TYPE), MAPI_ADDRBOOK);
}

} // namespace
} // namespace zebstore
