#include "tests/zebstore/provider/AddressBookFixture.h"

namespace zebstore
{
namespace
{

class DistLists : public AddressBookProvider
{
protected:
    Texts Members(const Bytes& list) { return NamesIn(*OpenInBook<IDistList>(list)); }
};

TEST_F(DistLists, AreContainersOfTheirMembers)
{
    const Bytes ada = AddUser("Ada", "ada@example.org");
    const Bytes list = AddList("Team", {ada, OneOff("Eve", "SMTP", "eve@example.org")});
    ULONG type = 0;
    const auto team = OpenInBook<IDistList>(list, MAPI_BEST_ACCESS, &type);
    EXPECT_EQ(type, MAPI_DISTLIST);
    EXPECT_EQ(GetLong(team.Get(), PR_OBJECT_TYPE), MAPI_DISTLIST);
    EXPECT_EQ(GetLong(team.Get(), PR_DISPLAY_TYPE), DT_DISTLIST);
    IMAPITable* table = nullptr;
    ASSERT_EQ(team->GetContentsTable(0, &table), S_OK);
    const Rows rows(table, {PR_DISPLAY_NAME_A, PR_EMAIL_ADDRESS_A, PR_OBJECT_TYPE, PR_ENTRYID});
    ASSERT_EQ(rows.Count(), 2u);
    EXPECT_EQ(rows.TextCell(0, 0), "Ada");
    EXPECT_EQ(rows.TextCell(0, 1), "ada@example.org");
    EXPECT_EQ(rows.Cell(0, 2).Value.l, LONG(MAPI_MAILUSER));
    EXPECT_EQ(rows.BytesCell(0, 3), ada);
    EXPECT_EQ(rows.TextCell(1, 0), "Eve");
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada", "Team"}));
    EXPECT_EQ(team->GetHierarchyTable(0, &table), MAPI_E_NO_SUPPORT);
    ULONG memberType = 0;
    IUnknown* member = nullptr;
    EXPECT_EQ(team->OpenEntry(static_cast<ULONG>(ada.size()), Id(ada), nullptr, 0, &memberType, &member), S_OK);
    EXPECT_EQ(memberType, MAPI_MAILUSER);
    if (member)
    {
        member->Release();
    }
}

TEST_F(DistLists, AnOpenTableFollowsTheMembers)
{
    const Bytes list = AddList("Team");
    IMAPITable* table = nullptr;
    ASSERT_EQ(OpenInBook<IDistList>(list)->GetContentsTable(0, &table), S_OK);
    const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
    ULONG count = 7;
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 0u);
    const Bytes ada = AddUser("Ada");
    EXPECT_EQ(AddMember(list, ada), S_OK);
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 1u);
    EntryList away(ada);
    EXPECT_EQ(Directory()->DeleteEntries(&away, 0), S_OK);
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 0u);
}

