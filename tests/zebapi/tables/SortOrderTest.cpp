#include "zebapi/SortOrder.h"

#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace zeb::test
{

namespace
{

class SortOrder : public ::testing::Test
{
protected:
    MapiMemory memory;
};

SSortOrderSet* SetOf(CZebSortOrder& order)
{
    return order;
}

} // namespace

TEST_F(SortOrder, WithoutATagIsEmpty)
{
    CZebSortOrder order(0, TABLE_SORT_DESCEND);
    EXPECT_EQ(order.GetCount(), 0);
    EXPECT_FALSE(order.IsValid());
    EXPECT_EQ(ThrownBy([&] { SetOf(order); }), E_INVALIDARG);
    EXPECT_EQ(memory.Allocations(), 0u);
}

TEST_F(SortOrder, FirstKeyLosesTheCombineBit)
{
    CZebSortOrder order(0, 0);
    order.Add(PR_SUBJECT_A, TABLE_SORT_DESCEND | TABLE_SORT_COMBINE);
    order.Add(PR_SUBJECT_A, TABLE_SORT_DESCEND | TABLE_SORT_COMBINE);
    EXPECT_EQ(SetOf(order)->aSort[0].ulOrder, 1u);
    EXPECT_EQ(SetOf(order)->aSort[1].ulOrder, 3u);
    CZebSortOrder built(PR_SUBJECT_A, TABLE_SORT_COMBINE);
    EXPECT_EQ(SetOf(built)->aSort[0].ulOrder, ULONG{TABLE_SORT_ASCEND});
}

TEST_F(SortOrder, GrowsByOneKey)
{
    CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_ASCEND);
    EXPECT_EQ(memory.SizeOf(SetOf(order)), 20u);
    order.Add(PR_MESSAGE_SIZE, TABLE_SORT_DESCEND);
    order.Add(PR_ENTRYID, TABLE_SORT_ASCEND);
    SSortOrderSet* set = order;
    EXPECT_EQ(set->cSorts, 3u);
    EXPECT_EQ(set->cCategories, 0u);
    EXPECT_EQ(set->cExpanded, 0u);
    EXPECT_EQ(memory.SizeOf(set), 36u);
    EXPECT_EQ(set->aSort[0].ulPropTag, ULONG{PR_SUBJECT_A});
    EXPECT_EQ(set->aSort[1].ulPropTag, ULONG{PR_MESSAGE_SIZE});
    EXPECT_EQ(set->aSort[1].ulOrder, ULONG{TABLE_SORT_DESCEND});
    EXPECT_EQ(set->aSort[2].ulPropTag, ULONG{PR_ENTRYID});
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(SortOrder, CopiesEverythingCategoriesIncluded)
{
    CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_DESCEND);
    SetOf(order)->cCategories = 1;
    SetOf(order)->cExpanded = 1;
    CZebSortOrder copy(order);
    CZebSortOrder assigned(PR_ENTRYID, 0);
    assigned = order;
    for (CZebSortOrder* each : {std::addressof(copy), std::addressof(assigned)})
    {
        SSortOrderSet* set = *each;
        EXPECT_NE(set, SetOf(order));
        EXPECT_EQ(set->cSorts, 1u);
        EXPECT_EQ(set->cCategories, 1u);
        EXPECT_EQ(set->cExpanded, 1u);
        EXPECT_EQ(set->aSort[0].ulOrder, ULONG{TABLE_SORT_DESCEND});
        EXPECT_EQ(memory.SizeOf(set), 20u);
    }
    assigned = CZebSortOrder(0, 0);
    EXPECT_FALSE(assigned.IsValid());
}

TEST_F(SortOrder, AssigningToItselfEmpties)
{
    CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_ASCEND);
    const CZebSortOrder& same = order;
    order = same;
    EXPECT_FALSE(order.IsValid());
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

