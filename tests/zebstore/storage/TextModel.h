// Random messages in many scripts, random restrictions on their texts, and a plain evaluator of these.
#pragma once

#include "tests/zebstore/storage/Restrictions.h"

#include "platform/tags.h"
#include "zebstore/storage/Text.h"

#include <map>
#include <random>

namespace zebstore::test
{

using Wide = std::basic_string<WCHAR>;

/// The texts of one message.
struct TextModel
{
    std::map<ULONG, Wide> texts;                   ///< by property; a missing one is missing
    std::vector<std::map<ULONG, Wide>> recipients; ///< the same of each
};

/// A restriction as the test itself understands it.
struct TextCondition
{
    enum class Kind
    {
        Content,
        Equal,
        And,
        Or,
        Not,
        Recipient
    };
    Kind kind = Kind::Content;
    ULONG tag = 0, fuzzy = 0;
    Wide text;
    std::vector<TextCondition> children;
};

inline std::string StoredOf(const Wide& text)
{
    return StoredFromWide(text.data(), text.size());
}

/// Makes messages and conditions from a fixed seed.
class TextMaker
{
public:
    explicit TextMaker(unsigned seed)
        : m_random(seed)
    {
    }

    size_t Below(size_t bound) { return m_random() % bound; }

    /// Of one alphabet mostly, so that texts have parts in common.
    Wide Text(size_t most)
    {
        const std::vector<Wide>& alphabets = Alphabets();
        const Wide& alphabet = alphabets[Below(alphabets.size())];
        Wide text;
        for (size_t left = Below(most + 1); left > 0; --left)
        {
            const Wide& from = Below(8) != 0 ? alphabet : alphabets[Below(alphabets.size())];
            text += from[Below(from.size())];
        }
        return text;
    }

    TextModel Message()
    {
        TextModel message;
        for (const ULONG tag : {PR_SUBJECT_W, PR_SENDER_NAME_W, PR_SENDER_EMAIL_ADDRESS_W, PR_SENT_REPRESENTING_NAME_W,
                                PR_BODY_W, PR_DISPLAY_TO_W})
        {
            if (Below(5) != 0)
            {
                message.texts[tag] = Text(tag != PR_BODY_W ? 24 : Below(12) != 0 ? 300 : 6000);
            }
        }
        for (size_t left = Below(3); left > 0; --left)
        {
            message.recipients.push_back({{PR_DISPLAY_NAME_W, Text(16)}, {PR_EMAIL_ADDRESS_W, Text(16)}});
        }
        return message;
    }

    /// A part of a text of one of the messages, often in other letters, or another text.
    Wide Part(const std::vector<TextModel>& messages)
    {
        const TextModel& message = messages[Below(messages.size())];
        if (Below(10) == 0 || message.texts.empty())
        {
            return Text(8);
        }
        auto chosen = message.texts.begin();
        std::advance(chosen, static_cast<std::ptrdiff_t>(Below(message.texts.size())));
        const Wide& whole = chosen->second;
        const size_t begin = Below(3) == 0 ? 0 : Below(whole.size() + 1);
        const size_t length = Below(3) == 0 && whole.size() < 30 ? whole.size() : Below(12);
        const Wide part = whole.substr(begin, length);
        constexpr TextFold Folds[] = {TextFold::Exact, TextFold::IgnoreCase, TextFold::IgnoreMarks,
                                      TextFold::IgnoreCaseAndMarks};
        const auto folded = WideFromStored(Folded(StoredOf(part), Folds[Below(4)]));
        return Wide(folded.begin(), folded.end());
    }

    TextCondition Condition(const std::vector<TextModel>& messages, int depth = 0)
    {
        TextCondition condition;
        const size_t kind = depth < 3 ? Below(10) : 0;
        if (kind >= 8)
        {
            condition.kind = kind == 8 ? TextCondition::Kind::And : TextCondition::Kind::Or;
            for (size_t left = Below(3) + 1; left > 0; --left)
            {
                condition.children.push_back(Condition(messages, depth + 1));
            }
            return condition;
        }
        if (kind == 7)
        {
            condition.kind = TextCondition::Kind::Not;
            condition.children.push_back(Condition(messages, depth + 1));
            return condition;
        }
        if (kind == 6)
        {
            condition.kind = TextCondition::Kind::Recipient;
            condition.children.push_back(Leaf(messages, {PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W}));
            return condition;
        }
        return Leaf(messages, {PR_SUBJECT_W, PR_SENDER_NAME_W, PR_SENDER_EMAIL_ADDRESS_W, PR_SENT_REPRESENTING_NAME_W,
                               PR_BODY_W, PR_DISPLAY_TO_W});
    }

private:
    TextCondition Leaf(const std::vector<TextModel>& messages, const std::vector<ULONG>& tags)
    {
        constexpr ULONG Levels[] = {FL_SUBSTRING, FL_SUBSTRING, FL_SUBSTRING, FL_PREFIX, FL_FULLSTRING};
        constexpr ULONG Flags[] = {
            0, FL_IGNORECASE, FL_IGNORECASE, FL_IGNORENONSPACE, FL_LOOSE, FL_IGNORECASE | FL_IGNORENONSPACE};
        TextCondition condition;
        condition.kind = Below(8) == 0 ? TextCondition::Kind::Equal : TextCondition::Kind::Content;
        condition.tag = tags[Below(tags.size())];
        condition.fuzzy = Levels[Below(5)] | Flags[Below(6)];
        condition.text = Part(messages);
        return condition;
    }