TEST_F(DistLists, OpenTablesFollowContactMembers)
{
    const Bytes message = AddContact("Ada", {"ada@example.org"});
    IMAPITable* table = nullptr;
    ASSERT_EQ(Contacts()->GetContentsTable(0, &table), S_OK);
    const Bytes list = AddList("Team", {Rows(table, {PR_ENTRYID}).BytesCell(0, 0)});
    IUnknown* opened = nullptr;
    ASSERT_EQ(OpenInBook<IDistList>(list)->OpenProperty(PR_CONTAINER_CONTENTS, &IID_IMAPITable, 0, 0, &opened), S_OK);
    const Ref<IMAPITable> members = Ref<IMAPITable>::Adopt(static_cast<IMAPITable*>(opened));
    const auto names = [&]
    {
        members->AddRef();
        EXPECT_EQ(members->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
        return NamesOf(members.Get());
    };
    EXPECT_EQ(names(), (Texts{"Ada"}));
    const Ref<IMessage> contact = OpenMessage(message);
    Set(contact.Get(), NarrowValue(PR_DISPLAY_NAME_A, "Ada Brandt"));
    EXPECT_EQ(contact->SaveChanges(0), S_OK);
    EXPECT_EQ(names(), (Texts{"Ada Brandt"}));
}

TEST_F(DistLists, AnUnsavedListHasNoMembers)
{
    const Ref<IMAPIProp> fresh = New(*Directory(), PR_DEF_CREATE_DL);
    EXPECT_EQ(NamesIn(*static_cast<IDistList*>(fresh.Get())), Texts());
}

TEST_F(DistLists, RemovedMembersStayEntries)
{
    const Bytes ada = AddUser("Ada");
    const Bytes eve = OneOff("Eve", "SMTP", "eve@example.org");
    const Bytes list = AddList("Team", {ada, eve, ada});
    EXPECT_EQ(Members(list), (Texts{"Ada", "Eve"}));
    EntryList away(ada);
    EXPECT_EQ(OpenInBook<IDistList>(list)->DeleteEntries(&away, 0), S_OK);
    EXPECT_EQ(Members(list), (Texts{"Eve"}));
    EXPECT_EQ(OpenInBook<IDistList>(list)->DeleteEntries(&away, 0), MAPI_W_PARTIAL_COMPLETION);
    EntryList oneOff(eve);
    EXPECT_EQ(OpenInBook<IDistList>(list)->DeleteEntries(&oneOff, 0), S_OK);
    EXPECT_EQ(Members(list), Texts());
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada", "Team"}));
}

TEST_F(DistLists, ACopyHasTheMembersToo)
{
    const Bytes ada = AddUser("Ada");
    const Bytes list = AddList("Team", {ada, OneOff("Eve", "SMTP", "eve@example.org")});
    const Bytes copy = AddList("Copy");
    const auto target = OpenInBook<IDistList>(copy, MAPI_BEST_ACCESS);
    SizedSPropTagArray(1, names) = {1, {PR_DISPLAY_NAME}};
    ASSERT_EQ(OpenInBook<IDistList>(list)->CopyTo(0, nullptr, reinterpret_cast<LPSPropTagArray>(&names), 0, nullptr,
                                                  &IID_IDistList, target.Get(), 0, nullptr),
              S_OK);
    EXPECT_EQ(target->SaveChanges(0), S_OK);
    EXPECT_EQ(Members(copy), (Texts{"Ada", "Eve"}));
    EXPECT_EQ(Members(list), (Texts{"Ada", "Eve"})) << "a copy takes nothing away";
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada", "Copy", "Team"}));
}

TEST_F(DistLists, ACopyMayExcludeItsMembers)
{
    const Bytes list = AddList("Team", {AddUser("Ada")});
    const Bytes copy = AddList("Copy");
    const auto target = OpenInBook<IDistList>(copy, MAPI_BEST_ACCESS);
    SizedSPropTagArray(2, without) = {2, {PR_DISPLAY_NAME, PR_CONTAINER_CONTENTS}};
    ASSERT_EQ(OpenInBook<IDistList>(list)->CopyTo(0, nullptr, reinterpret_cast<LPSPropTagArray>(&without), 0, nullptr,
                                                  &IID_IDistList, target.Get(), 0, nullptr),
              S_OK);
    EXPECT_EQ(target->SaveChanges(0), S_OK);
    EXPECT_EQ(Members(copy), Texts());
}

TEST_F(DistLists, CreatedEntriesJoinTheirList)
{
    const Bytes ada = AddUser("Ada");
    const Bytes list = AddList("Team");
    const auto team = OpenInBook<IDistList>(list);
    IMAPIProp* raw = nullptr;
    ASSERT_EQ(team->CreateEntry(static_cast<ULONG>(ada.size()), Id(ada), 0, &raw), S_OK);
    const Ref<IMAPIProp> member = Ref<IMAPIProp>::Adopt(raw);
    EXPECT_EQ(Members(list), Texts());
    EXPECT_EQ(member->SaveChanges(0), S_OK);
    EXPECT_EQ(Members(list), (Texts{"Ada"}));
    const Bytes model = GetBytes(Directory().Get(), PR_DEF_CREATE_MAILUSER);
    ASSERT_EQ(team->CreateEntry(static_cast<ULONG>(model.size()), Id(model), 0, &raw), S_OK);
    const Ref<IMAPIProp> fresh = Ref<IMAPIProp>::Adopt(raw);
    Set(fresh.Get(), NarrowValue(PR_DISPLAY_NAME_A, "Boris"));
    EXPECT_EQ(fresh->SaveChanges(0), S_OK);
    EXPECT_EQ(Members(list), (Texts{"Ada", "Boris"}));
    EXPECT_EQ(NamesIn(*Directory()), (Texts{"Ada", "Boris", "Team"}));
}

TEST_F(DistLists, AListMayContainItself)
{
    const Bytes list = AddList("Loop");
    EXPECT_EQ(AddMember(list, list), S_OK);
    const Bytes other = AddList("Other", {list});
    EXPECT_EQ(AddMember(list, other), S_OK);
    EXPECT_EQ(Members(list), (Texts{"Loop", "Other"}));
    EXPECT_EQ(Members(other), (Texts{"Loop"}));
    IMAPITable* table = nullptr;
    ASSERT_EQ(OpenInBook<IDistList>(list)->GetContentsTable(0, &table), S_OK);
    EXPECT_EQ(Rows(table, {PR_ENTRYID}).BytesCell(0, 0), list);
    EntryList away(list);
    EXPECT_EQ(Directory()->DeleteEntries(&away, 0), S_OK);
    EXPECT_EQ(Members(other), Texts());
    EXPECT_EQ(GetText(OpenStore().Get(), PROP_TAG(PT_STRING8, 0x67F3)), "ok");
}

TEST_F(DistLists, RefuseContainersAndNonEntries)
{
    const Bytes list = AddList("Team");
    EXPECT_EQ(AddMember(list, DirectoryId()), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(AddMember(list, InboxId()), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(AddMember(list, Bytes()), MAPI_E_INVALID_ENTRYID);
    const Bytes gone = AddUser("Gone");
    EntryList away(gone);
    EXPECT_EQ(Directory()->DeleteEntries(&away, 0), S_OK);
    EXPECT_EQ(AddMember(list, gone), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Members(list), Texts());
    const auto reading = OpenInBook<IDistList>(list, 0);
    EntryList entries(gone);
    EXPECT_EQ(reading->CopyEntries(&entries, 0, nullptr, 0), MAPI_E_NO_ACCESS);
    const Ref<IMAPIProp> fresh = New(*Directory(), PR_DEF_CREATE_DL);
    EXPECT_EQ(static_cast<IDistList*>(fresh.Get())->CopyEntries(&entries, 0, nullptr, 0), MAPI_E_CALL_FAILED);
}

TEST_F(DistLists, ResolveTheNamesOfTheirMembers)
{
    const Bytes list = AddList("Team", {AddUser("Ada", "ada@example.org")});
    AddUser("Adam", "adam@example.org");
    Recipients recipients({"Ad"});
    EXPECT_EQ(OpenInBook<IDistList>(list)->ResolveNames(nullptr, 0, recipients.List(), recipients.Found()), S_OK);
    EXPECT_EQ(recipients.Flag(0), ULONG(MAPI_RESOLVED)) << "only one of the two is a member";
    EXPECT_EQ(recipients.TextOf(0, PR_DISPLAY_NAME_A), "Ada");
}

TEST_F(DistLists, HaveNoSearchCriteria)
{
    const auto list = OpenInBook<IDistList>(AddList("Team"));
    EXPECT_EQ(list->SetSearchCriteria(nullptr, nullptr, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(list->GetSearchCriteria(0, nullptr, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    IMAPIProp* entry = nullptr;
    EXPECT_EQ(list->CreateEntry(0, nullptr, 0, &entry), MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(list->CopyEntries(nullptr, 0, nullptr, 0), MAPI_E_INVALID_PARAMETER);
    SBinaryArray hollow = {1, nullptr};
    EXPECT_EQ(list->CopyEntries(&hollow, 0, nullptr, 0), MAPI_E_INVALID_PARAMETER);
    SBinaryArray empty = {0, nullptr};
    EXPECT_EQ(list->CopyEntries(&empty, 0, nullptr, 0), S_OK);
}

class NameResolving : public AddressBookProvider
{
};

TEST_F(NameResolving, GivesTheOneMatchingEntry)
{
    AddUser("Ada Brandt", "ada@example.org");
    AddUser("Boris Cole", "boris@example.org");
    AddUser("Boris Dale", "dale@example.org");
    Recipients recipients({"bran", "boris", "nobody"});
    EXPECT_EQ(Directory()->ResolveNames(nullptr, 0, recipients.List(), recipients.Found()), S_OK);
    EXPECT_EQ(recipients.Flag(0), MAPI_RESOLVED);
    EXPECT_EQ(recipients.Flag(1), MAPI_AMBIGUOUS);
    EXPECT_EQ(recipients.Flag(2), MAPI_UNRESOLVED);
    EXPECT_EQ(recipients.TextOf(0, PR_DISPLAY_NAME_A), "Ada Brandt");
    EXPECT_EQ(recipients.TextOf(0, PR_EMAIL_ADDRESS_A), "ada@example.org");
    EXPECT_NE(recipients.Value(0, PR_ENTRYID), nullptr);
    ASSERT_NE(recipients.Value(0, PR_RECIPIENT_TYPE), nullptr);
    EXPECT_EQ(recipients.Value(0, PR_RECIPIENT_TYPE)->Value.l, LONG(MAPI_CC));
    EXPECT_EQ(recipients.TextOf(1, PR_DISPLAY_NAME_A), "boris");
    EXPECT_EQ(recipients.Value(1, PR_ENTRYID), nullptr);
}

TEST_F(NameResolving, GivesTheColumnsAskedFor)
{
    const Bytes ada = AddUser("Ada Brandt", "ada@example.org");
    Recipients recipients({"bran"});
    SizedSPropTagArray(1, tags) = {1, {PR_EMAIL_ADDRESS_W}};
    EXPECT_EQ(Directory()->ResolveNames(reinterpret_cast<LPSPropTagArray>(&tags), MAPI_UNICODE, recipients.List(),
                                        recipients.Found()),
              S_OK);
    EXPECT_EQ(recipients.Flag(0), MAPI_RESOLVED);
    const SPropValue* id = recipients.Value(0, PR_ENTRYID);
    ASSERT_NE(id, nullptr);
    EXPECT_EQ(Bytes(id->Value.bin.lpb, id->Value.bin.lpb + id->Value.bin.cb), ada);
    EXPECT_NE(recipients.Value(0, PR_EMAIL_ADDRESS_W), nullptr);
    EXPECT_EQ(recipients.Value(0, PR_SEARCH_KEY), nullptr);
}

TEST_F(NameResolving, SkipsOnlyWhatIsMarkedResolved)
{
    AddUser("Ada Brandt", "ada@example.org");
    Recipients recipients({"ada", "ada", "ada"});
    recipients.Found()->ulFlag[0] = MAPI_RESOLVED;
    recipients.List()->aEntries[1].rgPropVals[0] = BinaryValue(PR_ENTRYID, {});
    recipients.List()->aEntries[2].rgPropVals[0] = LongValue(CHANGE_PROP_TYPE(PR_COMMENT, PT_ERROR), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Directory()->ResolveNames(nullptr, 0, recipients.List(), recipients.Found()), S_OK);
    EXPECT_EQ(recipients.Value(0, PR_ENTRYID), nullptr);
    for (const ULONG taken : {1, 2})
    {
        EXPECT_EQ(recipients.Flag(taken), MAPI_RESOLVED);
        EXPECT_EQ(recipients.TextOf(taken, PR_EMAIL_ADDRESS_A), "ada@example.org");
    }
    recipients.Found()->cFlags = 2;
    EXPECT_EQ(Directory()->ResolveNames(nullptr, 0, recipients.List(), recipients.Found()), MAPI_E_INVALID_PARAMETER);
}

TEST_F(NameResolving, AWholeNamePrecedesLongerOnes)
{
    AddUser("Ada", "ada@example.org");
    AddUser("Ada Brandt", "brandt@example.org");
    Recipients recipients({"ada"});
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, recipients.List()), S_OK);
    EXPECT_EQ(recipients.TextOf(0, PR_EMAIL_ADDRESS_A), "ada@example.org");
}

TEST_F(NameResolving, SearchesThePathAndTakesAddresses)
{
    AddUser("Boris Cole", "boris@example.org");
    AddContact("Ada Brandt", {"ada@example.org"});
    Recipients recipients({"brandt", "cole", "eve@example.org", "FAX:+49 30 1"});
    EXPECT_EQ(Book().ResolveName(0, MAPI_DIALOG, nullptr, recipients.List()), S_OK);
    EXPECT_EQ(recipients.TextOf(0, PR_EMAIL_ADDRESS_A), "ada@example.org");
    EXPECT_EQ(recipients.TextOf(1, PR_EMAIL_ADDRESS_A), "boris@example.org");
    EXPECT_EQ(recipients.TextOf(2, PR_EMAIL_ADDRESS_A), "eve@example.org");
    EXPECT_EQ(recipients.TextOf(3, PR_ADDRTYPE_A), "FAX");
    EXPECT_EQ(recipients.TextOf(3, PR_EMAIL_ADDRESS_A), "+49 30 1");
    for (ULONG i = 0; i < 4; ++i)
    {
        EXPECT_NE(recipients.Value(i, PR_ENTRYID), nullptr) << i;
    }
}

TEST_F(NameResolving, TheFirstMatchingContainerDecides)
{
    AddContact("Boris Cole", {"cole@example.org"});
    AddContact("Boris Dale", {"dale@example.org"});
    Recipients several({"boris"});
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, several.List()), MAPI_E_AMBIGUOUS_RECIP);
    AddUser("Boris Egan", "egan@example.org");
    Recipients one({"boris"});
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, one.List()), S_OK);
    EXPECT_EQ(one.TextOf(0, PR_EMAIL_ADDRESS_A), "egan@example.org");
}

TEST_F(NameResolving, AnInvalidAddressIsAName)
{
    for (const char* name : {":+49 30 1", "FAX:", "see this:+49 30 1", "eve@example.org:x y", "Eve eve@example.org",
                             "eve@example.org,ada@example.org"})
    {
        Recipients recipients({name});
        EXPECT_EQ(Book().ResolveName(0, 0, nullptr, recipients.List()), MAPI_E_NOT_FOUND) << name;
        EXPECT_EQ(recipients.Value(0, PR_ENTRYID), nullptr) << name;
    }
}

TEST_F(NameResolving, AnIdentifierPreventsANewSearch)
{
    const Bytes ada = AddUser("Ada Brandt", "ada@example.org");
    Recipients recipients({"ada"});
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, recipients.List()), S_OK);
    EntryList away(ada);
    EXPECT_EQ(Directory()->DeleteEntries(&away, 0), S_OK);
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, recipients.List()), S_OK);
    EXPECT_EQ(recipients.TextOf(0, PR_EMAIL_ADDRESS_A), "ada@example.org");
}

