#include "zebapi/PROPVALArray.h"

#include "zebapi/BinArray.h"

#include "tests/support/Context.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"
#include "tests/support/doubles/MapiUtilities.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace zeb::test
{

namespace
{

/// The array with its protected operations open.
class OpenArray : public CZebPropValArray
{
public:
    using CZebPropValArray::Allocate;
    using CZebPropValArray::CZebPropValArray;
    using CZebPropValArray::FindTag;
};

class OpenProblems : public CZebPropProblemArray
{
public:
    using CZebPropProblemArray::Allocate;
};

class PropValArray : public ::testing::Test
{
protected:
    /// What GetProps does: `count` numbers under identifiers from 0x6000 on.
    void Receive(CZebPropValArray& array, ULONG count)
    {
        SPropValue** values = &array;
        *values = static_cast<SPropValue*>(memory.Allocate(count * static_cast<ULONG>(sizeof(SPropValue))));
        for (ULONG i = 0; i < count; ++i)
        {
            (*values)[i] = {};
            (*values)[i].ulPropTag = PROP_TAG(PT_LONG, 0x6000 + i);
        }
        *array.CountPtr() = count;
    }

    MapiMemory memory;
    MapiUtilities utilities;
};

class PropProblemArray : public PropValArray
{
protected:
    void Fill(CZebPropProblemArray& problems, ULONG count)
    {
        SPropProblemArray** slot = &problems;
        *slot = static_cast<SPropProblemArray*>(memory.Allocate(4 + 12 * count));
        (*slot)->cProblem = count;
        for (ULONG i = 0; i < count; ++i)
        {
            (*slot)->aProblem[i] = {i, PR_SUBJECT_A, MAPI_E_NO_ACCESS};
        }
    }
};

} // namespace

TEST_F(PropValArray, EmptyArrayHasNoEntries)
{
    CZebPropValArray array;
    EXPECT_EQ(array.GetCount(), 0u);
    EXPECT_EQ(array.Count(), 0u);
    EXPECT_FALSE(array.IsValid());
    EXPECT_FALSE(array.IsExists(PR_SUBJECT_A));
    EXPECT_FALSE(array.hasRealValue(PR_SUBJECT_A));
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<SPropValue*>(array); }), E_INVALIDARG);
    EXPECT_EQ(ThrownBy([&] { array.GetAt(0); }), MAPI_E_UNEXPECTED_ID);
    array.TruncateToExisting();
    EXPECT_EQ(array.GetCount(), 0u);
}

