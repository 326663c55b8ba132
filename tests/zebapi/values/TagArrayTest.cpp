#include "zebapi/TAGS.h"

#include "zebapi/IProp.h"

#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace zeb::test
{

namespace
{

class OpenTags : public CZebPropTagArray
{
public:
    using CZebPropTagArray::Allocate;
};

class TagArray : public ::testing::Test
{
protected:
    static std::vector<ULONG> TagsOf(CZebPropTagArray& tags)
    {
        SPropTagArray* array = tags;
        return std::vector<ULONG>(array->aulPropTag, array->aulPropTag + array->cValues);
    }
    static void GatherInto(CZebPropTagArray& tags, ULONG count, ...)
    {
        tags.Reserve(count);
        va_list args;
        va_start(args, count);
        tags.Fill(count, args);
        va_end(args);
    }
    static void AddThroughList(CZebPropTagArray& tags, ULONG tag, ...)
    {
        va_list args;
        va_start(args, tag);
        AddListParameter(tags, tag, args);
        va_end(args);
    }
    static void AddListParameter(CZebPropTagArray& tags, ULONG tag, va_list args) { tags.AddList(tag, args); }

    /// @return the content of the list after its 0
    static ULONG AddThenNext(CZebPropTagArray& tags, ULONG tag, ...)
    {
        va_list args;
        va_start(args, tag);
        tags.Add(tag, args);
        const ULONG next = va_arg(args, ULONG);
        va_end(args);
        return next;
    }

    MapiMemory memory;
};

using Tags = std::vector<ULONG>;

/// An object whose real tags are one identifier up.
class Renumbering : public CZebIProp
{
public:
    ULONG unknown = 0;

    ULONG GetRealTag(ULONG tag, bool flag) override
    {
        EXPECT_TRUE(flag);
        if (tag == unknown)
        {
            CZebException::Throw(MAPI_E_NOT_FOUND, __FILE__, __LINE__);
        }
        return tag + 0x10000;
    }
};

} // namespace

TEST_F(TagArray, NeverFilledIsInvalid)
{
    CZebPropTagArray tags;
    EXPECT_EQ(tags.GetCount(), 0);
    EXPECT_FALSE(tags.IsValid());
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<SPropTagArray*>(tags); }), E_INVALIDARG);
}

