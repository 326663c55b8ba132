#include "zebapi/NAMEID.h"
#include "ObjectsTest.h"
#include "tests/support/FailingNew.h"
#include "zebapi/constants/internal/NamedProps.h"

#include <new>
#include <set>

using namespace zeb::test;

namespace
{

class NameIdMap : public ObjectsTest
{
};

class NameIdHelper : public ObjectsTest
{
};

} // namespace

TEST_F(NameIdMap, TagsBelowNamedOnesAreUnchanged)
{
    const CZebNameIdMap map;
    EXPECT_EQ(map.GetTag(0x0037001E, true), 0x0037001Eu);
    EXPECT_EQ(map.GetName(0x0037001E, true), 0x0037001Eu);
    EXPECT_EQ(map.GetTag(0x7FFF001E, true), 0x7FFF001Eu);
}

TEST_F(NameIdMap, KnownTagsTakeTheStoresId)
{
    CZebNameIdMap map;
    map.SetTag(0x80830001, 0x85120102);
    EXPECT_EQ(map.GetTag(0x8083001F, false), 0x8512001Fu);
    EXPECT_EQ(map.GetTag(0x80831102, true), 0x85121102u);
}

TEST_F(NameIdMap, UnknownTagsAreZeroOrError)
{
    CZebNameIdMap map;
    map.SetTag(0x80830001, 0x85120102);
    EXPECT_EQ(map.GetTag(0x8999001E, false), 0u);
    EXPECT_EQ(Thrown([&] { map.GetTag(0x8999001E, true); }), MAPI_E_BAD_VALUE);
}

TEST_F(NameIdMap, NamesAreNeverFoundByTag)
{
    CZebNameIdMap map;
    map.SetTag(0x80830001, 0x85120102);
    EXPECT_EQ(map.GetName(0x8512001F, false), 0u);
    EXPECT_EQ(Thrown([&] { map.GetName(0x8512001F, true); }), MAPI_E_BAD_VALUE);
}

TEST_F(NameIdMap, ASecondTagOverwritesTheFirst)
{
    CZebNameIdMap map;
    map.SetTag(0x80830001, 0x85120102);
    map.SetTag(0x8083001F, 0x8700001F);
    EXPECT_EQ(map.GetCount(), 1);
    EXPECT_EQ(map.GetTag(0x8083001F, true), 0x8700001Fu);
}

TEST_F(NameIdMap, TheFallbackEntryCountsAsOne)
{
    CZebNameIdMap map;
    EXPECT_EQ(map.GetCount(), 0);
    map.SetTag(0, 0);
    EXPECT_EQ(map.GetCount(), 1);
    map.EmptyIdMap();
    EXPECT_EQ(map.GetCount(), 0);
}

TEST_F(NameIdMap, AssignmentMergesBothDirections)
{
    CZebNameIdMap source;
    source.SetTag(0x80830001, 0x85120102);
    source.SetTag(0x80840001, 0x80830102);
    CZebNameIdMap target;
    target.SetTag(0x90000001, 0x90010001);
    target = source;
    // Forward keys 8083, 8084; reverse keys 8512, 8083, which overwrites.
    EXPECT_EQ(target.GetCount(), 3);
    EXPECT_EQ(target.GetTag(0x8512001F, true), 0x8083001Fu);
    EXPECT_EQ(target.GetTag(0x8083001F, true), 0x8084001Fu);
    EXPECT_EQ(target.GetTag(0x8084001F, true), 0x8083001Fu);
    EXPECT_EQ(target.GetTag(0x9000001F, false), 0u);
    // A copy of the copy: its reverse direction was empty.
    const CZebNameIdMap again(target);
    EXPECT_EQ(again.GetCount(), 3);
}

TEST_F(NameIdMap, AssigningAMapToItselfEmpties)
{
    CZebNameIdMap map;
    map.SetTag(0x80830001, 0x85120102);
    const CZebNameIdMap& same = map;
    map = same;
    EXPECT_EQ(map.GetCount(), 0);
}

