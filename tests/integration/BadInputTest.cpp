// Extreme restrictions and names: a clear error or the correct result.
#include "tests/integration/Host.h"

#include <vector>

namespace zeb::test
{
namespace
{

using Wide = std::basic_string<WCHAR>;

class BadRestriction : public StoreHost
{
protected:
    static constexpr int Deep = 10'000;

    BadRestriction()
    {
        AddMessage("one", 0);
        AddMessage("two", 1);
    }
    /// `levels` of NOT around "the importance is 1".
    static void BuildNots(CZebRestrictionAllocator& root, int levels)
    {
        root.Allocate();
        CZebRestriction node(root);
        for (int i = 0; i < levels; ++i)
        {
            node = node.CreateNot();
        }
        node.CreateProp(PR_IMPORTANCE, RELOP_EQ) = static_cast<LONG>(1);
    }
    /// Alternating ANDs and ORs, each with one child.
    static void BuildPairs(CZebRestrictionAllocator& root, int levels)
    {
        root.Allocate();
        CZebRestriction node(root);
        for (int i = 0; i < levels; ++i)
        {
            if (i % 2 == 0)
            {
                node.CreateAnd(1);
            }
            else
            {
                node.CreateOr(1);
            }
            node = node[0];
        }
        node.CreateExist(PR_SUBJECT_A);
    }
    static void ExpectTooComplex(const Failure& thrown)
    {
        EXPECT_EQ(thrown.result, MAPI_E_TOO_COMPLEX);
        EXPECT_NE(thrown.text.find("nested too deep"), std::string::npos) << thrown.text;
    }
};

TEST_F(BadRestriction, NestedTooDeepIsRefusedEverywhere)
{
    CZebRestrictionAllocator nots, pairs;
    BuildNots(nots, Deep);
    BuildPairs(pairs, Deep);
    CZebTable table = Contents();
    CZebRestrictionAllocator before;
    before.Allocate();
    before.CreateProp(PR_IMPORTANCE, RELOP_EQ) = static_cast<LONG>(1);
    table.Restrict(before, 0);
    for (SRestriction* deep : {static_cast<SRestriction*>(nots), static_cast<SRestriction*>(pairs)})
    {
        CZebRowSet rows;
        ExpectTooComplex(FailureOf([&] { table.Restrict(deep, 0); }));
        ExpectTooComplex(FailureOf([&] { table.FindRow(deep, BOOKMARK_BEGINNING, 0); }));
        ExpectTooComplex(FailureOf([&] { table.QueryRows(&rows, 0, deep, nullptr); }));
        ExpectTooComplex(FailureOf([&] { table.QueryAllRows(&rows, deep, nullptr); }));
        EXPECT_FALSE(rows.IsValid());
    }
    EXPECT_EQ(table.GetRowCount(), 1u) << "the restriction before them holds";
    CZebTable folders = Inbox().GetHierarchyTable(0);
    ExpectTooComplex(FailureOf([&] { folders.Restrict(nots, 0); }));
    CZebTable stores = m_session->GetMsgStoresTable();
    ExpectTooComplex(FailureOf([&] { stores.Restrict(pairs, 0); }));
}

TEST_F(BadRestriction, EachKindTooDeepIsRefused)
{
    for (const ULONG kind : {RES_COMMENT, RES_SUBRESTRICTION, RES_NOT})
    {
        std::vector<SRestriction> nodes(Deep + 1);
        for (int i = 0; i < Deep; ++i)
        {
            nodes[i].rt = kind;
            if (kind == RES_NOT)
            {
                nodes[i].res.resNot.lpRes = &nodes[i + 1];
            }
            else if (kind == RES_COMMENT)
            {
                nodes[i].res.resComment.lpRes = &nodes[i + 1];
            }
            else
            {
                nodes[i].res.resSub = {PR_MESSAGE_RECIPIENTS, &nodes[i + 1]};
            }
        }
        nodes[Deep].rt = RES_EXIST;
        nodes[Deep].res.resExist.ulPropTag = PR_SUBJECT_A;
        CZebTable table = Contents();
        EXPECT_EQ(FailureOf([&] { table.Restrict(nodes.data(), 0); }).result, MAPI_E_TOO_COMPLEX) << kind;
        EXPECT_EQ(table.GetRowCount(), 2u) << kind;
    }
}

TEST_F(BadRestriction, UpToAHundredDeepHolds)
{
    CZebRestrictionAllocator restriction;
    for (const int levels : {1, 2, 99, 100})
    {
        BuildNots(restriction, levels);
        CZebTable table = Contents();
        table.SetColumns(1, PR_SUBJECT_A);
        table.Restrict(restriction, 0);
        CZebRowSet rows;
        table.QueryRows(&rows, 0, nullptr, nullptr);
        ASSERT_EQ(rows.Count(), 1u) << levels;
        EXPECT_STREQ(rows[0][PR_SUBJECT_A].String(true), levels % 2 == 0 ? "two" : "one") << levels;
        BuildPairs(restriction, levels);
        table.Restrict(restriction, 0);
        EXPECT_EQ(table.GetRowCount(), 2u) << levels;
    }
}

TEST_F(BadRestriction, WithTenThousandPartsHolds)
{
    CZebRestrictionAllocator restriction;
    restriction.Allocate();
    restriction.CreateOr(10'000);
    for (ULONG i = 0; i < 10'000; ++i)
    {
        restriction[i].CreateProp(PR_IMPORTANCE, RELOP_EQ) = static_cast<LONG>(i + 1);
    }
    CZebTable table = Contents();
    table.Restrict(restriction, 0);
    EXPECT_EQ(table.GetRowCount(), 1u);
}

TEST_F(BadRestriction, WithImpossiblyManyPartsIsRefused)
{
    CZebRestrictionAllocator restriction;
    restriction.Allocate();
    restriction.CreateExist(PR_SUBJECT_A);
    EXPECT_EQ(FailureOf([&] { restriction.CreateAnd(0x08000000); }).result, MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(static_cast<SRestriction*>(restriction)->rt, static_cast<ULONG>(RES_EXIST));
}

class LongFolderName : public StoreHost
{
};

TEST_F(LongFolderName, OfMaximumLengthIsDisplayName)
{
    const std::string name(32'767, 'n');
    CZebFolder folder = Inbox().CreateFolder(name.c_str(), false, true, 0, "", FOLDER_GENERIC);
    EXPECT_TRUE(folder.GetDisplayName().GetString() == name);
    EXPECT_TRUE(folder.GetDisplayNameW().GetString() == Wide(name.begin(), name.end()));
    // Characters of three bytes each in a store's file.
    const Wide wide(32'767, WCHAR(0x4F60));
    folder.SetDisplayNameW(wide.c_str());
    EXPECT_TRUE(folder.GetDisplayNameW().GetString() == wide);
    EXPECT_TRUE(m_session->CompareEntryIDs(Inbox().GetFolderEntryIdByNameW(wide.c_str()), folder.GetEntryID()));
}

TEST_F(LongFolderName, OfMoreIsRefused)
{
    const std::string name(32'768, 'n');
    CZebFolder parent = Inbox();
    const ULONG before = parent.GetHierarchyTable(0).GetRowCount();
    const Failure thrown = FailureOf([&] { parent.CreateFolder(name.c_str(), false, true, 0, "", FOLDER_GENERIC); });
    EXPECT_EQ(thrown.result, MAPI_E_STRING_TOO_LONG);
    EXPECT_NE(thrown.text.find("32767 characters"), std::string::npos) << thrown.text;
    EXPECT_EQ(parent.GetHierarchyTable(0).GetRowCount(), before);
    CZebFolder folder = parent.CreateFolder("named", false, true, 0, "", FOLDER_GENERIC);
    EXPECT_EQ(FailureOf([&] { folder.SetDisplayName(std::string(1'000'000, 'n').c_str()); }).result,
              MAPI_E_STRING_TOO_LONG);
    EXPECT_STREQ(folder.GetDisplayName(), "named");
}

} // namespace
} // namespace zeb::test
