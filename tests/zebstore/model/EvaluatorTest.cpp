// Random restrictions and sort orders over random messages: the provider's tables, and the plain evaluator of Condition.h.
#include "tests/support/Count.h"
#include "tests/zebstore/model/MailWriter.h"
#include "tests/zebstore/model/Sequences.h"
#include "tests/zebstore/storage/TableCopy.h"

#include "platform/tags.h"

#include <algorithm>

namespace zebstore::model
{
namespace
{

constexpr int Mails = 120;
constexpr int QuestionsOfASequence = 10;

// The store answers some of them by SQL: these more often than others.
std::vector<Kind> KindsToAskFor()
{
    std::vector<Kind> kinds = MailColumnKinds();
    for (const ULONG tag : {PR_SUBJECT_W, PR_SENDER_NAME_W, PR_MESSAGE_CLASS_W, PR_MESSAGE_DELIVERY_TIME,
                            PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_FLAGS})
    {
        kinds.insert(kinds.end(), 5, {PROP_ID(tag), {PROP_TYPE(tag)}});
    }
    return kinds;
}

struct Question
{
    Condition condition;
    Order order;
};

class Evaluator : public Provider
{
protected:
    void Fill(Random& random)
    {
        const Ref<IMAPIFolder> inbox = Inbox();
        for (int i = 0; i < Mails; ++i)
        {
            Mail mail;
            mail.number = i;
            ChangeMail(random, mail, true);
            for (size_t left = random.Below(3); left > 0; --left)
            {
                AddRecipient(mail, RandomRecipient(random));
            }
            if (random.OneIn(3))
            {
                mail.item.attachments.push_back(RandomAttachment(random));
            }
            Create(*inbox, mail);
            m_items.push_back(ShownOf(mail));
            m_keys.push_back(mail.key);
        }
        IMAPITable* table = nullptr;
        Check(inbox->GetContentsTable(MAPI_UNICODE, &table), S_OK, "GetContentsTable");
        m_table = Ref<IMAPITable>::Adopt(table);
        SetColumns(*m_table, {PR_INSTANCE_KEY});
    }

    std::vector<size_t> Expected(const Question& question) const
    {
        std::vector<size_t> rows;
        for (size_t i = 0; i < m_items.size(); ++i)
        {
            if (Holds(question.condition, m_items[i]))
            {
                rows.push_back(i);
            }
        }
        std::stable_sort(rows.begin(), rows.end(), [&](size_t left, size_t right)
        { return IsBefore(m_items[left], m_items[right], question.order); });
        return rows;
    }

    std::vector<size_t> Answer(const Question& question) const
    {
        RestrictTo(*m_table, &question.condition);
        SortBy(*m_table, question.order);
        std::vector<size_t> rows;
        for (const test::CopiedRow& row : ReadRows(*m_table))
        {
            rows.push_back(static_cast<size_t>(std::find(m_keys.begin(), m_keys.end(), row.key) - m_keys.begin()));
        }
        return rows;
    }

    /// Whether FindRow finds the first and the last row that fits. @return what it does not
    std::string Find(const Question& question) const
    {
        RestrictTo(*m_table, nullptr);
        Question all;
        all.order = question.order;
        SortBy(*m_table, all.order);
        std::vector<ULONG> fitting;
        const std::vector<size_t> rows = Expected(all);
        for (size_t i = 0; i < rows.size(); ++i)
        {
            if (Holds(question.condition, m_items[rows[i]]))
            {
                fitting.push_back(static_cast<ULONG>(i));
            }
        }
        test::RestrictionMaker maker;
        Room room;
        SRestriction* made = Made(question.condition, maker, room);
        for (const bool backward : {false, true})
        {
            const HRESULT found =
                m_table->FindRow(made, backward ? BOOKMARK_END : BOOKMARK_BEGINNING, backward ? DIR_BACKWARD : 0);
            ULONG row = 0, numerator = 0, denominator = 0;
            Check(m_table->QueryPosition(&row, &numerator, &denominator), S_OK, "QueryPosition");
            const bool isRight = fitting.empty()
                                     ? found == MAPI_E_NOT_FOUND
                                     : found == S_OK && row == (backward ? fitting.back() : fitting.front());
            if (!isRight)
            {
                return std::string("FindRow ") + (backward ? "backward" : "forward") + " found row " +
                       std::to_string(row) + " with " + ReadableTag(static_cast<ULONG>(found));
            }
        }
        return {};
    }

    bool Differs(const Question& question) const
    {
        return Answer(question) != Expected(question) || !Find(question).empty();
    }

    Question Smallest(Question question) const
    {
        for (bool isSmaller = true; isSmaller;)
        {
            isSmaller = false;
            std::vector<Question> tries;
            for (size_t i = 0; i < question.order.size(); ++i)
            {
                tries.push_back(question);
                tries.back().order.erase(tries.back().order.begin() + static_cast<std::ptrdiff_t>(i));
            }
            for (const Condition& condition : Simpler(question.condition))
            {
                tries.push_back({condition, question.order});
            }
            const auto smaller =
                std::find_if(tries.begin(), tries.end(), [&](const Question& each) { return Differs(each); });
            if (smaller != tries.end())
            {
                question = Question(*smaller);
                isSmaller = true;
            }
        }
        return question;
    }

