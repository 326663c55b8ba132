#include "zebapi/Row.h"

#include "tests/support/Context.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

namespace zeb::test
{

namespace
{

class Row : public ::testing::Test
{
protected:
    Row()
    {
        Set(0, PR_SUBJECT_A).lpszA = subject;
        Set(1, PROP_TAG(PT_ERROR, PROP_ID(PR_DISPLAY_NAME))).err = MAPI_E_NOT_FOUND;
        Set(2, PR_BODY_A).lpszA = empty;
        Set(3, PR_MESSAGE_SIZE).l = 0;
        Set(4, PROP_TAG(PT_UNICODE, 0x6000)).lpszW = wideEmpty;
        Set(5, PROP_TAG(PT_NULL, 0x6001));
        Set(6, PROP_TAG(PT_UNSPECIFIED, 0x6002));
        Set(7, PROP_TAG(PT_UNICODE, 0x6003)).lpszW = wide;
        Set(8, PROP_TAG(PT_STRING8, 0x6004)).lpszA = nullptr;
        Set(9, PROP_TAG(PT_UNICODE, 0x6005)).lpszW = nullptr;
        Set(10, PROP_TAG(PT_LONG, PROP_ID(PR_SUBJECT))).l = 11;
    }

    decltype(SPropValue::Value)& Set(int index, ULONG tag)
    {
        values[index] = {};
        values[index].ulPropTag = tag;
        return values[index].Value;
    }

