// All columns that a table offers: those that some row has.
#include "tests/zebstore/provider/AddressBookFixture.h"

#include <ios>
#include <set>

namespace zebstore
{
namespace
{

class Columns : public AddressBookProvider
{
};

/// The columns that a table offers.
std::set<ULONG> AllColumns(IMAPITable* table)
{
    const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
    SPropTagArray* tags = nullptr;
    EXPECT_EQ(table->QueryColumns(TBL_ALL_COLUMNS, &tags), S_OK);
    const Buffer<SPropTagArray> freed(tags);
    return tags ? std::set<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues) : std::set<ULONG>();
}

TEST_F(Columns, OfAddressBooksAreThoseOfTheirEntries)
{
    const ULONG own = PROP_TAG(PT_UNICODE, 0x66AA);
    const Bytes ada = AddUser("Ada", "ada@example.org");
    const auto user = OpenInBook<IMailUser>(ada);
    EXPECT_EQ(Set(user.Get(), NarrowValue(CHANGE_PROP_TYPE(own, PT_STRING8), "x")), S_OK);
    EXPECT_EQ(user->SaveChanges(0), S_OK);
    IMAPITable* table = nullptr;
    ASSERT_EQ(Directory()->GetContentsTable(MAPI_UNICODE, &table), S_OK);
    const std::set<ULONG> columns = AllColumns(table);
    for (const ULONG tag : {PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W, PR_ENTRYID, own})
    {
        EXPECT_EQ(columns.count(tag), 1u) << std::hex << tag;
    }
    EXPECT_EQ(columns.count(PROP_TAG(PT_UNICODE, 0x66AB)), 0u);
}

TEST_F(Columns, OfContactsAreTheirProperties)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Contacts()->GetContentsTable(MAPI_UNICODE, &table), S_OK);
    const std::set<ULONG> columns = AllColumns(table);
    for (const ULONG tag : {PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W, PR_GIVEN_NAME_W, PR_COMPANY_NAME_W})
    {
        EXPECT_EQ(columns.count(tag), 1u) << std::hex << tag;
    }
}

TEST_F(Columns, OfHierarchiesAreThoseOfTheirFolders)
{
    const ULONG own = PROP_TAG(PT_LONG, 0x66AC);
    const Ref<IMAPIFolder> inbox = Inbox();
    EXPECT_EQ(Set(NewFolder(*inbox, "Projects").Get(), LongValue(own, 5)), S_OK);
    IMAPITable* table = nullptr;
    ASSERT_EQ(inbox->GetHierarchyTable(MAPI_UNICODE, &table), S_OK);
    const std::set<ULONG> columns = AllColumns(table);
    EXPECT_EQ(columns.count(PR_DISPLAY_NAME_W), 1u);
    EXPECT_EQ(columns.count(own), 1u);
}

} // namespace
} // namespace zebstore