    std::string Explained(const Question& question) const
    {
        const std::vector<size_t> got = Answer(question);
        const std::vector<size_t> expected = Expected(question);
        const auto [left, right] = std::mismatch(got.begin(), got.end(), expected.begin(), expected.end());
        std::string text = "restriction " + Readable(question.condition) + "\norder " + Readable(question.order) +
                           "\n" + std::to_string(got.size()) + " rows, not " + std::to_string(expected.size()) + "; " +
                           Find(question) + "\n";
        if (left != got.end())
        {
            text += "row given:    " + RowText(question, *left) + "\n";
        }
        if (right != expected.end())
        {
            text += "row expected: " + RowText(question, *right) + "\n";
        }
        return text;
    }

    // What the question asks of the row.
    std::string RowText(const Question& question, size_t row) const
    {
        std::string text = "message " + std::to_string(row);
        std::vector<ULONG> tags;
        GatherTags(question.condition, tags);
        for (const SortKey& key : question.order)
        {
            tags.push_back(key.tag);
        }
        for (const ULONG tag : tags)
        {
            const auto found = m_items[row].own.find(PROP_ID(tag));
            text += ", " + ReadableTag(tag) + " = " +
                    (found != m_items[row].own.end() ? Readable(found->second) : "(none)");
        }
        return text;
    }

    static void GatherTags(const Condition& condition, std::vector<ULONG>& tags)
    {
        for (const ULONG tag : {condition.tag, condition.otherTag})
        {
            if (tag != 0)
            {
                tags.push_back(tag);
            }
        }
        for (const Condition& child : condition.children)
        {
            GatherTags(child, tags);
        }
    }

    void Ask(Random& random, const std::vector<Kind>& kinds, int questions)
    {
        int some = 0;
        int asked = 0;
        long differences = 0;
        for (; asked < questions && differences == 0; ++asked)
        {
            ConditionMaker maker(random, kinds, &random.Pick(m_items));
            const Question question{maker.Tree(static_cast<int>(random.Below(4))), maker.SortOrder(3)};
            const size_t rows = Expected(question).size();
            some += rows > 0 && rows < m_items.size() ? 1 : 0;
            if (Differs(question))
            {
                ++differences;
                ADD_FAILURE() << "seed " << FirstSeed() << ", question " << asked << "\n"
                              << Explained(Smallest(question));
            }
        }
        EXPECT_GE(some, asked / 3) << "the restrictions must tell rows apart";
        zeb::test::PrintCount("operations", asked);
        zeb::test::PrintCount("differences", differences);
    }

    /// Adds the rows of one message, while a table shows the single values of this property.
    void Expand(const Item& item, const std::string& key, ULONG tag)
    {
        const auto found = item.own.find(PROP_ID(tag));
        const std::vector<Value> values = found != item.own.end() ? found->second.many : std::vector<Value>();
        for (std::uint32_t place = 0; place < std::max<size_t>(values.size(), 1); ++place)
        {
            m_items.push_back(item);
            if (!values.empty())
            {
                m_items.back().own[InstanceId(tag)] = values[place];
            }
            m_keys.push_back(key + std::string(reinterpret_cast<const char*>(&place), sizeof(place)));
        }
    }

    void CompareCells(ULONG tag)
    {
        const test::CopiedRows rows = ReadRows(*m_table);
        ASSERT_EQ(rows.size(), m_items.size());
        for (size_t i = 0; i < rows.size(); ++i)
        {
            const Value value = Shown(m_items[i].own, tag);
            const std::string shown = ShownAs(PROP_TAG(SingleOf(PROP_TYPE(tag)), PROP_ID(tag)), value);
            EXPECT_EQ(rows[i].cells[0], value ? std::to_string(tag) + shown.substr(shown.find(' ')) : shown);
        }
    }

    std::vector<Item> m_items;
    std::vector<std::string> m_keys;
    Ref<IMAPITable> m_table;
};

TEST_F(Evaluator, TablesSayWhatThePlainOneSays)
{
    const Words words(FirstSeed());
    Random random(FirstSeed(), words);
    Fill(random);
    Ask(random, KindsToAskFor(), Sequences() * QuestionsOfASequence);
}

// A row for each value of a multi-valued property.
TEST_F(Evaluator, InstancesAreRowsOfTheirOwn)
{
    const Words words(FirstSeed());
    Random random(FirstSeed(), words);
    Fill(random);
    std::vector<ULONG> tags;
    for (const Kind& kind : MessageKinds())
    {
        if ((kind.types.front() & MV_FLAG) != 0)
        {
            tags.push_back(PROP_TAG(kind.types.front() | MV_INSTANCE, kind.id));
        }
    }
    for (const ULONG tag : tags)
    {
        std::vector<Item> items;
        std::vector<std::string> keys;
        std::swap(items, m_items);
        std::swap(keys, m_keys);
        for (size_t row = 0; row < items.size(); ++row)
        {
            Expand(items[row], keys[row], tag);
        }
        RestrictTo(*m_table, nullptr);
        SortBy(*m_table, {});
        SetColumns(*m_table, {tag, PR_INSTANCE_KEY});
        CompareCells(tag);
        std::vector<Kind> kinds = KindsToAskFor();
        // Often enough to be asked for.
        kinds.insert(kinds.end(), kinds.size() / 2, {PROP_ID(tag), {PROP_TYPE(tag)}});
        Ask(random, kinds, std::max<int>(1, Sequences() * QuestionsOfASequence / static_cast<int>(tags.size())));
        m_items = items;
        m_keys = keys;
    }
}

} // namespace
} // namespace zebstore::model
