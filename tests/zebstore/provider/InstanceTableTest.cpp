// Tables that show a row for each value of a multi-valued property.
#include "tests/zebstore/provider/ProviderFixture.h"

namespace zebstore
{
namespace
{

constexpr ULONG Category = PROP_TAG(PT_MV_STRING8, 0x6610);
constexpr ULONG EachCategory = Category | MV_INSTANCE;
constexpr ULONG EachNumber = PROP_TAG(PT_MV_LONG, 0x6611) | MV_INSTANCE;

class InstanceTable : public Provider
{
protected:
    void Add(const char* subject, std::vector<const char*> categories)
    {
        const Ref<IMessage> message = NewMessage(*m_inbox, subject);
        SPropValue value{};
        value.ulPropTag = Category;
        value.Value.MVszA.cValues = static_cast<ULONG>(categories.size());
        value.Value.MVszA.lppszA = const_cast<char**>(categories.data());
        if (!categories.empty())
        {
            EXPECT_EQ(Set(message.Get(), value), S_OK);
        }
        EXPECT_EQ(message->SaveChanges(0), S_OK);
    }

    static HRESULT SetColumns(IMAPITable& table, std::vector<ULONG> tags)
    {
        tags.insert(tags.begin(), static_cast<ULONG>(tags.size()));
        return table.SetColumns(reinterpret_cast<LPSPropTagArray>(tags.data()), 0);
    }

    static HRESULT Sort(IMAPITable& table, ULONG tag, ULONG direction = TABLE_SORT_ASCEND)
    {
        SizedSSortOrderSet(1, order) = {1, 0, 0, {{tag, direction}}};
        return table.SortTable(reinterpret_cast<LPSSortOrderSet>(&order), 0);
    }

    /// "subject:value" of each row from the cursor on.
    static Texts Read(IMAPITable& table, LONG count = 100)
    {
        LPSRowSet rows = nullptr;
        EXPECT_EQ(table.QueryRows(count, 0, &rows), S_OK);
        Texts texts;
        for (ULONG i = 0; i < rows->cRows; ++i)
        {
            const SPropValue* cells = rows->aRow[i].lpProps;
            const bool has = cells[1].ulPropTag == EachCategory;
            EXPECT_TRUE(has || cells[1].ulPropTag == CHANGE_PROP_TYPE(Category, PT_ERROR))
                << std::hex << cells[1].ulPropTag;
            texts.push_back(std::string(cells[0].Value.lpszA) + ":" + (has ? cells[1].Value.lpszA : "-"));
        }
        FreeProws(rows);
        return texts;
    }

    Ref<IMAPITable> Table()
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(m_inbox->GetContentsTable(0, &table), S_OK);
        return Ref<IMAPITable>::Adopt(table);
    }

    Ref<IMAPIFolder> m_inbox = Inbox();
};

TEST_F(InstanceTable, HasARowForEachValue)
{
    Add("a", {"red", "blue"});
    Add("b", {});
    Add("c", {"red"});
    const Ref<IMAPITable> table = Table();
    ASSERT_EQ(SetColumns(*table, {PR_SUBJECT_A, EachCategory}), S_OK);
    ULONG count = 0;
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 4u);
    EXPECT_EQ(Read(*table), Texts({"a:red", "a:blue", "b:-", "c:red"}));
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    EXPECT_EQ(Read(*table, 2), Texts({"a:red", "a:blue"}));
    EXPECT_EQ(Read(*table, 1), Texts({"b:-"}));
}

TEST_F(InstanceTable, SortsAndRestrictsBySingleValues)
{
    Add("a", {"red", "blue"});
    Add("b", {"green"});
    Add("c", {"blue"});
    const Ref<IMAPITable> table = Table();
    ASSERT_EQ(SetColumns(*table, {PR_SUBJECT_A, EachCategory}), S_OK);
    ASSERT_EQ(Sort(*table, EachCategory), S_OK);
    EXPECT_EQ(Read(*table), Texts({"a:blue", "c:blue", "b:green", "a:red"}));
    ASSERT_EQ(Sort(*table, EachCategory, TABLE_SORT_DESCEND), S_OK);
    EXPECT_EQ(Read(*table), Texts({"a:red", "b:green", "a:blue", "c:blue"}));
    SRestriction blue{};
    SPropValue value = NarrowValue(PROP_TAG(PT_STRING8, 0x6610), "blue");
    blue.rt = RES_PROPERTY;
    blue.res.resProperty = {RELOP_EQ, EachCategory, &value};
    ASSERT_EQ(table->Restrict(&blue, 0), S_OK);
    EXPECT_EQ(Read(*table), Texts({"a:blue", "c:blue"}));
    ASSERT_EQ(table->Restrict(nullptr, 0), S_OK);
    EXPECT_EQ(table->FindRow(&blue, BOOKMARK_BEGINNING, 0), S_OK);
    EXPECT_EQ(Read(*table), Texts({"a:blue", "c:blue"}));
}