TEST_F(NameResolving, NamesUnknownAndAmbiguousOnes)
{
    AddUser("Ada Brandt");
    AddUser("Boris Cole");
    AddUser("Boris Dale");
    Recipients recipients({"nobody", "ada"});
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, recipients.List()), MAPI_E_NOT_FOUND);
    EXPECT_NE(BookErrorText(MAPI_E_NOT_FOUND).find("'nobody'"), std::string::npos);
    EXPECT_NE(recipients.Value(1, PR_ENTRYID), nullptr);
    Recipients ambiguous({"boris"});
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, ambiguous.List()), MAPI_E_AMBIGUOUS_RECIP);
    EXPECT_NE(BookErrorText(MAPI_E_AMBIGUOUS_RECIP).find("'boris'"), std::string::npos);
}

TEST_F(NameResolving, PreparedRecipientsBeginWithRequestedProperties)
{
    AddUser("Ada Brandt", "ada@example.org");
    Recipients recipients({"ada"});
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, recipients.List()), S_OK);
    SizedSPropTagArray(3, tags) = {3, {PR_RECIPIENT_TYPE, SmtpAddress, PR_COMPANY_NAME_A}};
    EXPECT_EQ(Book().PrepareRecips(0, reinterpret_cast<LPSPropTagArray>(&tags), recipients.List()), S_OK);
    const ADRENTRY& entry = recipients.List()->aEntries[0];
    ASSERT_GT(entry.cValues, 3u);
    EXPECT_EQ(entry.rgPropVals[0].ulPropTag, PR_RECIPIENT_TYPE);
    EXPECT_EQ(entry.rgPropVals[1].ulPropTag, SmtpAddress);
    EXPECT_STREQ(entry.rgPropVals[1].Value.lpszA, "ada@example.org");
    EXPECT_EQ(PROP_TYPE(entry.rgPropVals[2].ulPropTag), PT_ERROR);
    EXPECT_NE(recipients.Value(0, PR_ENTRYID), nullptr);
}

