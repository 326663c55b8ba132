// What SQL and the rows themselves say of the same restriction and the same order must be the same.
#include "tests/zebstore/storage/Restrictions.h"

#include "zebstore/storage/ContentsRows.h"
#include "zebstore/storage/RowSelection.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/SqlFilter.h"

#include <algorithm>
#include <random>

namespace zebstore::test
{
namespace
{

const char* const Words[] = {"alpha", "Alpha", "ALPHABET", "beta", "", "\xC3\x84pfel", "\xC3\xA4pfel", "zeta zeta"};

class SqlFilterTest : public StorageTest
{
protected:
    void SetUp() override
    {
        StorageTest::SetUp();
        m_rows = Filled({Inbox, false}, 300);
    }

    std::shared_ptr<RowSource> Filled(ContentsKey contents, int count)
    {
        std::mt19937 random(11);
        for (int i = 0; i < count; ++i)
        {
            Store().Messages().Create(contents, RandomMail(random));
        }
        return MakeContentsRows(m_store, contents, nullptr);
    }

    static MessageContent RandomMail(std::mt19937& random)
    {
        MessageContent content;
        PropertySet& row = content.properties;
        row.SetLong(PR_MESSAGE_FLAGS, static_cast<LONG>(random() % 4));
        if (random() % 8)
        {
            row.SetText(PR_SUBJECT_W, Words[random() % 8]);
        }
        else if (random() % 2)
        {
            row.SetText(PR_SUBJECT_W, std::string(260, 'A') + Words[random() % 8]);
        }
        else
        {
            row.SetLong(PROP_TAG(PT_LONG, PROP_ID(PR_SUBJECT_W)), 3);
        }
        if (random() % 2)
        {
            row.SetEncoded(PR_SENDER_NAME_A, std::string(1, '\0') + Words[random() % 5]);
        }
        if (random() % 3)
        {
            row.Set(TimeValue(PR_MESSAGE_DELIVERY_TIME, static_cast<std::int64_t>(random() % 5) << 40));
        }
        if (random() % 2)
        {
            row.SetLong(PR_IMPORTANCE, static_cast<LONG>(random() % 3));
        }
        return content;
    }

    SRestriction* RandomLeaf(std::mt19937& random)
    {
        m_texts.push_back(random() % 6 ? std::string(Words[random() % 8])
                                       : std::string(260, 'a') + Words[random() % 8]);
        const ULONG text = random() % 2 ? ULONG(PR_SUBJECT_A) : ULONG(PR_SENDER_NAME_A);
        m_narrow.push_back(zeb::platform::NarrowFromWide(
            zeb::platform::WideFromUtf8(m_texts.back().data(), m_texts.back().size()).c_str(),
            zeb::platform::WideFromUtf8(m_texts.back().data(), m_texts.back().size()).size()));
        const SPropValue value = NarrowValue(text, m_narrow.back().c_str());
        constexpr ULONG folds[] = {0, FL_IGNORECASE, FL_IGNORENONSPACE, FL_LOOSE};
        switch (random() % 8)
        {
        case 0:
            return m_make.Property(random() % 6, value);
        case 1:
            return m_make.Property(random() % 6, LongValue(PR_MESSAGE_FLAGS, static_cast<LONG>(random() % 4)));
        case 2:
            return m_make.Property(random() % 6,
                                   TimeValue(PR_MESSAGE_DELIVERY_TIME, static_cast<std::int64_t>(random() % 5) << 40));
        case 3:
            return m_make.BitMask(PR_MESSAGE_FLAGS, 1 + random() % 3, random() % 2);
        case 4:
            return m_make.Exist(random() % 2 ? ULONG(PR_MESSAGE_DELIVERY_TIME) : text);
        case 5:
            return m_make.Exist(PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_SUBJECT_A)));
        case 6:
            return m_make.Property(random() % 6, LongValue(PR_IMPORTANCE, static_cast<LONG>(random() % 3)));
        default:
            return m_make.Content(random() % 3 | folds[random() % 4], value);
        }
    }

    SRestriction* RandomTree(std::mt19937& random, int levels)
    {
        if (levels == 0 || random() % 3 == 0)
        {
            return RandomLeaf(random);
        }
        switch (random() % 3)
        {
        case 0:
            return m_make.And({RandomTree(random, levels - 1), RandomTree(random, levels - 1)});
        case 1:
            return m_make.Or({RandomTree(random, levels - 1), RandomTree(random, levels - 1)});
        default:
            return m_make.Not(RandomTree(random, levels - 1));
        }
    }

