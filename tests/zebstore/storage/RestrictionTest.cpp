#include "tests/zebstore/storage/Restrictions.h"

#include "zebstore/storage/Restriction.h"
#include "zebstore/storage/SortOrder.h"

#include <cmath>

namespace zebstore::test
{
namespace
{

class RestrictionTest : public ::testing::Test
{
protected:
    bool Matches(const SRestriction* source) const { return Restriction(*source).Matches(m_row); }
    HRESULT CodeFor(const SRestriction* source) const
    {
        return CodeOf([&] { Restriction made(*source); });
    }

    RestrictionMaker m_make;
    PropertySet m_row;
};

TEST_F(RestrictionTest, EveryRelationHoldsAsItSays)
{
    m_row.SetLong(PR_IMPORTANCE, 5);
    const bool expected[6][3] = {
        // against 4, 5, 6
        {false, false, true}, {false, true, true},  {true, false, false},
        {true, true, false},  {false, true, false}, {true, false, true},
    };
    for (ULONG relop = RELOP_LT; relop <= RELOP_NE; ++relop)
    {
        for (LONG i = 0; i < 3; ++i)
        {
            EXPECT_EQ(Matches(m_make.Property(relop, LongValue(PR_IMPORTANCE, 4 + i))), expected[relop][i])
                << relop << " " << i;
        }
    }
}

TEST_F(RestrictionTest, NumbersCompareWithTheirSign)
{
    m_row.SetLong(PR_IMPORTANCE, -5);
    EXPECT_TRUE(Matches(m_make.Property(RELOP_LT, LongValue(PR_IMPORTANCE, 1))));
    SPropValue time = TimeValue(PR_CLIENT_SUBMIT_TIME, 1ll << 40);
    m_row.Set(time);
    EXPECT_TRUE(Matches(m_make.Property(RELOP_GT, TimeValue(PR_CLIENT_SUBMIT_TIME, 1ll << 33))));
    SPropValue real = Value(PROP_TAG(PT_DOUBLE, 0x6001));
    real.Value.dbl = -2.5;
    m_row.Set(real);
    real.Value.dbl = 1.0;
    EXPECT_TRUE(Matches(m_make.Property(RELOP_LT, real)));
    real.Value.dbl = std::nan("");
    EXPECT_FALSE(Matches(m_make.Property(RELOP_LE, real)));
    EXPECT_FALSE(Matches(m_make.Property(RELOP_GE, real)));
    EXPECT_TRUE(Matches(m_make.Property(RELOP_NE, real)));
}

TEST_F(RestrictionTest, MissingPropertiesFulfilNoRelation)
{
    m_row.SetLong(PR_PRIORITY, 1);
    for (ULONG relop = RELOP_LT; relop <= RELOP_NE; ++relop)
    {
        EXPECT_FALSE(Matches(m_make.Property(relop, LongValue(PR_IMPORTANCE, 1))));
        SPropValue shortValue = Value(PROP_TAG(PT_I2, PROP_ID(PR_PRIORITY)));
        EXPECT_FALSE(Matches(m_make.Property(relop, shortValue)));
    }
    EXPECT_TRUE(Matches(m_make.Not(m_make.Property(RELOP_EQ, LongValue(PR_IMPORTANCE, 1)))));
}

TEST_F(RestrictionTest, TextRelationsIgnoreCaseAndForm)
{
    m_row.Set(NarrowValue(PR_SUBJECT_A, "Hello"));
    EXPECT_TRUE(Matches(m_make.Property(RELOP_EQ, WideValue(PR_SUBJECT_W, ZEBW("hELLO")))));
    EXPECT_TRUE(Matches(m_make.Property(RELOP_LT, NarrowValue(PR_SUBJECT_A, "help"))));
    EXPECT_FALSE(Matches(m_make.Property(RELOP_EQ, NarrowValue(PR_SUBJECT_A, "hello "))));
}

TEST_F(RestrictionTest, EveryFuzzyLevelHolds)
{
    m_row.Set(WideValue(PR_SUBJECT_W, ZEBW("Caf\u00E9 au lait")));
    const auto holds = [&](ULONG fuzzy, const WCHAR* text)
    { return Matches(m_make.Content(fuzzy, WideValue(PR_SUBJECT_W, text))); };
    EXPECT_TRUE(holds(FL_FULLSTRING, ZEBW("Caf\u00E9 au lait")));
    EXPECT_FALSE(holds(FL_FULLSTRING, ZEBW("Caf\u00E9")));
    EXPECT_TRUE(holds(FL_PREFIX, ZEBW("Caf\u00E9")));
    EXPECT_FALSE(holds(FL_PREFIX, ZEBW("au")));
    EXPECT_TRUE(holds(FL_SUBSTRING, ZEBW("au")));
    EXPECT_FALSE(holds(FL_SUBSTRING, ZEBW("AU")));
    EXPECT_TRUE(holds(FL_SUBSTRING | FL_IGNORECASE, ZEBW("AU")));
    EXPECT_TRUE(holds(FL_PREFIX | FL_IGNORECASE, ZEBW("CAF\u00C9")));
    EXPECT_FALSE(holds(FL_PREFIX | FL_IGNORECASE, ZEBW("CAFE")));
    EXPECT_TRUE(holds(FL_PREFIX | FL_IGNORENONSPACE, ZEBW("Cafe")));
    EXPECT_FALSE(holds(FL_PREFIX | FL_IGNORENONSPACE, ZEBW("cafe")));
    EXPECT_TRUE(holds(FL_FULLSTRING | FL_LOOSE, ZEBW("CAFE AU LAIT")));
    EXPECT_TRUE(holds(FL_SUBSTRING, ZEBW("")));
}

TEST_F(RestrictionTest, BinariesAreSearchedByBytes)
{
    m_row.SetBinary(PR_SEARCH_KEY, "SMTP:A\0B", 8);
    EXPECT_TRUE(Matches(m_make.Content(FL_PREFIX, BinaryValue(PR_SEARCH_KEY, "SMTP:"))));
    EXPECT_TRUE(Matches(m_make.Content(FL_SUBSTRING, BinaryValue(PR_SEARCH_KEY, std::string("\0B", 2)))));
    EXPECT_FALSE(Matches(m_make.Content(FL_FULLSTRING, BinaryValue(PR_SEARCH_KEY, "SMTP:A"))));
    EXPECT_TRUE(Matches(m_make.Property(RELOP_GT, BinaryValue(PR_SEARCH_KEY, "SMTP:A"))));
}

TEST_F(RestrictionTest, OneOfMultipleValuesIsEnough)
{
    const char* texts[] = {"red", "green"};
    SPropValue value = Value(PROP_TAG(PT_MV_STRING8, 0x6002));
    value.Value.MVszA.cValues = 2;
    value.Value.MVszA.lppszA = const_cast<char**>(texts);
    m_row.Set(value);
    const auto single = [](const char* text) { return NarrowValue(PROP_TAG(PT_STRING8, 0x6002), text); };
    EXPECT_TRUE(Matches(m_make.Property(RELOP_EQ, single("GREEN"))));
    EXPECT_FALSE(Matches(m_make.Property(RELOP_EQ, single("blue"))));
    EXPECT_TRUE(Matches(m_make.Content(FL_SUBSTRING, single("ree"))));
    EXPECT_TRUE(Matches(m_make.Property(RELOP_EQ, value))) << "the whole against the whole";
}

TEST_F(RestrictionTest, BitsAreComparedThroughTheMask)
{
    m_row.SetLong(PR_MESSAGE_FLAGS, 0x11);
    EXPECT_TRUE(Matches(m_make.BitMask(PR_MESSAGE_FLAGS, 0x10, BMR_NEZ)));
    EXPECT_FALSE(Matches(m_make.BitMask(PR_MESSAGE_FLAGS, 0x10, BMR_EQZ)));
    EXPECT_TRUE(Matches(m_make.BitMask(PR_MESSAGE_FLAGS, 0x2, BMR_EQZ)));
    EXPECT_FALSE(Matches(m_make.BitMask(PR_IMPORTANCE, 0x2, BMR_EQZ))) << "missing";
}

TEST_F(RestrictionTest, SizesCountTheValuesBytes)
{
    m_row.Set(NarrowValue(PR_SUBJECT_A, "four"));
    m_row.SetBinary(PR_SEARCH_KEY, "abc", 3);
    m_row.SetLong(PR_IMPORTANCE, 0);
    EXPECT_TRUE(Matches(m_make.Size(RELOP_EQ, PR_SUBJECT_A, 5)));
    EXPECT_TRUE(Matches(m_make.Size(RELOP_EQ, PR_SUBJECT_W, 10)));
    EXPECT_TRUE(Matches(m_make.Size(RELOP_EQ, PR_SEARCH_KEY, 3)));
    EXPECT_TRUE(Matches(m_make.Size(RELOP_LT, PR_IMPORTANCE, 5)));
    EXPECT_FALSE(Matches(m_make.Size(RELOP_GE, PR_BODY_A, 0))) << "missing";
}

TEST_F(RestrictionTest, TwoPropertiesAreCompared)
{
    m_row.SetLong(PR_IMPORTANCE, 1);
    m_row.SetLong(PR_PRIORITY, 2);
    EXPECT_TRUE(Matches(m_make.CompareProps(RELOP_LT, PR_IMPORTANCE, PR_PRIORITY)));
    EXPECT_FALSE(Matches(m_make.CompareProps(RELOP_EQ, PR_IMPORTANCE, PR_PRIORITY)));
    EXPECT_FALSE(Matches(m_make.CompareProps(RELOP_NE, PR_IMPORTANCE, PR_SENSITIVITY))) << "missing";
}

TEST_F(RestrictionTest, ExistenceGoesByIdentifierAndType)
{
    m_row.Set(NarrowValue(PR_SUBJECT_A, "x"));
    EXPECT_TRUE(Matches(m_make.Exist(PR_SUBJECT_W)));
    EXPECT_TRUE(Matches(m_make.Exist(PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_SUBJECT_A)))));
    EXPECT_FALSE(Matches(m_make.Exist(PROP_TAG(PT_LONG, PROP_ID(PR_SUBJECT_A)))));
    EXPECT_FALSE(Matches(m_make.Exist(PR_BODY_A)));
}

