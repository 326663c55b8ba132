#include "zebapi/RowSet.h"

#include "tests/support/Context.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"
#include "tests/support/doubles/MapiUtilities.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace zeb::test
{

namespace
{

class RowSet : public ::testing::Test
{
protected:
    /// What a provider stores: rows with one number each, counted from `first`.
    SRowSet* NewRows(ULONG count, LONG first = 0)
    {
        auto* rows = static_cast<SRowSet*>(memory.Allocate(static_cast<ULONG>(CbNewSRowSet(count))));
        rows->cRows = count;
        for (ULONG i = 0; i < count; ++i)
        {
            auto* value = static_cast<SPropValue*>(memory.Allocate(sizeof(SPropValue)));
            value->ulPropTag = PR_MESSAGE_SIZE;
            value->Value.l = first + static_cast<LONG>(i);
            rows->aRow[i] = {0, 1, value};
        }
        return rows;
    }

    MapiMemory memory;
    MapiUtilities utilities;
};

} // namespace

TEST_F(RowSet, NewSetWasNeverFilled)
{
    CZebRowSet rows;
    EXPECT_FALSE(rows.IsValid());
    EXPECT_EQ(ThrownBy([&] { rows.Count(); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { rows[0]; }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(ThrownBy([&] { rows.DetachToNew(); }), MAPI_E_NO_SUPPORT);
}

TEST_F(RowSet, FillerThatLeavesNothingIsReported)
{
    CZebRowSet rows;
    EXPECT_EQ(*&rows, nullptr);
    EXPECT_FALSE(rows.IsValid());
    EXPECT_EQ(ThrownBy([&] { rows.Count(); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { rows[0]; }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { rows.DetachToNew(); }), MAPI_E_BAD_VALUE);
}

TEST_F(RowSet, SetOfNoRowsIsInvalid)
{
    CZebRowSet rows;
    *&rows = NewRows(0);
    EXPECT_FALSE(rows.IsValid());
    EXPECT_EQ(rows.Count(), 0u);
    EXPECT_EQ(ThrownBy([&] { rows[0]; }), E_INVALIDARG);
}

TEST_F(RowSet, GivesItsRowsAndFreesThem)
{
    {
        CZebRowSet rows;
        *&rows = NewRows(2, 40);
        EXPECT_TRUE(rows.IsValid());
        EXPECT_EQ(rows.Count(), 2u);
        EXPECT_EQ(static_cast<LONG>(rows[1][PR_MESSAGE_SIZE]), 41);
        EXPECT_EQ(ThrownBy([&] { rows[2]; }), E_INVALIDARG);
    }
    EXPECT_EQ(utilities.freedRowSets, 1);
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

TEST_F(RowSet, AFailureNamesIndexAndCount)
{
    CZebRowSet rows;
    *&rows = NewRows(2);
    EXPECT_EQ(ContextOf([&] { rows[2]; }), "operator[] row 2 of 2");
    EXPECT_EQ(ContextOf([&] { rows[7]; }), "operator[] row 7 of 2");
}

TEST_F(RowSet, ValuesAllocateUnderTheSet)
{
    SPropValue subject = {};
    subject.ulPropTag = PR_SUBJECT_A;
    CZebRowSet rows;
    SRowSet** slot = &rows;
    *slot = NewRows(1);
    // Not of MAPI's memory: nothing can be allocated under the row's own values.
    SPropValue* const values = std::exchange((*slot)->aRow[0].lpProps, &subject);
    rows[0][PR_SUBJECT_A] = "text";
    EXPECT_STREQ(subject.Value.lpszA, "text");
    EXPECT_FALSE(memory.IsRoot(subject.Value.lpszA));
    (*slot)->aRow[0].lpProps = values;
}

TEST_F(RowSet, CopyingCopiesPointerAndState)
{
    CZebRowSet rows;
    SRowSet** slot = &rows;
    CZebRowSet handedOut(rows);
    EXPECT_EQ(ThrownBy([&] { handedOut[0]; }), MAPI_E_BAD_VALUE);
    *slot = NewRows(2, 5);
    CZebRowSet copy(rows);
    CZebRowSet assigned;
    assigned = rows;
    EXPECT_EQ(static_cast<LONG>(copy[1][PR_MESSAGE_SIZE]), 6);
    EXPECT_EQ(static_cast<LONG>(assigned[1][PR_MESSAGE_SIZE]), 6);
    EXPECT_EQ(ThrownBy([&] { assigned[2]; }), E_INVALIDARG);
    EXPECT_EQ(memory.LiveRoots(), 3u) << "nothing is duplicated";
    // Three objects would free the one set: only one of them keeps it.
    *slot = nullptr;
    assigned = rows;
}

TEST_F(RowSet, EmptyCountsAsNeverFilledAgain)
{
    CZebRowSet rows;
    *&rows = NewRows(1);
    rows.Empty();
    EXPECT_EQ(utilities.freedRowSets, 1);
    EXPECT_EQ(ThrownBy([&] { rows[0]; }), MAPI_E_NO_SUPPORT);
    rows.Empty();
    EXPECT_EQ(utilities.freedRowSets, 1);
}

TEST_F(RowSet, RefillingFreesTheFormerRows)
{
    CZebRowSet rows;
    *&rows = NewRows(3);
    *&rows = NewRows(1);
    EXPECT_EQ(utilities.freedRowSets, 1);
    EXPECT_EQ(rows.Count(), 1u);
}

TEST_F(RowSet, DetachingMovesRowsAndState)
{
    CZebRowSet rows;
    *&rows = NewRows(2, 7);
    std::unique_ptr<CZebRowSet> detached(rows.DetachToNew());
    EXPECT_EQ(ThrownBy([&] { rows[0]; }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(ThrownBy([&] { rows.Count(); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(detached->Count(), 2u);
    EXPECT_EQ(static_cast<LONG>((*detached)[0][PR_MESSAGE_SIZE]), 7);
    EXPECT_EQ(ThrownBy([&] { (*detached)[2]; }), E_INVALIDARG);
    EXPECT_EQ(utilities.freedRowSets, 0);
}

TEST_F(RowSet, OverriddenOperationsApplyToTheOthers)
{
    class Overriding : public CZebRowSet
    {
    public:
        void CheckValid() const override { CZebException::Throw(MAPI_E_BUSY, nullptr, 0); }
        void Empty() override
        {
            ++emptied;
            CZebRowSet::Empty();
        }
        int emptied = 0;
    };
    Overriding own;
    CZebRowSet& rows = own;
    *&rows = NewRows(2);
    EXPECT_EQ(own.emptied, 1) << "before the address is handed out";
    EXPECT_EQ(ThrownBy([&] { rows.Count(); }), MAPI_E_BUSY);
}

TEST_F(RowSet, ArrayDeletesItsSetsInOrder)
{
    class Noting : public CZebRowSet
    {
    public:
        Noting(std::vector<int>& order, int number)
            : m_order(order)
            , m_number(number)
        {
        }
        ~Noting() override { m_order.push_back(m_number); }

    private:
        std::vector<int>& m_order;
        int m_number;
    };
    std::vector<int> order;
    CZebRowSetArray sets;
    for (int i = 0; i < 3; ++i)
    {
        sets.Add(static_cast<CZebRowSet*>(std::make_unique<Noting>(order, i).release()));
    }
    sets.RemoveAll();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

TEST_F(RowSet, ArrayOwnsItsSets)
{
    {
        CZebRowSetArray sets;
        for (LONG i = 0; i < 3; ++i)
        {
            auto set = std::make_unique<CZebRowSet>();
            *&*set = NewRows(1, i);
            sets.Add(set.release());
        }
        sets.Add(nullptr);
        sets.RemoveAt(1);
        EXPECT_EQ(utilities.freedRowSets, 1);
        ASSERT_EQ(sets.GetSize(), 3);
        EXPECT_EQ(static_cast<LONG>((*static_cast<CZebRowSet*>(sets[1]))[0][PR_MESSAGE_SIZE]), 2);
        sets.RemoveAt(2);
        EXPECT_EQ(sets.GetSize(), 2);
        sets.RemoveAll();
        EXPECT_EQ(utilities.freedRowSets, 3);
        EXPECT_EQ(sets.GetSize(), 0);
        auto last = std::make_unique<CZebRowSet>();
        *&*last = NewRows(1);
        sets.Add(last.release());
    }
    EXPECT_EQ(utilities.freedRowSets, 4);
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

} // namespace zeb::test