TEST_F(NameResolving, PreparedRecipientsKeepTheirValuesOnce)
{
    const Bytes ada = AddUser("Ada Brandt", "ada@example.org");
    Recipients recipients({"ada"});
    EXPECT_EQ(Book().ResolveName(0, 0, nullptr, recipients.List()), S_OK);
    const ULONG before = recipients.List()->aEntries[0].cValues;
    const auto user = OpenInBook<IMailUser>(ada);
    EXPECT_EQ(Set(user.Get(), NarrowValue(PR_EMAIL_ADDRESS_A, "new@example.org")), S_OK);
    EXPECT_EQ(user->SaveChanges(0), S_OK);
    SizedSPropTagArray(2, tags) = {2, {PR_EMAIL_ADDRESS_A, PR_RECIPIENT_TYPE}};
    EXPECT_EQ(Book().PrepareRecips(0, reinterpret_cast<LPSPropTagArray>(&tags), recipients.List()), S_OK);
    EXPECT_EQ(recipients.TextOf(0, PR_EMAIL_ADDRESS_A), "ada@example.org");
    EXPECT_EQ(recipients.List()->aEntries[0].cValues, before);
}

class ContactBooks : public AddressBookProvider
{
protected:
    std::vector<Bytes> EntryIds()
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(Contacts()->GetContentsTable(0, &table), S_OK);
        const Rows rows(table, {PR_ENTRYID});
        std::vector<Bytes> ids;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            ids.push_back(rows.BytesCell(i, 0));
        }
        return ids;
    }
};