TEST_F(RestrictionTest, AndOrNotCommentCombine)
{
    m_row.SetLong(PR_IMPORTANCE, 1);
    SRestriction* yes = m_make.Exist(PR_IMPORTANCE);
    SRestriction* no = m_make.Exist(PR_BODY_A);
    EXPECT_TRUE(Matches(m_make.And({yes, yes})));
    EXPECT_FALSE(Matches(m_make.And({yes, no})));
    EXPECT_TRUE(Matches(m_make.Or({no, yes})));
    EXPECT_FALSE(Matches(m_make.Or({no, no})));
    EXPECT_TRUE(Matches(m_make.Not(no)));
    EXPECT_TRUE(Matches(m_make.And({}))) << "nothing is asked";
    EXPECT_FALSE(Matches(m_make.Or({}))) << "nothing can hold";
    EXPECT_TRUE(Matches(m_make.Comment(yes)));
    EXPECT_FALSE(Matches(m_make.Comment(no)));
    EXPECT_TRUE(Matches(m_make.Comment(nullptr)));
}

TEST_F(RestrictionTest, TheUnsupportedIsTooComplex)
{
    EXPECT_EQ(CodeFor(m_make.Property(RELOP_RE, LongValue(PR_IMPORTANCE, 1))), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(CodeFor(m_make.Property(99, LongValue(PR_IMPORTANCE, 1))), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(CodeFor(m_make.New(77)), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(CodeFor(m_make.Content(7, NarrowValue(PR_SUBJECT_A, "x"))), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(CodeFor(m_make.Content(FL_SUBSTRING, LongValue(PR_IMPORTANCE, 1))), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(CodeFor(m_make.BitMask(PR_IMPORTANCE, 1, 5)), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(CodeFor(m_make.Sub(PR_SUBJECT_A, m_make.Exist(PR_BODY_A))), MAPI_E_TOO_COMPLEX);
}

TEST_F(RestrictionTest, NullPointersAreRefused)
{
    EXPECT_EQ(CodeFor(m_make.Not(nullptr)), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(CodeFor(m_make.New(RES_PROPERTY)), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(CodeFor(m_make.New(RES_CONTENT)), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(CodeFor(m_make.Sub(PR_MESSAGE_RECIPIENTS, nullptr)), MAPI_E_INVALID_PARAMETER);
    SRestriction* hollow = m_make.New(RES_AND);
    hollow->res.resAnd.cRes = 4;
    EXPECT_EQ(CodeFor(hollow), MAPI_E_INVALID_PARAMETER);
}

TEST_F(RestrictionTest, NestingTooDeepIsRefused)
{
    SRestriction* node = m_make.Exist(PR_SUBJECT_A);
    for (int i = 1; i < Restriction::MostLevels; ++i)
    {
        node = m_make.Not(node);
    }
    EXPECT_EQ(CodeFor(node), S_OK);
    EXPECT_EQ(CodeFor(m_make.Not(node)), MAPI_E_TOO_COMPLEX);
    for (int i = 0; i < 10000; ++i)
    {
        node = m_make.Not(node);
    }
    EXPECT_EQ(CodeFor(node), MAPI_E_TOO_COMPLEX);
}

// Rows that are equal by one key are ordered by the next.
TEST(SortBytes, ZerosOfEitherSignAreEqual)
{
    for (const ULONG type : {PT_R4, PT_DOUBLE, PT_APPTIME})
    {
        const SortOrder order(*SortSet({{PROP_TAG(type, 0x6600), TABLE_SORT_ASCEND}}));
        const auto bytesOf = [&](double number)
        {
            SPropValue value = Value(PROP_TAG(type, 0x6600));
            value.Value.dbl = number;
            if (type == PT_R4)
            {
                value.Value.flt = static_cast<float>(number);
            }
            PropertySet row;
            row.Set(value);
            return order.BytesOf(row);
        };
        EXPECT_EQ(bytesOf(0.0), bytesOf(-0.0)) << type;
        EXPECT_LT(bytesOf(-1e-30), bytesOf(-0.0)) << type;
        EXPECT_LT(bytesOf(0.0), bytesOf(1e-30)) << type;
    }
}

} // namespace
} // namespace zebstore::test