TEST_F(TagArray, ListEndsAtTheFirstZero)
{
    CZebPropTagArray tags;
    tags.Add(PR_SUBJECT_A, PR_BODY_A, 0);
    EXPECT_EQ(TagsOf(tags), (Tags{PR_SUBJECT_A, PR_BODY_A}));
    EXPECT_EQ(memory.SizeOf(static_cast<SPropTagArray*>(tags)), 12u);
    EXPECT_EQ(memory.Allocations(), 1u);
    tags.Add(PR_ENTRYID, 0);
    EXPECT_EQ(TagsOf(tags), (Tags{PR_SUBJECT_A, PR_BODY_A, PR_ENTRYID}));
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(TagArray, TheFirstTagMayBeZero)
{
    CZebPropTagArray tags;
    tags.Add(0, 0);
    EXPECT_EQ(TagsOf(tags), (Tags{0}));
}

TEST_F(TagArray, ListFormStopsAtItsZero)
{
    CZebPropTagArray tags;
    EXPECT_EQ(AddThenNext(tags, PR_SUBJECT_A, PR_BODY_A, 0, 99), 99u);
    EXPECT_EQ(TagsOf(tags), (Tags{PR_SUBJECT_A, PR_BODY_A}));
}

TEST_F(TagArray, ListMayBeAParameter)
{
    CZebPropTagArray tags;
    AddThroughList(tags, PR_SUBJECT_A, PR_BODY_A, PR_ENTRYID, 0);
    EXPECT_EQ(TagsOf(tags), (Tags{PR_SUBJECT_A, PR_BODY_A, PR_ENTRYID}));
}

TEST_F(TagArray, GathersExactlyAsManyAsCounted)
{
    CZebPropTagArray tags;
    GatherInto(tags, 3, PR_ENTRYID, 0, PR_SUBJECT_A);
    EXPECT_EQ(TagsOf(tags), (Tags{PR_ENTRYID, 0, PR_SUBJECT_A}));
    CZebPropTagArray none;
    GatherInto(none, 0);
    EXPECT_TRUE(none.IsValid());
    EXPECT_EQ(none.GetCount(), 0);
    EXPECT_EQ(ThrownBy([&] { GatherInto(none, 0x80000000); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ThrownBy([&] { GatherInto(none, 0x7FFFFFFF); }), MAPI_E_NOT_ENOUGH_MEMORY);
    // With the tags there are, a count of 0 in 32 bits.
    EXPECT_EQ(ThrownBy([&] { GatherInto(tags, 0xFFFFFFFD); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(tags.GetCount(), 3);
}

TEST_F(TagArray, AddsOneAtATime)
{
    CZebPropTagArray tags;
    for (ULONG i = 0; i < 5; ++i)
    {
        tags.AddOne(100 + i);
        EXPECT_EQ(memory.SizeOf(static_cast<SPropTagArray*>(tags)), 8 + 4 * i);
        EXPECT_EQ(tags[static_cast<int>(i)], 100 + i);
    }
    EXPECT_EQ(tags.GetCount(), 5);
    EXPECT_EQ(tags[0], 100u);
}

TEST_F(TagArray, OwnOperationsGoThroughTheirSlots)
{
    class Overriding : public CZebPropTagArray
    {
    public:
        void Allocate(int n) override
        {
            calls += "Allocate ";
            CZebPropTagArray::Allocate(n);
        }
        void Empty() override
        {
            calls += "Empty ";
            CZebPropTagArray::Empty();
        }
        bool IsValid() const override
        {
            calls += "IsValid ";
            return CZebPropTagArray::IsValid();
        }
        void Add(ULONG tag, va_list& args) override
        {
            calls += "Add ";
            CZebPropTagArray::Add(tag, args);
        }
        using CZebPropTagArray::Add;
        using CZebPropTagArray::operator=;
        std::string Calls() { return std::exchange(calls, std::string()); }

        mutable std::string calls;
    };
    Overriding tags;
    tags.AddOne(PR_SUBJECT_A);
    EXPECT_EQ(tags.Calls(), "Allocate ");
    tags.CZebPropTagArray::Add(PR_BODY_A, PR_ENTRYID, 0);
    EXPECT_EQ(tags.Calls(), "Add Allocate ");
    (void)static_cast<SPropTagArray*>(tags);
    EXPECT_EQ(tags.Calls(), "IsValid ");
    Renumbering object;
    tags.ApplyTo(object);
    EXPECT_EQ(tags.Calls(), "IsValid ");
    const CZebPropTagArray none;
    tags = none;
    EXPECT_EQ(tags.Calls(), "Empty ");
    EXPECT_EQ(*&tags, nullptr);
    EXPECT_EQ(tags.Calls(), "Empty ");
}

TEST_F(TagArray, ReallocatingKeepsTheCount)
{
    OpenTags tags;
    tags.AddOne(7);
    tags.Allocate(4);
    EXPECT_EQ(tags.GetCount(), 1);
    EXPECT_EQ(memory.SizeOf(static_cast<SPropTagArray*>(tags)), 20u);
    EXPECT_EQ(tags[0], 7u);
    EXPECT_EQ(ThrownBy([&] { tags.Allocate(-1); }), MAPI_E_NOT_ENOUGH_MEMORY);
}

TEST_F(TagArray, CopiesAndSelfAssignmentEmpties)
{
    CZebPropTagArray tags;
    tags.Add(PR_SUBJECT_A, PR_BODY_A, 0);
    CZebPropTagArray copy(tags);
    CZebPropTagArray assigned;
    assigned.AddOne(1);
    assigned = tags;
    EXPECT_EQ(TagsOf(copy), TagsOf(tags));
    EXPECT_EQ(TagsOf(assigned), TagsOf(tags));
    EXPECT_NE(static_cast<SPropTagArray*>(copy), static_cast<SPropTagArray*>(tags));
    const CZebPropTagArray& same = tags;
    tags = same;
    EXPECT_FALSE(tags.IsValid());
    assigned = tags;
    EXPECT_FALSE(assigned.IsValid());
}

TEST_F(TagArray, AddressEmptiesAndTakesNewContent)
{
    CZebPropTagArray tags;
    tags.AddOne(1);
    SPropTagArray** slot = &tags;
    EXPECT_FALSE(tags.IsValid());
    *slot = static_cast<SPropTagArray*>(memory.Allocate(8));
    **slot = {1, {PR_ENTRYID}};
    EXPECT_EQ(TagsOf(tags), (Tags{PR_ENTRYID}));
    tags.AddOne(PR_SUBJECT_A);
    EXPECT_EQ(TagsOf(tags), (Tags{PR_ENTRYID, PR_SUBJECT_A}));
}

TEST_F(TagArray, FailedGrowthChangesNothing)
{
    CZebPropTagArray tags;
    tags.AddOne(1);
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { tags.AddOne(2); }), MAPI_E_NOT_ENOUGH_MEMORY);
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { tags.Add(2, 3, 0); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(TagsOf(tags), (Tags{1}));
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { CZebPropTagArray copy(tags); }), MAPI_E_NOT_ENOUGH_MEMORY);
}

TEST_F(TagArray, AppliesRealTagsInPlace)
{
    Renumbering object;
    CZebPropTagArray tags;
    EXPECT_EQ(ThrownBy([&] { tags.ApplyTo(object); }), E_INVALIDARG);
    tags.Add(0x8001001E, 0x80020003, 0);
    SPropTagArray* before = tags;
    tags.ApplyTo(object);
    EXPECT_EQ(TagsOf(tags), (Tags{0x8002001E, 0x80030003}));
    EXPECT_EQ(static_cast<SPropTagArray*>(tags), before);
}

TEST_F(TagArray, FailedApplicationKeepsAllTags)
{
    Renumbering object;
    object.unknown = 0x80020003;
    CZebPropTagArray tags;
    tags.Add(0x8001001E, 0x80020003, 0x80030003, 0);
    EXPECT_EQ(ThrownBy([&] { tags.ApplyTo(object); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(TagsOf(tags), (Tags{0x8001001E, 0x80020003, 0x80030003}));
}

} // namespace zeb::test