TEST_F(ContactBooks, ListTheContactsFoldersMessages)
{
    AddContact("Ada Brandt", {"ada@example.org"});
    AddContact("No address", {});
    NewMessage(*ContactsFolder(), "a note")->SaveChanges(0);
    IMAPITable* table = nullptr;
    ASSERT_EQ(Contacts()->GetContentsTable(0, &table), S_OK);
    const Rows rows(table, {PR_DISPLAY_NAME_A, PR_EMAIL_ADDRESS_A, PR_ADDRTYPE_A, SmtpAddress, PR_OBJECT_TYPE});
    ASSERT_EQ(rows.Count(), 2u);
    EXPECT_EQ(rows.TextCell(0, 0), "Ada Brandt");
    EXPECT_EQ(rows.TextCell(0, 1), "ada@example.org");
    EXPECT_EQ(rows.TextCell(0, 2), "SMTP");
    EXPECT_EQ(rows.TextCell(0, 3), "ada@example.org");
    EXPECT_EQ(rows.Cell(0, 4).Value.l, LONG(MAPI_MAILUSER));
    EXPECT_EQ(rows.TextCell(1, 0), "No address");
    EXPECT_EQ(rows.TextCell(1, 1), "<none>");
}

TEST_F(ContactBooks, OpenTablesShowTheFirstContact)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Contacts()->GetContentsTable(0, &table), S_OK);
    ULONG count = 7;
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 0u);
    AddContact("Ada Brandt", {"ada@example.org"});
    AddContact("Not one", {"none@example.org"}, "IPM.Contacts");
    const Rows rows(table, {PR_EMAIL_ADDRESS_A});
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_EQ(rows.TextCell(0, 0), "ada@example.org");
}