TEST_F(NameIdHelper, ListsEightyOneNames)
{
    CZebNameIdHelper helper;
    ASSERT_EQ(static_cast<ULONG>(helper), 81u);
    MAPINAMEID** names = helper;
    const GUID address = {0x00062004, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    const GUID own = {0x6B29A9C9, 0x8B5B, 0x4C6F, {0xB4, 0x93, 0x2E, 0x8C, 0x84, 0xA2, 0xF3, 0xF2}};
    for (ULONG i = 0; i < 81; ++i)
    {
        EXPECT_TRUE(*names[i]->lpguid == (i < 72 ? address : own)) << i;
        EXPECT_EQ(names[i]->ulKind, static_cast<ULONG>(MNID_ID)) << i;
        EXPECT_EQ(static_cast<ULONG>(names[i]->Kind.lID), helper.GetID(i)) << i;
    }
    EXPECT_TRUE(m_memory.IsRoot(names));
    EXPECT_EQ(m_memory.SizeOf(names), 81 * sizeof(MAPINAMEID*));
    EXPECT_EQ(m_memory.LiveRoots(), 1u);
}

TEST_F(NameIdHelper, TheRowsAreInTheirOrder)
{
    const CZebNameIdHelper helper;
    const ULONG expected[] = {
        0x8005, 0x8005, 0x8062, 0x8062, 0x80D8, 0x80D8, 0x8083, 0x8083, 0x8093, 0x8093, 0x80A3, 0x80A3, 0x8082, 0x8082,
        0x8092, 0x8092, 0x80A2, 0x80A2, 0x801B, 0x801B, 0x8046, 0x8046, 0x8049, 0x8049, 0x804A, 0x804A, 0x8048, 0x8048,
        0x8047, 0x8047, 0x8045, 0x8045, 0x801A, 0x801A, 0x801C, 0x801C, 0x8007, 0x8080, 0x8080, 0x8090, 0x8090, 0x80A0,
        0x80A0, 0x8022, 0x8534, 0x8534, 0x8535, 0x8535, 0x802B, 0x802B, 0x8084, 0x8082, 0x8094, 0x8092, 0x80A4, 0x80A2,
        0x8084, 0x8082, 0x8094, 0x8092, 0x80A4, 0x80A2, 0x8006, 0x8029, 0x8028, 0x8027, 0x8026, 0x3A27, 0x3A26, 0x3A2A,
        0x3A28, 0x3A29, 0x8901, 0x8902, 0x8903, 0x8904, 0x8905, 0x8906, 0x8907, 0x8956, 0x8957};
    ASSERT_EQ(std::size(expected), 81u);
    for (ULONG i = 0; i < 81; ++i)
    {
        EXPECT_EQ(helper.GetID(i), expected[i]) << i;
        EXPECT_EQ(helper.GetTag(i, 1), (expected[i] << 16) | 1) << i;
    }
}

TEST_F(NameIdHelper, EachRowHasItsType)
{
    const ULONG expected[] = {
        0x8005001E, 0x8005001F, 0x8062001E, 0x8062001F, 0x80D8001E, 0x80D8001F, 0x8083001E, 0x8083001F, 0x8093001E,
        0x8093001F, 0x80A3001E, 0x80A3001F, 0x8082001E, 0x8082001F, 0x8092001E, 0x8092001F, 0x80A2001E, 0x80A2001F,
        0x801B001E, 0x801B001F, 0x8046001E, 0x8046001F, 0x8049001E, 0x8049001F, 0x804A001E, 0x804A001F, 0x8048001E,
        0x8048001F, 0x8047001E, 0x8047001F, 0x8045001E, 0x8045001F, 0x801A001E, 0x801A001F, 0x801C001E, 0x801C001F,
        0x80071003, 0x8080001E, 0x8080001F, 0x8090001E, 0x8090001F, 0x80A0001E, 0x80A0001F, 0x80220003, 0x8534001E,
        0x8534001F, 0x8535001E, 0x8535001F, 0x802B001E, 0x802B001F, 0x8084001F, 0x8082001F, 0x8094001F, 0x8092001F,
        0x80A4001F, 0x80A2001F, 0x8084001E, 0x8082001E, 0x8094001E, 0x8092001E, 0x80A4001E, 0x80A2001E, 0x80060003,
        0x80290003, 0x80281003, 0x80271003, 0x80261003, 0x3A27001E, 0x3A26001E, 0x3A2A001E, 0x3A28001E, 0x3A29001E,
        0x89010014, 0x8902001E, 0x8903001E, 0x8904001E, 0x89050003, 0x8906101E, 0x89071102, 0x89560014, 0x89570102};
    ASSERT_EQ(std::size(expected), size_t{zeb::NamedPropCount});
    for (ULONG i = 0; i < zeb::NamedPropCount; ++i)
    {
        EXPECT_EQ(zeb::NamedProps[i].tag, expected[i]) << i;
    }
}

TEST_F(NameIdHelper, AnIndexTooLargeIsRefused)
{
    const CZebNameIdHelper helper;
    EXPECT_EQ(Thrown([&] { helper.GetID(81); }), E_INVALIDARG);
    EXPECT_EQ(Thrown([&] { helper.GetTag(0xFFFFFFFF, 1); }), E_INVALIDARG);
    EXPECT_EQ(helper.GetID(80), 0x8957u);
}

TEST_F(NameIdHelper, AFailedAllocationLeavesNothing)
{
    for (size_t n : {1u, 2u, 40u, 82u})
    {
        m_memory.FailAllocation(n);
        EXPECT_EQ(Thrown([] { CZebNameIdHelper helper; }), MAPI_E_NOT_ENOUGH_MEMORY) << n;
        EXPECT_EQ(m_memory.LiveRoots(), 0u) << n;
    }
}

TEST_F(NameIdMap, AFailedRemappingKeepsTheOld)
{
    bool failed = true;
    for (int after = 0; failed; ++after)
    {
        CZebNameIdMap map;
        map.SetTag(0x80830001, 0x85120102);
        failed = false;
        {
            const FailingNew failing(after);
            try
            {
                map.SetTag(0x80830001, 0x86000102);
            }
            catch (CZebException* exception)
            {
                failed = true;
                EXPECT_EQ(exception->GetResult(), MAPI_E_NOT_ENOUGH_MEMORY);
                exception->Delete();
            }
        }
        EXPECT_EQ(map.GetTag(0x80830102, true), failed ? 0x85120102 : 0x86000102) << after;
        EXPECT_GT(after, failed ? -1 : 0) << "the new direction allocates";
    }
}

TEST_F(NameIdMap, AFailedMappingLeavesNothing)
{
    CZebNameIdMap map;
    map.SetTag(0x80830001, 0x85120102);
    for (int after = 0; after < 20; ++after)
    {
        CZebNameIdMap changed;
        changed.SetTag(0x80830001, 0x85120102);
        bool failed = false;
        {
            const FailingNew failing(after);
            try
            {
                changed.SetTag(0x80840001, 0x86000102);
            }
            catch (CZebException* exception)
            {
                EXPECT_EQ(exception->GetResult(), MAPI_E_NOT_ENOUGH_MEMORY);
                exception->Delete();
                failed = true;
            }
        }
        EXPECT_EQ(changed.GetCount(), failed ? 1 : 2) << after;
        if (!failed)
        {
            EXPECT_GT(after, 1) << "both directions allocate";
            return;
        }
    }
    ADD_FAILURE() << "never mapped";
}