TEST_F(SortOrder, AddressEmptiesAndTakesNewContent)
{
    CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_ASCEND);
    SSortOrderSet** slot = &order;
    EXPECT_FALSE(order.IsValid());
    EXPECT_EQ(memory.LiveRoots(), 0u);
    *slot = static_cast<SSortOrderSet*>(memory.Allocate(12));
    (*slot)->cSorts = 0;
    EXPECT_TRUE(order.IsValid()) << "a set of no keys counts";
    EXPECT_EQ(order.GetCount(), 0);
    order.Add(PR_SUBJECT_A, TABLE_SORT_COMBINE);
    EXPECT_EQ(SetOf(order)->aSort[0].ulOrder, 0u);
}

TEST_F(SortOrder, OwnOperationsGoThroughTheirSlots)
{
    class Overriding : public CZebSortOrder
    {
    public:
        Overriding()
            : CZebSortOrder(0, 0)
        {
        }
        void Allocate(int count) override
        {
            calls += "Allocate ";
            CZebSortOrder::Allocate(count);
        }
        void Empty() override
        {
            calls += "Empty ";
            CZebSortOrder::Empty();
        }
        int GetCount() const override
        {
            calls += "GetCount ";
            return CZebSortOrder::GetCount();
        }
        bool IsValid() const override
        {
            calls += "IsValid ";
            return CZebSortOrder::IsValid();
        }
        using CZebSortOrder::operator=;
        std::string Calls() { return std::exchange(calls, std::string()); }

        mutable std::string calls;
    };
    Overriding order;
    order.Add(PR_SUBJECT_A, TABLE_SORT_ASCEND);
    EXPECT_EQ(order.Calls(), "GetCount Allocate ");
    (void)static_cast<SSortOrderSet*>(order);
    EXPECT_EQ(order.Calls(), "IsValid ");
    const CZebSortOrder none(0, 0);
    order = none;
    EXPECT_EQ(order.Calls(), "Empty ");
    EXPECT_EQ(*&order, nullptr);
    EXPECT_EQ(order.Calls(), "Empty ");
}

TEST_F(SortOrder, FailedGrowthChangesNothing)
{
    CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_DESCEND);
    SSortOrderSet* before = order;
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { order.Add(PR_ENTRYID, 0); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(SetOf(order), before);
    EXPECT_EQ(order.GetCount(), 1);
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { CZebSortOrder copy(order); }), MAPI_E_NOT_ENOUGH_MEMORY);
}

TEST_F(SortOrder, SetsClaimingTooManyKeysStay)
{
    for (const ULONG claimed : {0x1FFFFFFEu, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu})
    {
        CZebSortOrder order(0, 0);
        SSortOrderSet** slot = &order;
        *slot = static_cast<SSortOrderSet*>(memory.Allocate(20));
        **slot = {};
        (*slot)->cSorts = claimed;
        const size_t before = memory.Allocations();
        EXPECT_EQ(ThrownBy([&] { order.Add(PR_SUBJECT_A, TABLE_SORT_ASCEND); }), MAPI_E_NOT_ENOUGH_MEMORY) << claimed;
        EXPECT_EQ(memory.Allocations(), before);
        EXPECT_EQ(SetOf(order)->cSorts, claimed);
    }
}

namespace
{

class OpenOrder : public CZebSortOrder
{
public:
    OpenOrder()
        : CZebSortOrder(0, 0)
    {
    }
    using CZebSortOrder::Allocate;
};

} // namespace

TEST_F(SortOrder, SizesAbove32BitsAreRefused)
{
    OpenOrder order;
    for (const int count : {0x1FFFFFFF, 0x7FFFFFFF, -1})
    {
        EXPECT_EQ(ThrownBy([&] { order.Allocate(count); }), MAPI_E_NOT_ENOUGH_MEMORY) << count;
    }
    EXPECT_EQ(memory.Allocations(), 0u);
    EXPECT_FALSE(order.IsValid());
}

} // namespace zeb::test
