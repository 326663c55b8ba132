#include "zebapi/Restrict.h"

#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"
#include "tests/support/doubles/MapiUtilities.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

namespace zeb::test
{

namespace
{

class Restriction : public ::testing::Test
{
protected:
    Restriction() { owner.Allocate(); }

    SRestriction* Root() { return owner; }

    MapiMemory memory;
    MapiUtilities utilities;
    CZebRestrictionAllocator owner;
};

} // namespace

TEST_F(Restriction, OwnerWithoutATreeBuildsNothing)
{
    CZebRestrictionAllocator none;
    EXPECT_TRUE(none.IsEmpty());
    const auto refuses = [](auto&& body) { EXPECT_EQ(ThrownBy(body), MAPI_E_INVALID_OBJECT); };
    refuses([&] { none.CreateAnd(1); });
    refuses([&] { none.CreateOr(1); });
    refuses([&] { none.CreateNot(); });
    refuses([&] { none.CreateSubRestriction(PR_MESSAGE_RECIPIENTS); });
    refuses([&] { none.CreateProp(PR_SUBJECT_A, RELOP_EQ); });
    refuses([&] { none.CreateExist(PR_SUBJECT_A); });
    refuses([&] { none.CreateCompareProps(PR_SUBJECT_A, PR_BODY_A, RELOP_EQ); });
    refuses([&] { none.CreateContentA(PR_SUBJECT_A, "x", FL_SUBSTRING); });
    refuses([&] { none.CreateContentW(PR_SUBJECT_W, ZEBW("x"), FL_SUBSTRING); });
    refuses([&] { none.CreateContent(PR_SUBJECT_A, "x", FL_SUBSTRING); });
    refuses([&] { none.CreateBitMask(PR_MESSAGE_FLAGS, 1, BMR_EQZ); });
    refuses([&] { none[0]; });
    refuses([&] { none[-1]; });
    refuses([&] { none[ULONG{0}]; });
    refuses([&] { (void)static_cast<SRestriction*>(none); });
}

TEST_F(Restriction, FreshNodeIsAnEmptyAnd)
{
    EXPECT_FALSE(owner.IsEmpty());
    EXPECT_EQ(Root()->rt, ULONG{RES_AND});
    EXPECT_EQ(Root()->res.resAnd.cRes, 0u);
    EXPECT_EQ(ThrownBy([&] { owner[0]; }), E_INVALIDARG);
}

TEST_F(Restriction, AndOrChildrenShareOneBlock)
{
    owner.CreateAnd(3);
    SRestriction* node = Root();
    EXPECT_EQ(node->rt, ULONG{RES_AND});
    EXPECT_EQ(node->res.resAnd.cRes, 3u);
    EXPECT_EQ(memory.SizeOf(node->res.resAnd.lpRes), 96u);
    EXPECT_FALSE(memory.IsRoot(node->res.resAnd.lpRes));
    EXPECT_EQ(static_cast<SRestriction*>(owner[2]), node->res.resAnd.lpRes + 2);
    EXPECT_EQ(static_cast<SRestriction*>(owner[ULONG{1}]), node->res.resAnd.lpRes + 1);
    EXPECT_EQ(ThrownBy([&] { owner[3]; }), E_INVALIDARG);

    owner[1].CreateOr(2);
    EXPECT_EQ(node->res.resAnd.lpRes[1].rt, ULONG{RES_OR});
    EXPECT_EQ(node->res.resAnd.lpRes[1].res.resOr.cRes, 2u);
    owner[1][1].CreateExist(PR_SUBJECT_A);
    EXPECT_EQ(node->res.resAnd.lpRes[1].res.resOr.lpRes[1].rt, ULONG{RES_EXIST});
}

TEST_F(Restriction, AndOfNoChildrenIsValid)
{
    owner.CreateAnd(0);
    EXPECT_EQ(Root()->rt, ULONG{RES_AND});
    EXPECT_EQ(ThrownBy([&] { owner[0]; }), E_INVALIDARG);
}

TEST_F(Restriction, OnlyAndOrHaveChildren)
{
    EXPECT_EQ(ThrownBy([&] { owner[-1]; }), E_INVALIDARG);
    owner.CreateContentA(PR_SUBJECT_A, "x", FL_SUBSTRING);
    EXPECT_EQ(ThrownBy([&] { owner[0]; }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { owner[-1]; }), E_INVALIDARG);
    owner.CreateNot();
    EXPECT_EQ(ThrownBy([&] { owner[0]; }), MAPI_E_INVALID_OBJECT);
}

TEST_F(Restriction, NotHandsOutItsChild)
{
    CZebRestriction child = owner.CreateNot();
    EXPECT_EQ(Root()->rt, ULONG{RES_NOT});
    EXPECT_EQ(Root()->res.resNot.lpRes, static_cast<SRestriction*>(child));
    child.CreateBitMask(PR_MESSAGE_FLAGS, MSGFLAG_READ, BMR_NEZ);
    EXPECT_EQ(Root()->res.resNot.lpRes->rt, ULONG{RES_BITMASK});
    EXPECT_EQ(Root()->res.resNot.lpRes->res.resBitMask.ulMask, ULONG{MSGFLAG_READ});
    EXPECT_EQ(Root()->res.resNot.lpRes->res.resBitMask.relBMR, ULONG{BMR_NEZ});
    EXPECT_EQ(Root()->res.resNot.lpRes->res.resBitMask.ulPropTag, ULONG{PR_MESSAGE_FLAGS});
}

TEST_F(Restriction, SubRestrictionHandsOutItsCondition)
{
    CZebRestriction child = owner.CreateSubRestriction(PR_MESSAGE_ATTACHMENTS);
    EXPECT_EQ(Root()->rt, ULONG{RES_SUBRESTRICTION});
    EXPECT_EQ(Root()->res.resSub.ulSubObject, ULONG{PR_MESSAGE_ATTACHMENTS});
    EXPECT_EQ(Root()->res.resSub.lpRes, static_cast<SRestriction*>(child));
    child.CreateExist(PR_ATTACH_SIZE);
    EXPECT_EQ(Root()->res.resSub.lpRes->rt, ULONG{RES_EXIST});
    EXPECT_EQ(ThrownBy([&] { owner[0]; }), MAPI_E_INVALID_OBJECT);
}

TEST_F(Restriction, PropertyHandsOutItsValue)
{
    CZebOnePropVal value = owner.CreateProp(PR_MESSAGE_SIZE, RELOP_GE);
    value = LONG(100);
    const SPropertyRestriction& property = Root()->res.resProperty;
    EXPECT_EQ(Root()->rt, ULONG{RES_PROPERTY});
    EXPECT_EQ(property.relop, ULONG{RELOP_GE});
    EXPECT_EQ(property.ulPropTag, ULONG{PR_MESSAGE_SIZE});
    EXPECT_EQ(property.lpProp->ulPropTag, ULONG{PR_MESSAGE_SIZE});
    EXPECT_EQ(property.lpProp->Value.l, 100);

    owner.CreateProp(PR_SUBJECT_A, RELOP_EQ) = "text";
    EXPECT_STREQ(Root()->res.resProperty.lpProp->Value.lpszA, "text");
    EXPECT_FALSE(memory.IsRoot(Root()->res.resProperty.lpProp->Value.lpszA));
}

TEST_F(Restriction, ExistLeavesTheReservedFieldsZero)
{
    owner.CreateExist(PR_SUBJECT_A);
    EXPECT_EQ(Root()->rt, ULONG{RES_EXIST});
    EXPECT_EQ(Root()->res.resExist.ulPropTag, ULONG{PR_SUBJECT_A});
    EXPECT_EQ(Root()->res.resExist.ulReserved1, 0u);
    EXPECT_EQ(Root()->res.resExist.ulReserved2, 0u);
}

TEST_F(Restriction, ComparesTwoProperties)
{
    owner.CreateCompareProps(PR_SUBJECT_A, PR_BODY_A, RELOP_NE);
    EXPECT_EQ(Root()->rt, ULONG{RES_COMPAREPROPS});
    EXPECT_EQ(Root()->res.resCompareProps.ulPropTag1, ULONG{PR_SUBJECT_A});
    EXPECT_EQ(Root()->res.resCompareProps.ulPropTag2, ULONG{PR_BODY_A});
    EXPECT_EQ(Root()->res.resCompareProps.relop, ULONG{RELOP_NE});
}

TEST_F(Restriction, ContentCopiesTheWholeText)
{
    const std::string text(300, 'x');
    owner.CreateContent(PR_SUBJECT_A, text.c_str(), FL_PREFIX | FL_IGNORECASE);
    const SContentRestriction& content = Root()->res.resContent;
    EXPECT_EQ(Root()->rt, ULONG{RES_CONTENT});
    EXPECT_EQ(content.ulFuzzyLevel, ULONG{FL_PREFIX | FL_IGNORECASE});
    EXPECT_EQ(content.ulPropTag, ULONG{PR_SUBJECT_A});
    EXPECT_EQ(content.lpProp->ulPropTag, ULONG{PR_SUBJECT_A});
    EXPECT_EQ(content.lpProp->Value.lpszA, text);
    const char* copy = content.lpProp->Value.lpszA;
    EXPECT_EQ(memory.SizeOf(copy), 301u);
    owner.Free();
    EXPECT_EQ(memory.SizeOf(copy), 0u);

    owner.Allocate();
    owner.CreateContentW(PR_SUBJECT_W, ZEBW("wide"), FL_SUBSTRING);
    EXPECT_EQ(std::basic_string<WCHAR>(Root()->res.resContent.lpProp->Value.lpszW), ZEBW("wide"));
}

TEST_F(Restriction, FailedContentLeavesTheNodeAlone)
{
    owner.CreateExist(PR_ENTRYID);
    EXPECT_EQ(ThrownBy([&] { owner.CreateContentA(PR_SUBJECT_A, nullptr, 0); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(ThrownBy([&] { owner.CreateContentW(PR_SUBJECT_W, nullptr, 0); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(ThrownBy([&] { owner.CreateContentA(PR_SUBJECT_W, "x", 0); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { owner.CreateContentW(PR_SUBJECT_A, ZEBW("x"), 0); }), MAPI_E_INVALID_TYPE);
    for (size_t failing = 1; failing <= 2; ++failing)
    {
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { owner.CreateContentA(PR_SUBJECT_A, "x", 0); }), MAPI_E_NOT_ENOUGH_MEMORY);
    }
    EXPECT_EQ(Root()->rt, ULONG{RES_EXIST});
    EXPECT_EQ(Root()->res.resExist.ulPropTag, ULONG{PR_ENTRYID});
}

TEST_F(Restriction, FailedAllocationsLeaveTheNodeAlone)
{
    owner.CreateExist(PR_ENTRYID);
    const auto fails = [&](auto&& body)
    {
        memory.FailAllocation(1);
        EXPECT_EQ(ThrownBy(body), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(Root()->rt, ULONG{RES_EXIST});
    };
    fails([&] { owner.CreateAnd(1); });
    fails([&] { owner.CreateOr(1); });
    fails([&] { owner.CreateNot(); });
    fails([&] { owner.CreateSubRestriction(PR_MESSAGE_RECIPIENTS); });
    fails([&] { owner.CreateProp(PR_SUBJECT_A, 0); });
}

TEST_F(Restriction, ImpossiblyManyChildrenAreRefused)
{
    const size_t before = memory.Allocations();
    EXPECT_EQ(ThrownBy([&] { owner.CreateAnd(0x08000000); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ThrownBy([&] { owner.CreateOr(0xFFFFFFFF); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.Allocations(), before);
}

TEST_F(Restriction, ReplacedNodesStayInTheTree)
{
    owner.CreateAnd(2);
    SRestriction* first = Root()->res.resAnd.lpRes;
    owner.CreateExist(PR_SUBJECT_A);
    EXPECT_EQ(memory.SizeOf(first), 64u);
    owner.Free();
    EXPECT_EQ(memory.SizeOf(first), 0u);
    EXPECT_TRUE(owner.IsEmpty());
    EXPECT_EQ(memory.LiveRoots(), 0u);
    owner.Free();
}

TEST_F(Restriction, AllocatingAgainFreesTheFirstTree)
{
    owner.CreateAnd(2);
    owner.Allocate();
    EXPECT_EQ(memory.LiveRoots(), 1u);
    EXPECT_EQ(Root()->res.resAnd.cRes, 0u);
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { owner.Allocate(); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_TRUE(owner.IsEmpty());
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

TEST_F(Restriction, OwnOperationsGoThroughTheirSlots)
{
    class Overriding : public CZebRestrictionAllocator
    {
    public:
        void CheckValid() const override
        {
            calls += "CheckValid ";
            CZebRestrictionAllocator::CheckValid();
        }
        void CreateContentA(ULONG propTag, const char* text, ULONG fuzzyLevel) override
        {
            calls += "CreateContentA ";
            CZebRestrictionAllocator::CreateContentA(propTag, text, fuzzyLevel);
        }
        CZebRestriction operator[](ULONG index) override
        {
            calls += "[] ";
            return CZebRestrictionAllocator::operator[](index);
        }
        using CZebRestrictionAllocator::operator[];
        void Free() override
        {
            calls += "Free ";
            CZebRestrictionAllocator::Free();
            EXPECT_EQ(m_base, nullptr);
            EXPECT_EQ(m_node, nullptr);
        }
        std::string Calls() { return std::exchange(calls, std::string()); }

        mutable std::string calls;
    };
    Overriding tree;
    tree.Allocate();
    EXPECT_EQ(tree.Calls(), "Free ");
    tree.CreateContent(PR_SUBJECT_A, "x", FL_SUBSTRING);
    EXPECT_EQ(tree.Calls(), "CreateContentA CheckValid ");
    tree.CreateAnd(1);
    tree.CreateOr(1);
    EXPECT_EQ(tree.Calls(), "CheckValid CheckValid ");
    tree[0];
    EXPECT_EQ(tree.Calls(), "CheckValid [] CheckValid ");
    (void)static_cast<SRestriction*>(tree);
    tree.CreateNot();
    tree.CreateProp(PR_SUBJECT_A, RELOP_EQ);
    tree.CreateExist(PR_SUBJECT_A);
    tree.CreateCompareProps(PR_SUBJECT_A, PR_BODY_A, RELOP_EQ);
    tree.CreateContentW(PR_SUBJECT_W, ZEBW("x"), FL_SUBSTRING);
    tree.CreateBitMask(PR_MESSAGE_FLAGS, 1, BMR_EQZ);
    EXPECT_EQ(tree.Calls(), "CheckValid CheckValid CheckValid CheckValid CheckValid CheckValid CheckValid ");
    tree.Free();
    EXPECT_EQ(tree.Calls(), "Free ");
}

TEST_F(Restriction, ViewWithoutATreeBuildsNothing)
{
    class Loose : public CZebRestriction
    {
    public:
        explicit Loose(SRestriction* node)
            : CZebRestriction(node, nullptr)
        {
        }
    };
    Loose view(Root());
    EXPECT_FALSE(view.IsEmpty());
    EXPECT_EQ(ThrownBy([&] { view.CreateExist(PR_SUBJECT_A); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<SRestriction*>(view); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(Root()->rt, ULONG{RES_AND});
}

TEST_F(Restriction, OwnerTakesNoAssignment)
{
    static_assert(!std::is_copy_constructible_v<CZebRestrictionAllocator>);
    CZebRestrictionAllocator other;
    other.Allocate();
    CZebRestriction view(other);
    SRestriction* before = owner;
    EXPECT_EQ(ThrownBy([&] { owner = view; }), E_INVALIDARG);
    EXPECT_EQ(ThrownBy([&] { owner = other; }), E_INVALIDARG);
    EXPECT_EQ(ThrownBy([&] { static_cast<CZebRestriction&>(owner) = view; }), E_INVALIDARG);
    EXPECT_EQ(Root(), before);
}

TEST_F(Restriction, ViewsCopyWhatTheyLookAt)
{
    CZebRestriction view(owner);
    owner.CreateAnd(2);
    CZebRestriction child = owner[0];
    child = view;
    EXPECT_EQ(static_cast<SRestriction*>(child), Root());
}

TEST_F(Restriction, EveryKindNestsTenThousandDeep)
{
    CZebRestriction node(owner);
    for (int depth = 0; depth < 10000; ++depth)
    {
        if (depth % 3 == 0)
        {
            node = node.CreateNot();
            continue;
        }
        depth % 3 == 1 ? node.CreateAnd(2) : node.CreateOr(2);
        node[0].CreateProp(PR_MESSAGE_SIZE, RELOP_GE) = static_cast<LONG>(depth);
        CZebRestriction copy(node[1]);
        node = copy;
    }
    node.CreateContentA(PR_SUBJECT_A, "bottom", FL_FULLSTRING);
    EXPECT_STREQ(static_cast<SRestriction*>(node)->res.resContent.lpProp->Value.lpszA, "bottom");
    owner.Free();
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

TEST_F(Restriction, NestsAsDeepAsHostsNeed)
{
    CZebRestriction node(owner);
    for (int depth = 0; depth < 10000; ++depth)
    {
        node = node.CreateNot();
    }
    node.CreateExist(PR_SUBJECT_A);
    const SRestriction* walked = Root();
    int depth = 0;
    for (; walked->rt == RES_NOT; walked = walked->res.resNot.lpRes)
    {
        ++depth;
    }
    EXPECT_EQ(depth, 10000);
    EXPECT_EQ(walked->rt, ULONG{RES_EXIST});
}

TEST_F(Restriction, MissingChildrenAreNotHandedOut)
{
    CZebRestrictionAllocator tree;
    tree.Allocate();
    SRestriction* node = tree;
    node->rt = RES_OR;
    node->res.resOr.cRes = 3;
    EXPECT_EQ(ThrownBy([&] { tree[ULONG{1}]; }), E_INVALIDARG);
}

} // namespace zeb::test
