#include "tests/zebapi/values/PropVal.h"

#include <cstring>
#include <string>
#include <type_traits>

namespace zeb::test
{

namespace
{

using PropVal = PropValTest;

/// A view that counts the checks made through its virtual operations.
class CountingView : public CZebOnePropVal
{
public:
    using CZebOnePropVal::CZebOnePropVal;
    using CZebOnePropVal::operator=;

    mutable int typeChecks = 0;
    mutable int validChecks = 0;

protected:
    void CheckValid() const override
    {
        ++validChecks;
        CZebOnePropVal::CheckValid();
    }
    void CheckType(ULONG type) const override
    {
        ++typeChecks;
        CZebOnePropVal::CheckType(type);
    }
};

/// A view that answers for the operations that others forward to.
class ForwardingView : public CZebOnePropVal
{
public:
    using CZebOnePropVal::CZebOnePropVal;
    using CZebOnePropVal::operator=;

    std::vector<std::string> assigned;
    SPropValue replacement = NumberOf(77);

    CZebOnePropVal& operator=(const char*) override { return Note("narrow text"); }
    CZebOnePropVal& operator=(const WCHAR*) override { return Note("wide text"); }
    CZebOnePropVal& operator=(const SPropValue& value) override
    {
        return Note("value of " + std::to_string(value.Value.l));
    }
    operator const SPropValue&() const override { return replacement; }
    operator LONG() const override { return 42; }
    CStringA String(bool errorAsText) const override { return errorAsText ? "as text 1" : "as text 0"; }
    ULONG GetTag() const override { return PROP_TAG(PT_BINARY, 0x1234); }
    bool operator==(const CZebOnePropVal& other) const override { return std::addressof(other) == this; }

private:
    static SPropValue NumberOf(LONG number)
    {
        SPropValue value = {};
        value.ulPropTag = PR_MESSAGE_SIZE;
        value.Value.l = number;
        return value;
    }
    CZebOnePropVal& Note(const std::string& what)
    {
        assigned.push_back(what);
        return *this;
    }
};

const WCHAR* const wideText = ZEBW("wide \u00e9");

} // namespace

TEST_F(PropVal, WithoutAValueThrowsBadValue)
{
    CZebOnePropVal none(nullptr, nullptr);
    SPropValue value = Tagged(PT_LONG);
    EXPECT_TRUE(none.IsEmpty());
    EXPECT_FALSE(none.StringConversionPossible());
    EXPECT_EQ(ThrownBy([&] { none.GetTag(); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none.GetType(); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none.GetPropID(); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none.String(true); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none.StringW(true); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<LONG>(none); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { CStringA text = none; }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none = LONG(1); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none = "text"; }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none = value; }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none.UseDefault(LONG(1)); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { none.UseDefault("x"); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { View(value).Set(none); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { (void)(none == none); }), MAPI_E_BAD_VALUE);
}

TEST_F(PropVal, OnlyErrorsAreEmpty)
{
    SPropValue error = Tagged(PT_ERROR);
    SPropValue number = Tagged(PT_LONG);
    EXPECT_TRUE(View(error).IsEmpty());
    EXPECT_FALSE(View(number).IsEmpty());
}

TEST_F(PropVal, GivesTagTypeAndIdentifier)
{
    SPropValue value = {};
    value.ulPropTag = PR_SUBJECT_A;
    EXPECT_EQ(View(value).GetTag(), ULONG{PR_SUBJECT_A});
    EXPECT_EQ(View(value).GetType(), ULONG{PT_STRING8});
    EXPECT_EQ(View(value).GetPropID(), 0x37u);
}

TEST_F(PropVal, WritesAndReadsEveryScalar)
{
    SPropValue value = Tagged(PT_I2);
    View(value) = SHORT(-5);
    EXPECT_EQ(value.Value.i, -5);
    EXPECT_EQ(static_cast<SHORT>(View(value)), -5);

    value = Tagged(PT_LONG);
    View(value) = LONG(-7);
    EXPECT_EQ(value.Value.l, -7);
    EXPECT_EQ(static_cast<LONG>(View(value)), -7);
    View(value) = ULONG(0xFFFFFFFE);
    EXPECT_EQ(static_cast<ULONG>(View(value)), 0xFFFFFFFEu);
    EXPECT_EQ(static_cast<LONG>(View(value)), -2);

    value = Tagged(PT_I8);
    View(value) = LONGLONG(-0x123456789AB);
    EXPECT_EQ(value.Value.li.QuadPart, -0x123456789AB);
    EXPECT_EQ(static_cast<LONGLONG>(View(value)), -0x123456789AB);

    value = Tagged(PT_BOOLEAN);
    View(value) = true;
    EXPECT_EQ(value.Value.b, 1);
    value.Value.b = 2;
    EXPECT_TRUE(static_cast<bool>(View(value)));
    View(value) = false;
    EXPECT_EQ(value.Value.b, 0);
    EXPECT_FALSE(static_cast<bool>(View(value)));

    value = Tagged(PT_SYSTIME);
    const FILETIME time = {0x89ABCDEF, 0x01234567};
    View(value) = time;
    const FILETIME& read = View(value);
    EXPECT_EQ(std::addressof(read), &value.Value.ft);
    EXPECT_EQ(std::memcmp(&read, &time, sizeof time), 0);
}

TEST_F(PropVal, PlainNumbersAreLongs)
{
    SPropValue value = Tagged(PT_LONG);
    View(value) = 7;
    EXPECT_EQ(value.Value.l, 7);
    View(value) = 0;
    EXPECT_EQ(value.Value.l, 0);
    View(value) = 8u;
    const int read = View(value);
    EXPECT_EQ(read, 8);
    EXPECT_EQ(View(value).UseDefault(5), 8);

    SPropValue wide = Tagged(PT_I8);
    View(wide) = 1LL << 40;
    const long long wideRead = View(wide);
    EXPECT_EQ(wideRead, 1LL << 40);
}

TEST_F(PropVal, AssigningALongToShortsThrows)
{
    SPropValue value = Tagged(PT_I2);
    value.Value.li.QuadPart = 0x1122334455667788;
    CZebOnePropVal view = View(value);
    EXPECT_EQ(ThrownBy([&] { view = LONG(7); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(value.Value.li.QuadPart, 0x1122334455667788);
    EXPECT_EQ(value.ulPropTag, Tagged(PT_I2).ulPropTag);
}

TEST_F(PropVal, EveryTypedOperationRefusesAnotherType)
{
    SPropValue value = Tagged(PT_OBJECT);
    CZebOnePropVal view = View(value);
    const SBinary binary = {};
    const FILETIME time = {};
    const auto refused = [&](auto&& body) { EXPECT_EQ(ThrownBy(body), MAPI_E_INVALID_TYPE); };
    refused([&] { (void)static_cast<SHORT>(view); });
    refused([&] { (void)static_cast<LONG>(view); });
    refused([&] { (void)static_cast<ULONG>(view); });
    refused([&] { (void)static_cast<LONGLONG>(view); });
    refused([&] { (void)static_cast<bool>(view); });
    refused([&] { (void)static_cast<const FILETIME&>(view); });
    refused([&] { (void)static_cast<const SBinary&>(view); });
    refused([&] { (void)static_cast<const char*>(view); });
    refused([&] { (void)static_cast<const WCHAR*>(view); });
    refused([&] { CStringA text = view; });
    refused([&] { CStringW text = view; });
    refused([&] { view = SHORT(1); });
    refused([&] { view = LONG(1); });
    refused([&] { view = ULONG(1); });
    refused([&] { view = LONGLONG(1); });
    refused([&] { view = true; });
    refused([&] { view = time; });
    refused([&] { view = binary; });
    refused([&] { view = "x"; });
    refused([&] { view = ZEBW("x"); });
    refused([&] { view = CStringA("x"); });
    refused([&] { view = CStringW(ZEBW("x")); });
    EXPECT_EQ(memory.Allocations(), 1u) << "only the test's parent";
}

TEST_F(PropVal, TextIsCopiedUnderTheParent)
{
    SPropValue value = Tagged(PT_STRING8);
    View(value) = "abc";
    EXPECT_STREQ(value.Value.lpszA, "abc");
    EXPECT_EQ(memory.SizeOf(value.Value.lpszA), 4u);
    EXPECT_FALSE(memory.IsRoot(value.Value.lpszA));
    View(value) = CStringA("");
    EXPECT_STREQ(value.Value.lpszA, "");
    const char* borrowed = View(value);
    EXPECT_EQ(borrowed, value.Value.lpszA);

    SPropValue wide = Tagged(PT_UNICODE);
    View(wide) = wideText;
    EXPECT_EQ(std::basic_string<WCHAR>(wide.Value.lpszW), wideText);
    EXPECT_EQ(memory.SizeOf(wide.Value.lpszW), 14u);
    View(wide) = CStringW(ZEBW("x"));
    EXPECT_EQ(memory.SizeOf(wide.Value.lpszW), 4u);
    const WCHAR* wideBorrowed = View(wide);
    EXPECT_EQ(wideBorrowed, wide.Value.lpszW);
}

TEST_F(PropVal, ReplacedTextStaysWithTheParent)
{
    SPropValue value = Tagged(PT_STRING8);
    View(value) = "first";
    const char* first = value.Value.lpszA;
    View(value) = "second";
    EXPECT_STREQ(first, "first");
    // From its own text: nothing is freed, so nothing freed is read.
    View(value) = value.Value.lpszA + 1;
    EXPECT_STREQ(value.Value.lpszA, "econd");
}

TEST_F(PropVal, BinaryIsCopiedUnderTheParent)
{
    SPropValue value = Tagged(PT_BINARY);
    CZebBinary source("0102FF");
    View(value) = static_cast<const SBinary&>(source);
    EXPECT_EQ(value.Value.bin.cb, 3u);
    EXPECT_NE(value.Value.bin.lpb, static_cast<unsigned char*>(source));
    EXPECT_FALSE(memory.IsRoot(value.Value.bin.lpb));
    const SBinary& borrowed = View(value);
    EXPECT_EQ(std::addressof(borrowed), &value.Value.bin);
    View(value) = CZebBinary("0A");
    EXPECT_EQ(View(value).String(false), "0A");
}

TEST_F(PropVal, AllocatingWritesNeedAParent)
{
    SPropValue text = Tagged(PT_STRING8);
    SPropValue wide = Tagged(PT_UNICODE);
    SPropValue binary = Tagged(PT_BINARY);
    const SBinary bytes = {};
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(&text, nullptr) = "x"; }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(&wide, nullptr) = ZEBW("x"); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(&binary, nullptr) = bytes; }), MAPI_E_INVALID_OBJECT);
    // The type is checked first.
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(&text, nullptr) = ZEBW("x"); }), MAPI_E_INVALID_TYPE);
}