TEST_F(ContactBooks, EachAddressIsAnEntry)
{
    AddContact("Ada", {"one@x.org", "", "three@x.org"});
    AddContact("Boris", {"b@x.org"});
    EXPECT_EQ(NamesIn(*Contacts()), (Texts{"Ada", "Ada", "Boris"}));
    const std::vector<Bytes> ids = EntryIds();
    ASSERT_EQ(ids.size(), 3u);
    EXPECT_NE(ids[0], ids[1]);
    EXPECT_EQ(GetText(OpenInBook<IMailUser>(ids[0]).Get(), PR_EMAIL_ADDRESS_A), "one@x.org");
    const auto third = OpenInBook<IMailUser>(ids[1]);
    EXPECT_EQ(GetText(third.Get(), PR_EMAIL_ADDRESS_A), "three@x.org");
    EXPECT_EQ(GetText(third.Get(), PR_DISPLAY_NAME_A), "Ada");
    EXPECT_EQ(GetBytes(third.Get(), PR_ENTRYID), ids[1]);
    EXPECT_EQ(Set(third.Get(), NarrowValue(PR_GIVEN_NAME_A, "x")), MAPI_E_NO_ACCESS);
}

TEST_F(ContactBooks, AnAddressHasItsOwnName)
{
    const Ref<IMAPIFolder> folder = ContactsFolder();
    const Ref<IMessage> message = NewMessage(*folder, "Ada");
    Set(message.Get(), NarrowValue(PR_MESSAGE_CLASS_A, "ipm.contact.special"));
    Set(message.Get(), NarrowValue(ContactTag(*message.Get(), 0x8080), "Ada at work"));
    Set(message.Get(), NarrowValue(ContactTag(*message.Get(), 0x8082), "X400"));
    Set(message.Get(), NarrowValue(ContactTag(*message.Get(), 0x8083), "c=de"));
    Set(message.Get(), NarrowValue(PR_COMPANY_NAME_A, "Brandt & Co"));
    ASSERT_EQ(message->SaveChanges(0), S_OK);
    ASSERT_EQ(EntryIds().size(), 1u);
    const auto entry = OpenInBook<IMailUser>(EntryIds()[0]);
    EXPECT_EQ(GetText(entry.Get(), PR_DISPLAY_NAME_A), "Ada at work");
    EXPECT_EQ(GetText(entry.Get(), PR_ADDRTYPE_A), "X400");
    EXPECT_EQ(GetText(entry.Get(), PR_COMPANY_NAME_A), "Brandt & Co");
    HRESULT code = S_OK;
    Get(entry.Get(), SmtpAddress, &code);
    EXPECT_EQ(code, MAPI_E_NOT_FOUND);
}