TEST_F(InstanceTable, ASingleValueExists)
{
    Add("a", {"red", "blue"});
    Add("b", {});
    const Ref<IMAPITable> table = Table();
    ASSERT_EQ(SetColumns(*table, {PR_SUBJECT_A, EachCategory}), S_OK);
    SRestriction exists{};
    exists.rt = RES_EXIST;
    exists.res.resExist.ulPropTag = EachCategory;
    ASSERT_EQ(table->Restrict(&exists, 0), S_OK);
    EXPECT_EQ(Read(*table), Texts({"a:red", "a:blue"}));
    exists.res.resExist.ulPropTag = Category;
    ASSERT_EQ(table->Restrict(&exists, 0), S_OK);
    EXPECT_EQ(Read(*table), Texts({"a:red", "a:blue"}));
    exists.res.resExist.ulPropTag = PROP_TAG(PT_MV_LONG, PROP_ID(Category)) | MV_INSTANCE;
    ASSERT_EQ(table->Restrict(&exists, 0), S_OK);
    EXPECT_EQ(Read(*table), Texts());
}

TEST_F(InstanceTable, GivesEachRowAnInstanceKey)
{
    Add("a", {"red", "blue", "green"});
    const Ref<IMAPITable> table = Table();
    ASSERT_EQ(SetColumns(*table, {PR_INSTANCE_KEY, EachCategory, PR_ENTRYID, Category}), S_OK);
    LPSRowSet rows = nullptr;
    ASSERT_EQ(table->QueryRows(10, 0, &rows), S_OK);
    ASSERT_EQ(rows->cRows, 3u);
    const auto bytes = [&](ULONG row, ULONG column)
    {
        const SBinary& binary = rows->aRow[row].lpProps[column].Value.bin;
        return Bytes(binary.lpb, binary.lpb + binary.cb);
    };
    EXPECT_NE(bytes(0, 0), bytes(1, 0));
    EXPECT_NE(bytes(1, 0), bytes(2, 0));
    EXPECT_EQ(bytes(0, 2), bytes(2, 2));
    EXPECT_EQ(rows->aRow[1].lpProps[3].ulPropTag, Category);
    EXPECT_EQ(rows->aRow[1].lpProps[3].Value.MVszA.cValues, 3u);
    FreeProws(rows);
}

TEST_F(InstanceTable, ReturnsToARowPerMessage)
{
    Add("a", {"red", "blue"});
    const Ref<IMAPITable> table = Table();
    ASSERT_EQ(SetColumns(*table, {PR_SUBJECT_A, EachCategory}), S_OK);
    EXPECT_EQ(Read(*table, 1), Texts({"a:red"}));
    ASSERT_EQ(SetColumns(*table, {PR_SUBJECT_A}), S_OK);
    ULONG count = 0;
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 1u);
    ULONG row = 9, numerator = 0, denominator = 0;
    EXPECT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, 0u) << "the cursor is at the beginning of the new rows";
    ASSERT_EQ(Sort(*table, EachCategory), S_OK);
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 2u) << "the sort order alone asks for the values too";
}

TEST_F(InstanceTable, ShowsOnePropertyAtATime)
{
    const Ref<IMAPITable> table = Table();
    EXPECT_EQ(SetColumns(*table, {EachCategory, EachNumber}), MAPI_E_TOO_COMPLEX);
    ASSERT_EQ(SetColumns(*table, {EachCategory}), S_OK);
    EXPECT_EQ(Sort(*table, EachNumber), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort(*table, EachCategory), S_OK);
    EXPECT_EQ(SetColumns(*table, {EachNumber}), MAPI_E_TOO_COMPLEX);
}

TEST_F(InstanceTable, FollowsChangesAndKeepsItsPlace)
{
    Add("a", {"red", "blue"});
    Add("b", {"green"});
    const Ref<IMAPITable> table = Table();
    ASSERT_EQ(SetColumns(*table, {PR_SUBJECT_A, EachCategory}), S_OK);
    EXPECT_EQ(Read(*table, 1), Texts({"a:red"}));
    Add("c", {"x", "y"});
    EXPECT_EQ(Read(*table), Texts({"a:blue", "b:green", "c:x", "c:y"}));
}

TEST_F(InstanceTable, FollowsChangesInSortedOrder)
{
    Add("a", {"red", "blue"});
    Add("b", {"green"});
    const Ref<IMAPITable> table = Table();
    ASSERT_EQ(SetColumns(*table, {PR_SUBJECT_A, EachCategory}), S_OK);
    ASSERT_EQ(Sort(*table, EachCategory), S_OK);
    EXPECT_EQ(Read(*table), Texts({"a:blue", "b:green", "a:red"}));
    Add("c", {"amber", "white"});
    LONG moved = 0;
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, &moved), S_OK);
    EXPECT_EQ(Read(*table), Texts({"c:amber", "a:blue", "b:green", "a:red", "c:white"}));
    ULONG count = 0;
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 5u);
}

} // namespace
} // namespace zebstore