TEST_F(PropVal, NullTextIsRefused)
{
    SPropValue text = Tagged(PT_STRING8);
    EXPECT_EQ(ThrownBy([&] { View(text) = static_cast<const char*>(nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(text.Value.lpszA, nullptr);
}

TEST_F(PropVal, FailedAllocationLeavesTheValueAlone)
{
    SPropValue text = Tagged(PT_STRING8);
    View(text) = "old";
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { View(text) = "new"; }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_STREQ(text.Value.lpszA, "old");
    SPropValue other = Tagged(PT_STRING8);
    View(other) = "other";
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { View(text).Set(View(other)); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_STREQ(text.Value.lpszA, "old");
}

TEST_F(PropVal, SetCopiesTagAndValueDeeply)
{
    SPropValue source = {};
    source.ulPropTag = PR_SUBJECT_A;
    View(source) = "subject";
    SPropValue target = Tagged(PT_LONG);
    const CZebOnePropVal from = View(source);
    View(target).Set(from);
    EXPECT_EQ(target.ulPropTag, ULONG{PR_SUBJECT_A});
    EXPECT_STREQ(target.Value.lpszA, "subject");
    EXPECT_NE(target.Value.lpszA, source.Value.lpszA);
    EXPECT_EQ(utilities.lastParent, parent);
}

TEST_F(PropVal, WithoutParentOnlyScalarsAreCopied)
{
    SPropValue number = Tagged(PT_LONG);
    number.Value.l = 9;
    SPropValue target = {};
    CZebOnePropVal(&target, nullptr) = number;
    EXPECT_EQ(target.Value.l, 9);
    EXPECT_EQ(target.ulPropTag, number.ulPropTag);

    SPropValue text = Tagged(PT_STRING8);
    View(text) = "x";
    EXPECT_NE(ThrownBy([&] { CZebOnePropVal(&target, nullptr) = text; }), S_OK);
    EXPECT_EQ(target.Value.l, 9);
}

TEST_F(PropVal, CopyingAViewKeepsTheValue)
{
    SPropValue value = Tagged(PT_LONG);
    SPropValue other = Tagged(PT_LONG);
    CZebOnePropVal a = View(value);
    CZebOnePropVal b(a);
    CZebOnePropVal c = View(other);
    c = a;
    b = LONG(3);
    EXPECT_EQ(value.Value.l, 3);
    c = LONG(4);
    EXPECT_EQ(value.Value.l, 4);
    EXPECT_EQ(other.Value.l, 0);
    EXPECT_EQ(utilities.copies, 0);
}

TEST_F(PropVal, TheWholeValueIsAlwaysRead)
{
    SPropValue value = Tagged(PT_OBJECT);
    const CZebOnePropVal view = View(value);
    EXPECT_EQ(std::addressof(static_cast<const SPropValue&>(view)), &value);
}

TEST_F(PropVal, DefaultIsUsedForErrorsOnly)
{
    SPropValue error = Tagged(PT_ERROR);
    SPropValue number = Tagged(PT_LONG);
    SPropValue text = Tagged(PT_STRING8);
    number.Value.l = 9;
    View(text) = "text";
    EXPECT_EQ(View(error).UseDefault(LONG(5)), 5);
    EXPECT_EQ(View(number).UseDefault(LONG(5)), 9);
    EXPECT_EQ(ThrownBy([&] { View(text).UseDefault(LONG(5)); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(View(error).UseDefault(ULONG(6)), 6u);
    EXPECT_EQ(View(number).UseDefault(ULONG(6)), 9u);
    EXPECT_EQ(View(error).UseDefault(LONGLONG(7)), 7);
    EXPECT_TRUE(View(error).UseDefault(true));
    EXPECT_STREQ(View(error).UseDefault("none"), "none");
    EXPECT_STREQ(View(text).UseDefault("none"), "text");
    EXPECT_EQ(View(error).UseDefault(CStringA("none")), "none");
    EXPECT_EQ(View(text).UseDefault(CStringA("none")), "text");
    EXPECT_EQ(View(error).UseDefault(CStringW(wideText)), wideText);
    EXPECT_EQ(View(text).UseDefault(CStringW(wideText)), ZEBW("text"));
    const WCHAR* wide = View(error).UseDefault(wideText);
    EXPECT_EQ(wide, wideText);
}

TEST_F(PropVal, DefaultYieldsToAProperValue)
{
    SPropValue wide = Tagged(PT_I8);
    wide.Value.li.QuadPart = 1LL << 40;
    EXPECT_EQ(View(wide).UseDefault(LONGLONG(7)), 1LL << 40);
    SPropValue truth = Tagged(PT_BOOLEAN);
    EXPECT_FALSE(View(truth).UseDefault(true));
    SPropValue text = Tagged(PT_UNICODE);
    View(text) = ZEBW("text");
    EXPECT_EQ(View(text).UseDefault(wideText), text.Value.lpszW);
    EXPECT_EQ(View(text).UseDefault(CStringW(wideText)), ZEBW("text"));
    EXPECT_EQ(View(text).UseDefault(CStringA("none")), "text");
    EXPECT_EQ(ThrownBy([&] { View(text).UseDefault("none"); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { View(wide).UseDefault(CStringA("none")); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { View(wide).UseDefault(true); }), MAPI_E_INVALID_TYPE);
}

TEST_F(PropVal, OverriddenOperationsApplyToTheOthers)
{
    SPropValue value = Tagged(PT_LONG);
    SPropValue other = Tagged(PT_LONG);
    ForwardingView view(&value, parent);
    view = CStringA("narrow");
    view = CStringW(ZEBW("wide"));
    view.Set(ForwardingView(&other, nullptr));
    EXPECT_EQ(view.assigned, (std::vector<std::string>{"narrow text", "wide text", "value of 77"}));
    EXPECT_EQ(view.StringW(true), ZEBW("as text 1"));
    EXPECT_EQ(view.GetType(), ULONG{PT_BINARY});
    EXPECT_EQ(view.GetPropID(), 0x1234u);
    EXPECT_FALSE(view != view);
    EXPECT_TRUE(view != View(other));
    EXPECT_EQ(view.UseDefault(LONG(1)), 42);
}

TEST_F(PropVal, OverriddenChecksApplyToTypedOperations)
{
    SPropValue value = Tagged(PT_LONG);
    CountingView view(&value, nullptr);
    view = LONG(1);
    (void)static_cast<LONG>(view);
    (void)view.UseDefault(LONG(1));
    EXPECT_EQ(view.typeChecks, 3);
    EXPECT_EQ(view.validChecks, 3);
    (void)view.GetTag();
    (void)view.String(false);
    EXPECT_EQ(view.validChecks, 5);
}

TEST_F(PropVal, OwnerIsFilledThroughItsAddress)
{
    CZebPropVal owner;
    EXPECT_TRUE(owner.IsEmpty());
    for (LONG number = 1; number <= 2; ++number)
    {
        SPropValue** slot = &owner;
        EXPECT_EQ(*slot, nullptr);
        *slot = static_cast<SPropValue*>(memory.Allocate(sizeof(SPropValue)));
        **slot = Tagged(PT_LONG);
        (*slot)->Value.l = number;
        EXPECT_EQ(static_cast<LONG>(owner), number);
        EXPECT_EQ(memory.LiveRoots(), 2u) << "the test's parent and this value";
    }
    owner.Empty();
    EXPECT_TRUE(owner.IsEmpty());
    EXPECT_EQ(memory.LiveRoots(), 1u);
}

TEST_F(PropVal, OwnerRefusesAllocatedValues)
{
    CZebPropVal owner;
    SPropValue** slot = &owner;
    *slot = static_cast<SPropValue*>(memory.Allocate(sizeof(SPropValue)));
    **slot = Tagged(PT_STRING8);
    EXPECT_EQ(ThrownBy([&] { owner = "text"; }), MAPI_E_INVALID_OBJECT);
    (*slot)->ulPropTag = Tagged(PT_LONG).ulPropTag;
    owner = LONG(4);
    EXPECT_EQ(static_cast<LONG>(owner), 4);
}

TEST_F(PropVal, OwnerIsNeitherCopiedNorRebound)
{
    static_assert(!std::is_copy_constructible_v<CZebPropVal>);
    static_assert(!std::is_assignable_v<CZebPropVal&, const CZebPropVal&>);
    static_assert(!std::is_assignable_v<CZebPropVal&, const CZebOnePropVal&>);
    static_assert(std::is_assignable_v<CZebPropVal&, const SPropValue&>);
    SUCCEED();
}

TEST_F(PropVal, AssigningThroughTheBaseCopies)
{
    SPropValue text = Tagged(PT_STRING8);
    View(text) = "text";
    CZebPropVal owner;
    Fill(owner, Tagged(PT_LONG));
    CZebOnePropVal& base = owner;
    base = View(text);
    EXPECT_STREQ(static_cast<const char*>(owner), "text");
    EXPECT_NE(static_cast<const char*>(owner), text.Value.lpszA);
    EXPECT_EQ(memory.LiveRoots(), 2u) << "the test's parent and the copy; the old value is freed";
    base = owner;
    EXPECT_STREQ(static_cast<const char*>(owner), "text") << "of itself it keeps the value";
    base = CZebOnePropVal(nullptr, nullptr);
    EXPECT_TRUE(owner.IsEmpty());
    EXPECT_EQ(memory.LiveRoots(), 1u);
    base = View(text);
    EXPECT_STREQ(static_cast<const char*>(owner), "text");
}

TEST_F(PropVal, OwnersFreeTheirOwnValues)
{
    CZebPropVal first;
    Fill(first, Tagged(PT_LONG)).Value.l = 1;
    {
        CZebPropVal second;
        Fill(second, Tagged(PT_LONG)).Value.l = 2;
        static_cast<CZebOnePropVal&>(first) = second;
    }
    EXPECT_EQ(static_cast<LONG>(first), 2);
}

TEST_F(PropVal, AnOwnerCopiesItsOwnBuffer)
{
    CZebPropVal owner;
    SPropValue& held = Fill(owner, Tagged(PT_LONG));
    auto* inside = static_cast<SPropValue*>(memory.AllocateUnder(&held, sizeof(SPropValue)));
    *inside = Tagged(PT_UNICODE);
    CZebOnePropVal(inside, &held) = ZEBW("inside");
    static_cast<CZebOnePropVal&>(owner) = CZebOnePropVal(inside, nullptr);
    EXPECT_EQ(static_cast<CStringW>(owner), ZEBW("inside"));
    EXPECT_EQ(memory.LiveRoots(), 2u);
}

TEST_F(PropVal, FailedCopiesKeepTheOwnersValue)
{
    SPropValue text = Tagged(PT_STRING8);
    View(text) = "text";
    CZebPropVal owner;
    Fill(owner, Tagged(PT_LONG)).Value.l = 7;
    CZebOnePropVal& base = owner;
    for (const size_t failing : {1, 2})
    {
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { base = View(text); }), MAPI_E_NOT_ENOUGH_MEMORY) << failing;
        EXPECT_EQ(static_cast<LONG>(owner), 7);
        EXPECT_EQ(memory.LiveRoots(), 2u);
    }
    SPropValue object = Tagged(PT_OBJECT);
    EXPECT_EQ(ThrownBy([&] { base = View(object); }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(static_cast<LONG>(owner), 7);
}

TEST_F(PropVal, SPropValuesFillAnOwner)
{
    CZebPropVal owner;
    SPropValue number = Tagged(PT_I8);
    number.Value.li.QuadPart = 1LL << 40;
    EXPECT_EQ(ThrownBy([&] { owner = number; }), MAPI_E_BAD_VALUE) << "there is no value to fill";
    SPropValue& held = Fill(owner, Tagged(PT_LONG));
    owner = number;
    EXPECT_EQ(held.ulPropTag, number.ulPropTag);
    EXPECT_EQ(static_cast<LONGLONG>(owner), 1LL << 40);
    EXPECT_EQ(utilities.lastParent, nullptr);
    SPropValue text = Tagged(PT_STRING8);
    View(text) = "text";
    EXPECT_EQ(ThrownBy([&] { owner = text; }), MAPI_E_INVALID_PARAMETER) << "nothing can be allocated for it";
    EXPECT_EQ(static_cast<LONGLONG>(owner), 1LL << 40);
}

TEST_F(PropVal, NullWideTextReadsAsEmpty)
{
    SPropValue value = Tagged(PT_UNICODE);
    EXPECT_EQ(View(value).String(false), "");
    EXPECT_EQ(View(value).StringW(false), ZEBW(""));
    EXPECT_EQ(static_cast<CStringA>(View(value)), "");
    EXPECT_EQ(static_cast<CStringW>(View(value)), ZEBW(""));
    EXPECT_EQ(View(value).UseDefault(CStringW(wideText)), ZEBW(""));
    const WCHAR* none = View(value);
    EXPECT_EQ(none, nullptr);
    View(value) = ZEBW("text");
    EXPECT_EQ(ThrownBy([&] { View(value) = static_cast<const WCHAR*>(nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(static_cast<CStringW>(View(value)), ZEBW("text"));
}

TEST_F(PropVal, NullPointersAreCopiedUnchanged)
{
    for (const ULONG type : {PT_STRING8, PT_UNICODE, PT_CLSID, PT_BINARY, PT_MV_I2, PT_MV_LONG, PT_MV_STRING8,
                             PT_MV_UNICODE, PT_MV_BINARY})
    {
        SPropValue source = Tagged(type);
        SPropValue target = Tagged(PT_LONG);
        View(target) = source;
        EXPECT_EQ(std::memcmp(&target, &source, sizeof source), 0) << type;
    }
    EXPECT_EQ(utilities.copies, 0) << "MAPI reads through the null text of a value";
}

} // namespace zeb::test