TEST_F(ContactBooks, TheTableFollowsTheFolder)
{
    for (int i = 0; i < 10; ++i)
    {
        AddContact(("C" + std::to_string(i)).c_str(), {"a@x.org", "b@x.org"});
    }
    IMAPITable* raw = nullptr;
    ASSERT_EQ(Contacts()->GetContentsTable(0, &raw), S_OK);
    const Ref<IMAPITable> table = Ref<IMAPITable>::Adopt(raw);
    SizedSPropTagArray(1, tags) = {1, {PR_EMAIL_ADDRESS_A}};
    EXPECT_EQ(table->SetColumns(reinterpret_cast<LPSPropTagArray>(&tags), 0), S_OK);
    Texts all;
    for (SRowSet* rows = nullptr; table->QueryRows(3, 0, &rows) == S_OK; FreeProws(rows))
    {
        for (ULONG i = 0; i < rows->cRows; ++i)
        {
            all.emplace_back(rows->aRow[i].lpProps[0].Value.lpszA);
        }
        if (rows->cRows == 0)
        {
            FreeProws(rows);
            break;
        }
    }
    ASSERT_EQ(all.size(), 20u);
    EXPECT_EQ(all[0], "a@x.org");
    EXPECT_EQ(all[19], "b@x.org");
    ULONG count = 0;
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 20u);
    AddContact("One more", {});
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 21u);
}

