// Every kind of restriction, applied to a contents table by the embedded provider.
#include "tests/integration/Host.h"

#include <vector>

namespace zeb::test
{
namespace
{

using List = std::vector<std::string>;

class Restricted : public StoreHost
{
protected:
    Restricted()
    {
        AddMessage("red apple", 0);
        AddMessage("green Apple", 1, 20'000);
        AddMessage("red cherry", 2);
        m_restriction.Allocate();
    }

    /// The subjects that are left, in alphabetical order.
    List Matching(SRestriction* restriction)
    {
        CZebTable table = Contents();
        table.SetColumns(1, PR_SUBJECT_A);
        CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_ASCEND);
        table.Restrict(restriction, 0);
        table.SortTable(order);
        CZebRowSet rows;
        table.QueryRows(&rows, 0, nullptr, nullptr);
        List subjects;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            subjects.push_back(rows[i][PR_SUBJECT_A].String(true).GetString());
        }
        return subjects;
    }

    List ByImportance(ULONG relop, LONG value)
    {
        m_restriction.CreateProp(PR_IMPORTANCE, relop) = value;
        return Matching(m_restriction);
    }
    List ByContent(const char* text, ULONG fuzzy)
    {
        m_restriction.CreateContent(PR_SUBJECT_A, text, fuzzy);
        return Matching(m_restriction);
    }