    static const std::vector<Wide>& Alphabets()
    {
        static const std::vector<Wide> alphabets = []
        {
            std::vector<Wide> made;
            for (const char16_t* each :
                 {u"abcABC xyz", u"aeiouáÉíÓúâÊîÔûñÑçÇøØłŁđĐ e\u0301n\u0303", u"ſsSßẞfﬁﬂﬀi\u0149ǰ", u"iIİıi\u0307nN",
                  u"σΣςαΑάΆᾳιΙίΐ\u0345\u0399ᾼω\u03C9\u2126", u"жЖщЩйЙёЁиИе\u0306", u"אבגשׁשׂ\u05B8\u05BCמם",
                  u"ابتثأإآؤ\u064B\u0651ىي", u"कखगक्षि\u0940\u094Dज्ञ", u"กขคงา\u0E34\u0E48เแ",
                  u"中文字漢語日本語한글가각", u"\xD83D\xDE00\xD83D\xDE80\xD83C\xDDE9\u2764\uFE0F",
                  u"ab\xD800\xDC00\xD801\xDC28z", u"12 \"*'%_^:()-\t\n", u"KkÅåÅK\u212A\u212B"})
            {
                made.emplace_back();
                for (; *each != 0; ++each)
                {
                    made.back() += static_cast<WCHAR>(*each);
                }
            }
            made.push_back(Wide(1, WCHAR(0)) + static_cast<WCHAR>('a') + static_cast<WCHAR>('b'));
            return made;
        }();
        return alphabets;
    }

    std::mt19937 m_random;
};

inline TextFold FoldOfFuzzy(ULONG fuzzy)
{
    const bool loose = (fuzzy & FL_LOOSE) != 0;
    const bool noCase = loose || (fuzzy & FL_IGNORECASE) != 0, noMarks = loose || (fuzzy & FL_IGNORENONSPACE) != 0;
    return noCase ? (noMarks ? TextFold::IgnoreCaseAndMarks : TextFold::IgnoreCase)
                  : (noMarks ? TextFold::IgnoreMarks : TextFold::Exact);
}

inline bool LeafHolds(const TextCondition& condition, const std::map<ULONG, Wide>& texts)
{
    const auto found = texts.find(condition.tag);
    if (found == texts.end())
    {
        return false;
    }
    const bool isEqual = condition.kind == TextCondition::Kind::Equal;
    const TextFold fold = isEqual ? TextFold::IgnoreCase : FoldOfFuzzy(condition.fuzzy);
    const std::string whole = Folded(StoredOf(found->second), fold), part = Folded(StoredOf(condition.text), fold);
    const ULONG level = isEqual ? FL_FULLSTRING : condition.fuzzy & 0xFFFF;
    return level == FL_SUBSTRING ? whole.find(part) != std::string::npos
           : level == FL_PREFIX  ? whole.compare(0, part.size(), part) == 0
                                 : whole == part;
}

/// What the condition says of the message, by the texts of the model alone.
inline bool Holds(const TextCondition& condition, const TextModel& message)
{
    const auto holds = [&](const TextCondition& child) { return Holds(child, message); };
    switch (condition.kind)
    {
    case TextCondition::Kind::And:
        return std::all_of(condition.children.begin(), condition.children.end(), holds);
    case TextCondition::Kind::Or:
        return std::any_of(condition.children.begin(), condition.children.end(), holds);
    case TextCondition::Kind::Not:
        return !Holds(condition.children[0], message);
    case TextCondition::Kind::Recipient:
        return std::any_of(message.recipients.begin(), message.recipients.end(),
                           [&](const auto& texts) { return LeafHolds(condition.children[0], texts); });
    default:
        return LeafHolds(condition, message.texts);
    }
}

} // namespace zebstore::test