    SortOrder RandomOrder(std::mt19937& random)
    {
        constexpr ULONG tags[] = {PR_SUBJECT_W,    PR_SUBJECT_A,     PR_SENDER_NAME_W, PR_MESSAGE_DELIVERY_TIME,
                                  PR_MESSAGE_SIZE, PR_MESSAGE_FLAGS, PR_IMPORTANCE};
        std::vector<SSortOrder> keys(1 + random() % 3);
        for (SSortOrder& key : keys)
        {
            key = {tags[random() % 7], ULONG(random() % 2)};
        }
        return SortOrder(*SortSet(keys));
    }

    // Asks each message itself.
    std::vector<RowKey> Naive(const Restriction* restriction, const SortOrder* order)
    {
        RowSelection selection(restriction, order);
        for (const MessageId message : Store().Messages().In({Inbox, false}))
        {
            selection.Add(message, Store().Messages().Load(message).properties);
        }
        return selection.Take();
    }

    std::shared_ptr<RowSource> m_rows;
    RestrictionMaker m_make;
    std::deque<std::string> m_texts;
    std::deque<std::string> m_narrow;
};

TEST_F(SqlFilterTest, RestrictionsSayTheSameEitherWay)
{
    std::mt19937 random(5);
    size_t some = 0;
    for (int i = 0; i < 400; ++i)
    {
        const Restriction restriction(*RandomTree(random, 3));
        const std::vector<RowKey> expected = Naive(&restriction, nullptr);
        ASSERT_EQ(m_rows->Keys(&restriction, nullptr), expected) << i;
        some += !expected.empty() && expected.size() < 300;
    }
    EXPECT_GT(some, 200u) << "the restrictions must tell rows apart";
}

TEST_F(SqlFilterTest, ManyAlternativesEqualEachAlone)
{
    std::mt19937 random(7);
    for (int i = 0; i < 20; ++i)
    {
        std::vector<SRestriction*> leaves;
        for (size_t left = 16 + random() % 60; left > 0; --left)
        {
            leaves.push_back(RandomLeaf(random));
        }
        std::vector<RowKey> expected;
        for (const MessageId message : Store().Messages().In({Inbox, false}))
        {
            const PropertySet properties = Store().Messages().Load(message).properties;
            if (std::any_of(leaves.begin(), leaves.end(),
                            [&](const SRestriction* leaf) { return Restriction(*leaf).Matches(properties); }))
            {
                expected.push_back(message);
            }
        }
        const Restriction restriction(*m_make.Or(leaves));
        ASSERT_EQ(m_rows->Keys(&restriction, nullptr), expected) << i;
        ASSERT_EQ(Naive(&restriction, nullptr), expected) << i;
    }
}

// More comparisons than an SQL statement can have parameters.
TEST_F(SqlFilterTest, AWideRestrictionIsAnswered)
{
    constexpr size_t Wide = 40000;
    SPropValue wanted = NarrowValue(PR_SUBJECT_A, "alpha");
    const Restriction single(*m_make.Property(RELOP_EQ, wanted));
    const auto few = Filled({Inbox, true}, 30);
    const std::vector<RowKey> expected = few->Keys(&single, nullptr);
    ASSERT_FALSE(expected.empty());
    for (const bool equal : {true, false})
    {
        std::vector<SRestriction*> any;
        std::vector<SRestriction*> all;
        for (size_t i = 0; i < Wide; ++i)
        {
            m_narrow.push_back("no such subject " + std::to_string(i));
            const SPropValue other = NarrowValue(PR_SUBJECT_A, m_narrow.back().c_str());
            any.push_back(equal ? m_make.Property(RELOP_EQ, other) : m_make.Content(FL_SUBSTRING, other));
            all.push_back(m_make.Property(RELOP_NE, other));
        }
        any.push_back(m_make.Property(RELOP_EQ, wanted));
        all.push_back(m_make.Property(RELOP_EQ, wanted));
        const Restriction wideOr(*m_make.Or(any));
        const Restriction wideAnd(*m_make.And(all));
        EXPECT_EQ(few->Keys(&wideOr, nullptr), expected);
        EXPECT_EQ(few->Keys(&wideAnd, nullptr), expected);
        EXPECT_FALSE(MakeFilter(wideOr.Root(), {}));
        const std::optional<SqlFilter> filter = MakeFilter(wideAnd.Root(), {});
        ASSERT_TRUE(filter);
        EXPECT_LE(filter->parameters.size(), 500u);
        EXPECT_FALSE(filter->exact);
    }
}