    char subject[2] = "s";
    char empty[1] = "";
    WCHAR wide[2] = {'w', 0};
    WCHAR wideEmpty[1] = {0};
    SPropValue values[11];
    SRow row = {0, 11, values};
    CZebRow view = CZebRow(&row, values);
};

} // namespace

TEST_F(Row, AFailureNamesTagOrIndex)
{
    EXPECT_EQ(ContextOf([&] { view[PR_ENTRYID]; }), "operator[] PR_ENTRYID 0x0FFF0102");
    EXPECT_EQ(ContextOf([&] { view[PR_SENDER_NAME_W]; }), "operator[] PR_SENDER_NAME 0x0C1A001F")
        << "the table has text as PT_STRING8";
    EXPECT_EQ(ContextOf([&] { view[PROP_TAG(PT_LONG, 0x7ABC)]; }), "operator[] 0x7ABC0003");
    EXPECT_EQ(ContextOf([&] { view.GetAt(11); }), "GetAt value 11 of 11");
    EXPECT_EQ(ContextOf([&] { view.GetAt(-1); }), "GetAt value -1 of 11");
}

TEST_F(Row, EmptyViewThrowsOnEveryRead)
{
    CZebRow none(nullptr, nullptr);
    const auto refuses = [](auto&& body) { EXPECT_EQ(ThrownBy(body), MAPI_E_BAD_VALUE); };
    refuses([&] { none.Count(); });
    refuses([&] { none.GetAt(0); });
    refuses([&] { none[PR_SUBJECT_A]; });
    refuses([&] { none.IsExists(PR_SUBJECT_A); });
    refuses([&] { none.hasRealValue(PR_SUBJECT_A); });
}

TEST_F(Row, FindsColumnsWhateverTheirType)
{
    EXPECT_EQ(view[PR_SUBJECT_A].String(false), "s");
    EXPECT_EQ(view[PR_SUBJECT_W].GetTag(), ULONG{PR_SUBJECT_A}) << "the first of two, under its own tag";
    EXPECT_TRUE(view.IsExists(PR_SUBJECT_W));
    EXPECT_FALSE(view.IsExists(PR_ENTRYID));
    EXPECT_EQ(ThrownBy([&] { view[PR_ENTRYID]; }), MAPI_E_UNEXPECTED_ID);
}

TEST_F(Row, ErrorColumnHasNoRealValue)
{
    EXPECT_TRUE(view.IsExists(PR_DISPLAY_NAME_A));
    EXPECT_FALSE(view.hasRealValue(PR_DISPLAY_NAME_A));
    EXPECT_EQ(view[PR_DISPLAY_NAME_A].GetType(), ULONG{PT_ERROR});
    EXPECT_TRUE(view[PR_DISPLAY_NAME_A].IsEmpty());
}

TEST_F(Row, EmptyTextsAndErrorsAreUnreal)
{
    EXPECT_TRUE(view.hasRealValue(PR_SUBJECT_A)) << "a text of one character";
    EXPECT_FALSE(view.hasRealValue(PR_BODY_A)) << "an empty text";
    EXPECT_TRUE(view.hasRealValue(PR_MESSAGE_SIZE)) << "a number of 0";
    EXPECT_FALSE(view.hasRealValue(PR_ENTRYID)) << "no such column";
    const bool real[] = {true, false, false, true, false, false, false, true, false, false, true};
    for (int i = 0; i < 11; ++i)
    {
        EXPECT_EQ(view.IsRealValueAt(i), real[i]) << i;
    }
}

TEST_F(Row, OverriddenOperationsApplyToTheOthers)
{
    class Overriding : public CZebRow
    {
    public:
        using CZebRow::CZebRow;
        ULONG TagAt(int) const override { return PROP_TAG(PT_ERROR, 0x37); }

    protected:
        int FindTag(ULONG) const override { return 3; }
    };
    const Overriding row3(&row, values);
    EXPECT_FALSE(row3.IsRealValueAt(0)) << "the type is that which TagAt tells";
    EXPECT_FALSE(row3.hasRealValue(PR_SUBJECT_A));
    EXPECT_TRUE(row3.IsExists(PR_ENTRYID));
    EXPECT_EQ(row3[PR_ENTRYID].GetTag(), ULONG{PR_MESSAGE_SIZE});
}

TEST_F(Row, OverriddenChecksApplyToEveryRead)
{
    class Refusing : public CZebRow
    {
    public:
        using CZebRow::CZebRow;

    protected:
        void CheckValid() const override { CZebException::Throw(MAPI_E_BUSY, nullptr, 0); }
    };
    const Refusing own(&row, values);
    const CZebRow& refusing = own;
    EXPECT_EQ(ThrownBy([&] { refusing.Count(); }), MAPI_E_BUSY);
    EXPECT_EQ(ThrownBy([&] { refusing.GetAt(0); }), MAPI_E_BUSY);
    EXPECT_EQ(ThrownBy([&] { refusing[PR_SUBJECT_A]; }), MAPI_E_BUSY);
    EXPECT_EQ(ThrownBy([&] { refusing.IsExists(PR_SUBJECT_A); }), MAPI_E_BUSY);
    EXPECT_EQ(ThrownBy([&] { refusing.hasRealValue(PR_SUBJECT_A); }), MAPI_E_BUSY);
}

TEST_F(Row, GivesValuesByIndex)
{
    EXPECT_EQ(view.Count(), 11u);
    EXPECT_EQ(view.TagAt(3), ULONG{PR_MESSAGE_SIZE});
    EXPECT_EQ(view.GetAt(0).String(false), "s");
    EXPECT_EQ(static_cast<LONG>(view.GetAt(10)), 11);
    EXPECT_EQ(ThrownBy([&] { view.GetAt(-1); }), MAPI_E_UNEXPECTED_ID);
    EXPECT_EQ(ThrownBy([&] { view.GetAt(11); }), MAPI_E_UNEXPECTED_ID);
    row.cValues = 0;
    EXPECT_EQ(ThrownBy([&] { view.GetAt(0); }), MAPI_E_UNEXPECTED_ID);
}

TEST_F(Row, ValuesAllocateUnderTheRowsBase)
{
    MapiMemory memory;
    void* base = memory.Allocate(8);
    CZebRow based(&row, base);
    based[PR_SUBJECT_A] = "changed";
    EXPECT_STREQ(values[0].Value.lpszA, "changed");
    EXPECT_EQ(memory.SizeOf(values[0].Value.lpszA), 8u);
    EXPECT_EQ(ThrownBy([&] { CZebRow(&row, nullptr)[PR_SUBJECT_A] = "x"; }), MAPI_E_INVALID_OBJECT);
    Zeb_MemFree(base);
}

TEST_F(Row, CopiesLookAtTheSameRow)
{
    SRow other = {0, 0, nullptr};
    CZebRow copy(view);
    CZebRow assigned(&other, nullptr);
    EXPECT_EQ(assigned.Count(), 0u);
    assigned = view;
    EXPECT_EQ(copy.Count(), 11u);
    EXPECT_EQ(assigned.Count(), 11u);
}

TEST(RowOfNoValues, HasNoColumnsWhateverItsCount)
{
    SRow claims = {0, 3, nullptr};
    const CZebRow row(&claims, &claims);
    EXPECT_EQ(row.Count(), 3u);
    EXPECT_FALSE(row.IsExists(PR_SUBJECT_A));
    EXPECT_FALSE(row.hasRealValue(PR_SUBJECT_A));
    EXPECT_EQ(ThrownBy([&] { row[PR_SUBJECT_A]; }), MAPI_E_UNEXPECTED_ID);
    EXPECT_EQ(ThrownBy([&] { row.GetAt(0); }), MAPI_E_UNEXPECTED_ID);
}

} // namespace zeb::test