    CZebRestrictionAllocator m_restriction;
};

TEST_F(Restricted, ByAValueAndEveryRelation)
{
    EXPECT_EQ(ByImportance(RELOP_LT, 1), (List{"red apple"}));
    EXPECT_EQ(ByImportance(RELOP_LE, 1), (List{"green Apple", "red apple"}));
    EXPECT_EQ(ByImportance(RELOP_GT, 1), (List{"red cherry"}));
    EXPECT_EQ(ByImportance(RELOP_GE, 1), (List{"green Apple", "red cherry"}));
    EXPECT_EQ(ByImportance(RELOP_EQ, 1), (List{"green Apple"}));
    EXPECT_EQ(ByImportance(RELOP_NE, 1), (List{"red apple", "red cherry"}));
}

TEST_F(Restricted, ByTextWholePartAndPrefix)
{
    EXPECT_EQ(ByContent("red apple", FL_FULLSTRING), (List{"red apple"}));
    EXPECT_EQ(ByContent("apple", FL_SUBSTRING), (List{"red apple"}));
    EXPECT_EQ(ByContent("APPLE", FL_SUBSTRING | FL_IGNORECASE), (List{"green Apple", "red apple"}));
    EXPECT_EQ(ByContent("red", FL_PREFIX), (List{"red apple", "red cherry"}));
    EXPECT_TRUE(ByContent("apple", FL_PREFIX).empty());
    EXPECT_TRUE(ByContent("%", FL_SUBSTRING).empty()) << "text is never a pattern";
}

TEST_F(Restricted, ByAllAnyAndNot)
{
    m_restriction.CreateAnd(2);
    m_restriction[0].CreateContent(PR_SUBJECT_A, "red", FL_PREFIX);
    m_restriction[1].CreateNot().CreateProp(PR_IMPORTANCE, RELOP_EQ) = static_cast<LONG>(2);
    EXPECT_EQ(Matching(m_restriction), (List{"red apple"}));

    m_restriction.Allocate();
    m_restriction.CreateOr(2);
    m_restriction[0].CreateContent(PR_SUBJECT_A, "cherry", FL_SUBSTRING);
    m_restriction[1].CreateProp(PR_IMPORTANCE, RELOP_EQ) = static_cast<LONG>(0);
    EXPECT_EQ(Matching(m_restriction), (List{"red apple", "red cherry"}));
}

TEST_F(Restricted, ByNothingAtAll)
{
    m_restriction.CreateAnd(0);
    EXPECT_EQ(Matching(m_restriction).size(), 3u) << "all of nothing holds";
    m_restriction.CreateOr(0);
    EXPECT_TRUE(Matching(m_restriction).empty()) << "any of nothing does not";
}

TEST_F(Restricted, ByBits)
{
    m_restriction.CreateBitMask(PR_IMPORTANCE, 2, BMR_NEZ);
    EXPECT_EQ(Matching(m_restriction), (List{"red cherry"}));
    m_restriction.CreateBitMask(PR_IMPORTANCE, 2, BMR_EQZ);
    EXPECT_EQ(Matching(m_restriction), (List{"green Apple", "red apple"}));
}

TEST_F(Restricted, ByTwoPropertiesCompared)
{
    m_restriction.CreateCompareProps(PR_SUBJECT_A, PR_NORMALIZED_SUBJECT_A, RELOP_EQ);
    EXPECT_EQ(Matching(m_restriction).size(), 3u);
    m_restriction.CreateCompareProps(PR_SUBJECT_A, PR_NORMALIZED_SUBJECT_A, RELOP_LT);
    EXPECT_TRUE(Matching(m_restriction).empty());
}

TEST_F(Restricted, ByExistence)
{
    m_restriction.CreateExist(PR_BODY_A);
    EXPECT_EQ(Matching(m_restriction), (List{"green Apple"}));
}

TEST_F(Restricted, BySize)
{
    SRestriction* node = m_restriction;
    node->rt = RES_SIZE;
    node->res.resSize.relop = RELOP_GT;
    node->res.resSize.ulPropTag = PR_BODY_A;
    node->res.resSize.cb = 10'000;
    EXPECT_EQ(Matching(node), (List{"green Apple"}));
}

TEST_F(Restricted, ByACommentAroundAnotherRestriction)
{
    SRestriction inner{};
    inner.rt = RES_EXIST;
    inner.res.resExist.ulPropTag = PR_BODY_A;
    SPropValue note{};
    note.ulPropTag = PR_COMMENT_A;
    note.Value.lpszA = const_cast<char*>("why");
    SRestriction* node = m_restriction;
    node->rt = RES_COMMENT;
    node->res.resComment.cValues = 1;
    node->res.resComment.lpRes = &inner;
    node->res.resComment.lpProp = &note;
    EXPECT_EQ(Matching(node), (List{"green Apple"}));
}

TEST_F(Restricted, ByARecipient)
{
    CZebMessage message = Inbox().CreateMessage(0);
    SPropValue subject{};
    subject.ulPropTag = PR_SUBJECT_A;
    subject.Value.lpszA = const_cast<char*>("to somebody");
    message.SetProps(1, &subject, nullptr);
    CComPtr<IMessage> raw;
    ThrowIfFailed(message.GetInterface().QueryInterface(IID_IMessage, raw));
    SPropValue recipient[2] = {};
    recipient[0].ulPropTag = PR_DISPLAY_NAME_A;
    recipient[0].Value.lpszA = const_cast<char*>("Ada");
    recipient[1].ulPropTag = PR_RECIPIENT_TYPE;
    recipient[1].Value.l = MAPI_TO;
    SizedADRLIST(1, list) = {1, {{0, 2, recipient}}};
    ThrowIfFailed(raw->ModifyRecipients(MODRECIP_ADD, reinterpret_cast<ADRLIST*>(&list)), raw);
    message.SaveChanges(KEEP_OPEN_READWRITE);

    SRestriction inner{};
    SPropValue name = recipient[0];
    inner.rt = RES_PROPERTY;
    inner.res.resProperty.relop = RELOP_EQ;
    inner.res.resProperty.ulPropTag = PR_DISPLAY_NAME_A;
    inner.res.resProperty.lpProp = &name;
    SRestriction* node = m_restriction;
    node->rt = RES_SUBRESTRICTION;
    node->res.resSub.ulSubObject = PR_MESSAGE_RECIPIENTS;
    node->res.resSub.lpRes = &inner;
    EXPECT_EQ(Matching(node), (List{"to somebody"}));
    name.Value.lpszA = const_cast<char*>("Grace");
    EXPECT_TRUE(Matching(node).empty());
}

} // namespace
} // namespace zeb::test