// However wide it is: SQL gets few comparisons, and a row costs one look-up of each of its texts.
TEST_F(SqlFilterTest, WideRestrictionsNeedOneLookUp)
{
    std::vector<SRestriction*> any;
    const auto add = [&](size_t count)
    {
        while (any.size() < count)
        {
            m_narrow.push_back("no such subject " + std::to_string(any.size()));
            any.push_back(m_make.Property(RELOP_EQ, NarrowValue(PR_SUBJECT_A, m_narrow.back().c_str())));
        }
    };
    add(500);
    EXPECT_TRUE(MakeFilter(Restriction(*m_make.Or(any)).Root(), {}));
    add(501);
    EXPECT_FALSE(MakeFilter(Restriction(*m_make.Or(any)).Root(), {}));
    add(10000);
    any.push_back(m_make.Content(FL_PREFIX, NarrowValue(PR_SUBJECT_A, "no such")));
    any.push_back(m_make.Property(RELOP_EQ, NarrowValue(PR_SENDER_NAME_A, "no such sender")));
    const Restriction wide(*m_make.Or(any));
    EXPECT_FALSE(MakeFilter(wide.Root(), {}));
    ASSERT_EQ(wide.Root().equal.size(), 2u);
    EXPECT_EQ(wide.Root().equal[0].folded.size(), 10000u);
    EXPECT_EQ(wide.Root().equal[1].folded.size(), 1u);
    EXPECT_EQ(wide.Root().unequal, std::vector<size_t>({10000}));
    EXPECT_TRUE(m_rows->Keys(&wide, nullptr).empty());
}

// Among many texts that are looked up, what asks for anything else than an equal text without case is still asked.
TEST_F(SqlFilterTest, OnlyEqualTextsAreLookedUp)
{
    const SPropValue alpha = NarrowValue(PR_SUBJECT_A, "Alpha");
    std::vector<SRestriction*> others;
    for (const ULONG relation : {RELOP_LT, RELOP_LE, RELOP_GT, RELOP_GE, RELOP_NE})
    {
        others.push_back(m_make.Property(relation, alpha));
    }
    for (const ULONG fuzzy : {FL_FULLSTRING, FL_FULLSTRING | FL_IGNORENONSPACE, FL_FULLSTRING | FL_LOOSE,
                              FL_PREFIX | FL_IGNORECASE, FL_SUBSTRING | FL_IGNORECASE})
    {
        others.push_back(m_make.Content(fuzzy, alpha));
    }
    std::vector<std::string> texts;
    for (int i = 0; i < 20; ++i)
    {
        texts.push_back("no such subject " + std::to_string(i));
    }
    for (size_t i = 0; i < others.size(); ++i)
    {
        std::vector<SRestriction*> any;
        for (const std::string& text : texts)
        {
            any.push_back(m_make.Property(RELOP_EQ, NarrowValue(PR_SUBJECT_A, text.c_str())));
        }
        any.push_back(others[i]);
        const Restriction single(*others[i]);
        const std::vector<RowKey> expected = Naive(&single, nullptr);
        EXPECT_FALSE(expected.empty()) << i;
        const Restriction many(*m_make.Or(any));
        EXPECT_EQ(Naive(&many, nullptr), expected) << i;
        EXPECT_EQ(m_rows->Keys(&many, nullptr), expected) << i;
    }
}

TEST_F(SqlFilterTest, AWideDeepRestrictionIsAnswered)
{
    const auto few = Filled({Inbox, true}, 30);
    std::vector<SRestriction*> outer;
    SPropValue wanted = NarrowValue(PR_SUBJECT_A, "alpha");
    for (int i = 0; i < 120; ++i)
    {
        std::vector<SRestriction*> inner;
        for (int k = 0; k < 400; ++k)
        {
            m_narrow.push_back("no such " + std::to_string(i) + " " + std::to_string(k));
            inner.push_back(m_make.Content(FL_PREFIX, NarrowValue(PR_SUBJECT_A, m_narrow.back().c_str())));
        }
        outer.push_back(m_make.Or(inner));
    }
    outer.push_back(m_make.Property(RELOP_EQ, wanted));
    const Restriction single(*m_make.Property(RELOP_EQ, wanted));
    const Restriction deep(*m_make.Or(outer));
    EXPECT_EQ(few->Keys(&deep, nullptr), few->Keys(&single, nullptr));
}

TEST_F(SqlFilterTest, OrdersAreTheSameEitherWay)
{
    std::mt19937 random(6);
    for (int i = 0; i < 100; ++i)
    {
        const SortOrder order = RandomOrder(random);
        ASSERT_EQ(m_rows->Keys(nullptr, &order), Naive(nullptr, &order)) << i;
        const Restriction restriction(*RandomTree(random, 2));
        ASSERT_EQ(m_rows->Keys(&restriction, &order), Naive(&restriction, &order)) << i;
    }
}

} // namespace
} // namespace zebstore::test