TEST_F(ContactBooks, DeletedContactsAndAddressesAreMissing)
{
    const Bytes message = AddContact("Ada", {"one@x.org", "two@x.org"});
    const std::vector<Bytes> ids = EntryIds();
    const Ref<IMessage> contact = OpenMessage(message);
    SizedSPropTagArray(1, tags) = {1, {ContactTag(*contact.Get(), 0x8093)}};
    EXPECT_EQ(contact->DeleteProps(reinterpret_cast<LPSPropTagArray>(&tags), nullptr), S_OK);
    EXPECT_EQ(contact->SaveChanges(0), S_OK);
    OpenInBook<IMailUser>(ids[1], 0, nullptr, MAPI_E_NOT_FOUND);
    EntryList list(message);
    EXPECT_EQ(ContactsFolder()->DeleteMessages(&list, 0, nullptr, 0), S_OK);
    OpenInBook<IMailUser>(ids[0], 0, nullptr, MAPI_E_NOT_FOUND);
    EXPECT_TRUE(EntryIds().empty());
}

TEST_F(ContactBooks, AreChangedAsMessagesOnly)
{
    const Bytes user = AddUser("Ada");
    IMAPIProp* entry = nullptr;
    EXPECT_EQ(Contacts()->CreateEntry(static_cast<ULONG>(user.size()), Id(user), 0, &entry), MAPI_E_NO_SUPPORT);
    EntryList entries(user);
    EXPECT_EQ(Contacts()->DeleteEntries(&entries, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Contacts()->CopyEntries(&entries, 0, nullptr, 0), MAPI_E_NO_SUPPORT);
}

TEST_F(ContactBooks, AListOfContactsHasMembers)
{
    const Bytes ada = AddUser("Ada", "ada@example.org");
    const Ref<IMAPIFolder> folder = ContactsFolder();
    const Ref<IMessage> message = NewMessage(*folder, "Friends");
    Set(message.Get(), NarrowValue(PR_MESSAGE_CLASS_A, "IPM.DistList"));
    Bytes eve = OneOff("Eve", "SMTP", "eve@example.org");
    Bytes foreign(30, 0x77);
    SBinary ids[] = {{static_cast<ULONG>(ada.size()), const_cast<BYTE*>(ada.data())},
                     {static_cast<ULONG>(eve.size()), eve.data()},
                     {static_cast<ULONG>(foreign.size()), foreign.data()}};
    SPropValue members{};
    members.ulPropTag = ContactTag(*message.Get(), 0x8055, PT_MV_BINARY);
    members.Value.MVbin = {3, ids};
    ASSERT_EQ(Set(message.Get(), members), S_OK);
    ASSERT_EQ(message->SaveChanges(0), S_OK);
    ASSERT_EQ(EntryIds().size(), 1u);
    ULONG type = 0;
    const auto list = OpenInBook<IDistList>(EntryIds()[0], 0, &type);
    EXPECT_EQ(type, MAPI_DISTLIST);
    EXPECT_EQ(GetLong(list.Get(), PR_DISPLAY_TYPE), DT_PRIVATE_DISTLIST);
    EXPECT_EQ(GetText(list.Get(), PR_DISPLAY_NAME_A), "Friends");
    EXPECT_EQ(NamesIn(*list), (Texts{"Ada", "Eve", "<none>"}));
    IMAPITable* table = nullptr;
    ASSERT_EQ(list->GetContentsTable(0, &table), S_OK);
    const Rows rows(table, {PR_INSTANCE_KEY});
    EXPECT_EQ(rows.BytesCell(1, 0), eve);
    EXPECT_EQ(rows.BytesCell(2, 0), foreign);
}

} // namespace
} // namespace zebstore