TEST_F(PropValArray, NewTagsFillFreeSlotsFirst)
{
    CZebPropValArray array(3);
    EXPECT_EQ(array.GetCount(), 3u);
    SPropValue* values = array;
    array[PR_MESSAGE_SIZE] = LONG(1);
    EXPECT_EQ(values[0].ulPropTag, ULONG{PR_MESSAGE_SIZE});
    array[PR_SUBJECT_A] = "subject";
    EXPECT_EQ(values[1].ulPropTag, ULONG{PR_SUBJECT_A});
    array[PR_PRIORITY] = LONG(3);
    EXPECT_EQ(static_cast<SPropValue*>(array), values);
    array[PR_IMPORTANCE] = LONG(4);
    EXPECT_EQ(array.GetCount(), 4u);
    values = array;
    EXPECT_EQ(memory.SizeOf(values), 96u) << "by exactly one";
    EXPECT_EQ(static_cast<LONG>(array[PR_MESSAGE_SIZE]), 1);
    EXPECT_EQ(array[PR_SUBJECT_A].String(false), "subject");
    EXPECT_EQ(static_cast<LONG>(array[PR_IMPORTANCE]), 4);
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(PropValArray, FindsByIdentifierKeepingTheTag)
{
    CZebPropValArray array(1);
    array[PR_SUBJECT_A] = "narrow";
    EXPECT_EQ(array[PR_SUBJECT_W].GetTag(), ULONG{PR_SUBJECT_A});
    EXPECT_EQ(array.GetCount(), 1u);
    EXPECT_EQ(ThrownBy([&] { array[PR_SUBJECT_W] = ZEBW("wide"); }), MAPI_E_INVALID_TYPE);
    EXPECT_TRUE(array.IsExists(PR_SUBJECT_W));
}

TEST_F(PropValArray, FindsAnIdentifiersFirstEntry)
{
    for (ULONG count = 1; count <= 10; ++count)
    {
        OpenArray array;
        Receive(array, count);
        EXPECT_EQ(array.FindTag(PROP_TAG(PT_LONG, 0x6000 + count)), -1);
        EXPECT_EQ(array.FindTag(0), -1);
        for (ULONG i = 0; i < count; ++i)
        {
            EXPECT_EQ(array.FindTag(PROP_TAG(PT_STRING8, 0x6000 + i)), static_cast<int>(i)) << count;
        }
        SPropValue* values = array;
        for (ULONG i = 0; i < count; ++i)
        {
            values[i].ulPropTag = PROP_TAG(PT_LONG + i, 0x6000 + i / 3);
        }
        for (ULONG i = 0; i < count; i += 3)
        {
            EXPECT_EQ(array.FindTag(PROP_TAG(PT_NULL, 0x6000 + i / 3)), static_cast<int>(i)) << count;
        }
    }
}

TEST_F(PropValArray, ReceivedArrayTakesNoNewTags)
{
    CZebPropValArray array(2);
    array[PR_SUBJECT_A] = "dropped";
    Receive(array, 2);
    EXPECT_EQ(memory.LiveRoots(), 1u);
    EXPECT_TRUE(array.IsValid());
    EXPECT_EQ(static_cast<LONG>(array[PROP_TAG(PT_LONG, 0x6001)]), 0);
    EXPECT_EQ(ThrownBy([&] { array[PR_SUBJECT_A]; }), MAPI_E_UNEXPECTED_ID);
    array.Empty();
    array[PR_MESSAGE_SIZE] = LONG(5);
    EXPECT_EQ(array.GetCount(), 1u) << "an emptied array grows again";
}

TEST_F(PropValArray, CountWithoutABufferIsZero)
{
    CZebPropValArray array;
    EXPECT_EQ(*&array, nullptr);
    *array.CountPtr() = 3;
    EXPECT_FALSE(array.IsValid());
    EXPECT_FALSE(array.IsExists(PR_SUBJECT_A));
    EXPECT_FALSE(array.hasRealValue(PR_SUBJECT_A));
    EXPECT_EQ(ThrownBy([&] { array.GetAt(0); }), MAPI_E_UNEXPECTED_ID);
    EXPECT_EQ(ThrownBy([&] { array[PR_SUBJECT_A]; }), MAPI_E_UNEXPECTED_ID);
    array.TruncateToExisting();
}

TEST_F(PropValArray, IndexesAreChecked)
{
    CZebPropValArray array(2);
    array[PR_MESSAGE_SIZE] = LONG(8);
    EXPECT_EQ(static_cast<LONG>(array.GetAt(0)), 8);
    EXPECT_EQ(array.GetAt(1).GetTag(), 0u);
    EXPECT_EQ(ThrownBy([&] { array.GetAt(2); }), MAPI_E_UNEXPECTED_ID);
}

TEST_F(PropValArray, AFailureNamesTagOrIndex)
{
    CZebPropValArray array(0);
    Receive(array, 3);
    EXPECT_EQ(ContextOf([&] { array[PR_SUBJECT_W]; }), "operator[] PR_SUBJECT 0x0037001F");
    EXPECT_EQ(ContextOf([&] { array.GetAt(3); }), "GetAt value 3 of 3");
}

TEST_F(PropValArray, TruncatesBeforeTheFirstFreeSlot)
{
    CZebPropValArray array(5);
    array[PR_MESSAGE_SIZE] = LONG(1);
    array[PR_PRIORITY] = LONG(2);
    array.TruncateToExisting();
    EXPECT_EQ(array.GetCount(), 2u);
    array.TruncateToExisting();
    EXPECT_EQ(array.GetCount(), 2u);
    CZebPropValArray untouched(3);
    untouched.TruncateToExisting();
    EXPECT_EQ(untouched.GetCount(), 0u);
    EXPECT_FALSE(untouched.IsValid());
}

TEST_F(PropValArray, EmptyTextsAndErrorsAreUnreal)
{
    CZebPropValArray array(6);
    array[PR_SUBJECT_A] = "";
    array[PR_BODY_A] = "x";
    array[PR_MESSAGE_SIZE] = LONG(0);
    array[PROP_TAG(PT_ERROR, 0x6000)];
    array[PROP_TAG(PT_NULL, 0x6001)];
    array[PROP_TAG(PT_UNICODE, 0x6002)] = ZEBW("");
    EXPECT_FALSE(array.hasRealValue(PR_SUBJECT_A));
    EXPECT_TRUE(array.hasRealValue(PR_BODY_W)) << "by identifier";
    EXPECT_TRUE(array.hasRealValue(PR_MESSAGE_SIZE));
    EXPECT_FALSE(array.hasRealValue(PROP_TAG(PT_LONG, 0x6000)));
    EXPECT_FALSE(array.hasRealValue(PROP_TAG(PT_LONG, 0x6001)));
    EXPECT_FALSE(array.hasRealValue(PROP_TAG(PT_UNICODE, 0x6002)));
    EXPECT_FALSE(array.hasRealValue(PR_ENTRYID));
}

TEST_F(PropValArray, ShrinkingNeitherFreesNorMoves)
{
    OpenArray array(4);
    array[PR_SUBJECT_A] = "s";
    SPropValue* values = array;
    const size_t allocations = memory.Allocations();
    array.Allocate(4);
    EXPECT_EQ(static_cast<SPropValue*>(array), values) << "the same size is no growth";
    array.Allocate(1);
    EXPECT_EQ(array.GetCount(), 1u);
    EXPECT_EQ(static_cast<SPropValue*>(array), values);
    array.Allocate(0);
    EXPECT_EQ(static_cast<SPropValue*>(array), values);
    EXPECT_EQ(memory.Allocations(), allocations);
    EXPECT_EQ(memory.Frees(), 0u);
}

TEST_F(PropValArray, GrowingCopiesWithoutFreeSlots)
{
    OpenArray array(3);
    array[PR_SUBJECT_A] = "subject";
    SPropValue* values = array;
    values[2].ulPropTag = PR_MESSAGE_SIZE;
    values[2].Value.l = 9;
    array.Allocate(5);
    EXPECT_EQ(utilities.copies, 2) << "the free slot between them is not copied";
    values = array;
    EXPECT_STREQ(values[0].Value.lpszA, "subject");
    EXPECT_FALSE(memory.IsRoot(values[0].Value.lpszA));
    EXPECT_EQ(values[1].ulPropTag, 0u);
    EXPECT_EQ(values[2].Value.l, 9);
    EXPECT_EQ(values[4].ulPropTag, 0u);
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(PropValArray, FailedGrowthChangesNothing)
{
    CZebPropValArray array(1);
    array[PR_SUBJECT_A] = "subject";
    SPropValue* values = array;
    for (size_t failing = 1; failing <= 2; ++failing)
    {
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { array[PR_MESSAGE_SIZE]; }), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(static_cast<SPropValue*>(array), values);
        EXPECT_EQ(array.GetCount(), 1u);
        EXPECT_EQ(array[PR_SUBJECT_A].String(false), "subject");
    }
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(PropValArray, ImpossiblyManyEntriesAreRefused)
{
    EXPECT_EQ(ThrownBy([] { CZebPropValArray array(0x10000000); }), MAPI_E_NOT_ENOUGH_MEMORY);
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([] { CZebPropValArray array(2); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

TEST_F(PropValArray, EntriesAreCopiedBySet)
{
    CZebPropValArray from(1);
    from[PR_SUBJECT_A] = "subject";
    CZebPropValArray to(1);
    to[PR_SUBJECT_A].Set(from[PR_SUBJECT_A]);
    from.Empty();
    EXPECT_EQ(to[PR_SUBJECT_A].String(false), "subject");
}

TEST_F(PropValArray, OwnOperationsGoThroughTheirSlots)
{
    class Overriding : public CZebPropValArray
    {
    public:
        using CZebPropValArray::CZebPropValArray;
        void Allocate(ULONG n) override
        {
            calls += "Allocate ";
            CZebPropValArray::Allocate(n);
        }
        int FindTag(ULONG tag) const override
        {
            calls += "FindTag ";
            return CZebPropValArray::FindTag(tag);
        }
        void Empty() override
        {
            calls += "Empty ";
            CZebPropValArray::Empty();
        }
        std::string Calls() { return std::exchange(calls, std::string()); }

        mutable std::string calls;
    };
    Overriding array;
    array[PR_MESSAGE_SIZE] = LONG(1);
    EXPECT_EQ(array.Calls(), "FindTag FindTag Allocate ");
    array.IsExists(PR_MESSAGE_SIZE);
    EXPECT_EQ(array.Calls(), "FindTag ");
    array.hasRealValue(PR_MESSAGE_SIZE);
    EXPECT_EQ(array.Calls(), "FindTag ");
    array.TruncateToExisting();
    EXPECT_EQ(array.Calls(), "FindTag ");
    EXPECT_EQ(*&array, nullptr);
    EXPECT_EQ(array.Calls(), "Empty ");
}

TEST_F(PropValArray, TakesNoCopy)
{
    static_assert(!std::is_copy_constructible_v<CZebPropValArray>);
    static_assert(!std::is_copy_assignable_v<CZebPropValArray>);
    static_assert(!std::is_copy_constructible_v<CZebBinArray>);
    static_assert(!std::is_copy_assignable_v<CZebBinArray>);
    static_assert(std::is_copy_constructible_v<CZebPropProblemArray>);
}

TEST_F(PropProblemArray, EmptyObjectHasNone)
{
    CZebPropProblemArray problems;
    EXPECT_EQ(problems.GetCount(), 0);
    EXPECT_FALSE(problems.IsValid());
    EXPECT_EQ(static_cast<SPropProblemArray*>(problems), nullptr);
}

TEST_F(PropProblemArray, OwnsWhatIsStored)
{
    CZebPropProblemArray problems;
    Fill(problems, 2);
    EXPECT_TRUE(problems.IsValid());
    EXPECT_EQ(problems.GetCount(), 2);
    EXPECT_EQ(problems[1].ulIndex, 1u);
    problems[1].scode = MAPI_E_BUSY;
    EXPECT_EQ(static_cast<SPropProblemArray*>(problems)->aProblem[1].scode, MAPI_E_BUSY);
    Fill(problems, 1);
    EXPECT_EQ(problems.GetCount(), 1);
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(PropProblemArray, CopiesAndSelfAssignmentEmpties)
{
    CZebPropProblemArray problems;
    Fill(problems, 2);
    CZebPropProblemArray copy(problems);
    CZebPropProblemArray assigned;
    Fill(assigned, 5);
    assigned = problems;
    EXPECT_EQ(copy.GetCount(), 2);
    EXPECT_EQ(assigned[1].scode, MAPI_E_NO_ACCESS);
    EXPECT_EQ(memory.SizeOf(static_cast<SPropProblemArray*>(assigned)), 28u);
    const CZebPropProblemArray& same = problems;
    problems = same;
    EXPECT_FALSE(problems.IsValid());
    assigned = problems;
    EXPECT_FALSE(assigned.IsValid());
}

TEST_F(PropProblemArray, ReallocatingLimitsTheCount)
{
    OpenProblems problems;
    Fill(problems, 3);
    problems.Allocate(5);
    EXPECT_EQ(problems.GetCount(), 3);
    EXPECT_EQ(memory.SizeOf(static_cast<SPropProblemArray*>(problems)), 64u);
    EXPECT_EQ(problems[2].ulIndex, 2u);
    problems.Allocate(2);
    EXPECT_EQ(problems.GetCount(), 2);
    EXPECT_EQ(memory.SizeOf(static_cast<SPropProblemArray*>(problems)), 28u);
    EXPECT_EQ(ThrownBy([&] { problems.Allocate(-1); }), MAPI_E_NOT_ENOUGH_MEMORY);
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { problems.Allocate(9); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(problems.GetCount(), 2);
    OpenProblems fresh;
    fresh.Allocate(1);
    EXPECT_EQ(fresh.GetCount(), 0);
}

TEST_F(PropValArray, GrowthCopiesEveryKindOfEntry)
{
    constexpr ULONG Wide = PROP_TAG(PT_UNICODE, 0x6100);
    constexpr ULONG Binary = PROP_TAG(PT_BINARY, 0x6101);
    constexpr ULONG Texts = PROP_TAG(PT_MV_STRING8, 0x6102);
    constexpr ULONG Numbers = PROP_TAG(PT_MV_LONG, 0x6103);
    constexpr ULONG Null = PROP_TAG(PT_NULL, 0x6104);
    constexpr ULONG Unassigned[] = {PROP_TAG(PT_STRING8, 0x6105), PROP_TAG(PT_UNICODE, 0x6106),
                                    PROP_TAG(PT_BINARY, 0x6107), PROP_TAG(PT_MV_UNICODE, 0x6108)};
    CZebPropValArray array(9);
    BYTE bytes[] = {1, 2, 3};
    CArray<CStringA> texts;
    texts.Add("one");
    texts.Add("");
    CArray<LONG> numbers;
    numbers.Add(7);
    array[Wide] = ZEBW("wide");
    array[Binary] = SBinary{3, bytes};
    array[Texts] = texts;
    array[Numbers] = numbers;
    array[Null];
    for (const ULONG tag : Unassigned)
    {
        array[tag];
    }
    const SPropValue* before = array;
    array[PR_MESSAGE_SIZE] = LONG(1);
    ASSERT_NE(static_cast<SPropValue*>(array), before) << "it has grown, and the old buffer is spoiled";
    EXPECT_EQ(static_cast<CStringW>(array[Wide]), ZEBW("wide"));
    EXPECT_EQ(array[Binary].String(false), "010203");
    CArray<CStringA> textsRead;
    array[Texts].GetMV(textsRead);
    ASSERT_EQ(textsRead.GetSize(), 2);
    EXPECT_EQ(textsRead[0], "one");
    EXPECT_EQ(textsRead[1], "");
    CArray<LONG> numbersRead;
    array[Numbers].GetMV(numbersRead);
    ASSERT_EQ(numbersRead.GetSize(), 1);
    EXPECT_EQ(numbersRead[0], 7);
    EXPECT_EQ(array[Null].GetTag(), Null);
    for (const ULONG tag : Unassigned)
    {
        EXPECT_EQ(array[tag].GetTag(), tag);
        EXPECT_EQ(static_cast<const SPropValue&>(array[tag]).Value.MVl.lpl, nullptr);
    }
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(PropValArray, AnImpossibleCountIsRefused)
{
    CZebPropValArray array;
    for (const ULONG claimed : {0x7FFFFFFFu, 0xFFFFFFFFu})
    {
        *array.CountPtr() = claimed;
        EXPECT_EQ(ThrownBy([&] { array[PR_SUBJECT_A]; }), MAPI_E_NOT_ENOUGH_MEMORY) << claimed;
        EXPECT_EQ(array.GetCount(), claimed);
    }
    EXPECT_EQ(memory.Allocations(), 0u);
}

TEST_F(PropProblemArray, AShrinkingAllocateKeepsWhatFits)
{
    OpenProblems problems;
    Fill(problems, 3);
    problems.Allocate(2);
    EXPECT_EQ(problems.GetCount(), 2);
    EXPECT_EQ(memory.SizeOf(static_cast<SPropProblemArray*>(problems)), 4u + 12 * 2);
    EXPECT_EQ(problems[1].ulIndex, 1u);
    problems.Allocate(0);
    EXPECT_EQ(problems.GetCount(), 0);
    EXPECT_TRUE(problems.IsValid());
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(PropProblemArray, ACopyHasExactlyItsProblems)
{
    CZebPropProblemArray problems;
    Fill(problems, 3);
    CZebPropProblemArray copy(problems);
    EXPECT_EQ(memory.SizeOf(static_cast<SPropProblemArray*>(copy)), 4u + 12 * 3);
    EXPECT_NE(static_cast<SPropProblemArray*>(copy), static_cast<SPropProblemArray*>(problems));
    EXPECT_EQ(copy[2].ulIndex, 2u);
}

} // namespace zeb::test
