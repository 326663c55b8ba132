#include "tests/zebstore/model/Condition.h"

#include "platform/tags.h"

namespace zebstore::model
{

ConditionMaker::ConditionMaker(Random& random, const std::vector<Kind>& kinds, const Item* sample)
    : m_random(random)
    , m_kinds(kinds)
    , m_sample(sample)
{
}

Condition ConditionMaker::Tree(int levels)
{
    if (levels == 0 || m_random.OneIn(3))
    {
        return m_random.OneIn(8) ? Sub() : Leaf();
    }
    Condition condition;
    constexpr ULONG Kinds[] = {RES_AND, RES_AND, RES_OR, RES_OR, RES_NOT, RES_COMMENT};
    condition.kind = m_random.Pick(Kinds);
    const bool isList = condition.kind == RES_AND || condition.kind == RES_OR;
    size_t children = isList ? 1 + m_random.Below(3) : 1;
    if (m_random.OneIn(20) && condition.kind != RES_NOT)
    {
        children = 0;
    }
    // Many alternatives are looked up in another way than few.
    else if (m_random.OneIn(20) && condition.kind == RES_OR)
    {
        children = 16 + m_random.Below(20);
        levels = 1;
    }
    for (; children > 0; --children)
    {
        condition.children.push_back(Tree(levels - 1));
    }
    return condition;
}

Condition ConditionMaker::Leaf()
{
    return Of(m_random.Pick(m_kinds), m_sample != nullptr ? &m_sample->own : nullptr);
}

Condition ConditionMaker::Sub()
{
    const bool ofRecipients = m_random.OneIn(2);
    const std::vector<Properties>* rows = nullptr;
    if (m_sample != nullptr)
    {
        rows = ofRecipients ? &m_sample->recipients : &m_sample->attachments;
    }
    const Properties* sample = rows != nullptr && !rows->empty() ? &m_random.Pick(*rows) : nullptr;
    Condition condition;
    condition.kind = RES_SUBRESTRICTION;
    condition.tag = ofRecipients ? ULONG(PR_MESSAGE_RECIPIENTS) : ULONG(PR_MESSAGE_ATTACHMENTS);
    const std::vector<Kind>& kinds = ofRecipients ? RecipientKinds() : AttachmentKinds();
    condition.children.push_back(Of(m_random.Pick(kinds), sample));
    if (m_random.OneIn(3))
    {
        Condition both;
        both.kind = m_random.OneIn(2) ? RES_AND : RES_OR;
        both.children = {condition.children[0], Of(m_random.Pick(kinds), sample)};
        condition.children[0] = both;
    }
    return condition;
}

// A value of a row, or any; of a multi-valued property also one of its values.
Value ConditionMaker::Sample(const Kind& kind, const Properties* sample, ULONG type)
{
    type = (type & MV_INSTANCE) != 0 ? SingleOf(type) : type;
    const auto found = sample != nullptr ? sample->find(kind.id) : Properties::const_iterator();
    if (sample == nullptr || found == sample->end() || m_random.OneIn(3))
    {
        const bool single = (type & MV_FLAG) != 0 && !m_random.OneIn(4);
        return m_random.ValueOf(single ? SingleOf(type) : type);
    }
    const Value& value = found->second;
    return value.many.empty() || m_random.OneIn(4) ? value : m_random.Pick(value.many);
}

Condition ConditionMaker::Of(const Kind& kind, const Properties* sample)
{
    const ULONG type = m_random.Pick(kind.types);
    Condition condition;
    condition.tag = PROP_TAG(type, kind.id);
    const Value value = Sample(kind, sample, type);
    condition.relation = static_cast<ULONG>(m_random.Below(6));
    switch (m_random.Below(10))
    {
    case 0:
        condition.kind = RES_EXIST;
        condition.tag = m_random.OneIn(3) ? PROP_TAG(PT_UNSPECIFIED, kind.id) : condition.tag;
        return condition;
    case 1:
        condition.kind = RES_SIZE;
        condition.number = static_cast<ULONG>(SizeOf(value, type) + m_random.Below(3));
        return condition;
    case 2:
    {
        const Kind& other = m_random.OneIn(3) ? m_random.Pick(m_kinds) : kind;
        condition.kind = RES_COMPAREPROPS;
        condition.otherTag = PROP_TAG(m_random.Pick(other.types), other.id);
        return condition;
    }
    case 3:
    case 4:
    case 5:
        if (IsTextType(value.type) || value.type == PT_BINARY)
        {
            return Content(condition.tag, value);
        }
        [[fallthrough]];
    default:
        break;
    }
    if ((type == PT_LONG || type == PT_I2) && m_random.OneIn(3))
    {
        return Bits(condition.tag);
    }
    condition.kind = RES_PROPERTY;
    condition.value = m_random.OneIn(15) ? m_random.ValueOf(m_random.OneIn(2) ? PT_LONG : PT_UNICODE) : value;
    return condition;
}

Condition ConditionMaker::Content(ULONG tag, const Value& value)
{
    constexpr ULONG Levels[] = {FL_FULLSTRING, FL_SUBSTRING, FL_PREFIX};
    constexpr ULONG Flags[] = {0, FL_IGNORECASE, FL_IGNORENONSPACE, FL_LOOSE, FL_IGNORECASE | FL_IGNORENONSPACE};
    Condition condition;
    condition.kind = RES_CONTENT;
    condition.tag = tag;
    condition.number = m_random.Pick(Levels) | m_random.Pick(Flags);
    condition.value = value;
    const auto cut = [&](auto& whole)
    {
        if (!m_random.OneIn(3))
        {
            const size_t begin = m_random.OneIn(2) ? 0 : m_random.Below(whole.size() + 1);
            whole = whole.substr(begin, m_random.Below(8));
        }
    };
    cut(condition.value.text);
    cut(condition.value.bytes);
    return condition;
}

Condition ConditionMaker::Bits(ULONG tag)
{
    Condition condition;
    condition.kind = RES_BITMASK;
    condition.tag = tag;
    condition.relation = m_random.OneIn(2) ? BMR_NEZ : BMR_EQZ;
    condition.number = m_random.OneIn(4) ? 0x80000000 : 1u << m_random.Below(4);
    return condition;
}

Order ConditionMaker::SortOrder(size_t most)
{
    Order order;
    for (size_t left = m_random.Below(most + 1); left > 0; --left)
    {
        const Kind& kind = m_random.Pick(m_kinds);
        order.push_back({PROP_TAG(m_random.Pick(kind.types), kind.id), m_random.OneIn(2)});
    }
    return order;
}

const std::vector<Kind>& RecipientKinds()
{
    static const std::vector<Kind> kinds = {{PROP_ID(PR_DISPLAY_NAME), {PT_UNICODE}},
                                            {PROP_ID(PR_EMAIL_ADDRESS), {PT_UNICODE}},
                                            {PROP_ID(PR_RECIPIENT_TYPE), {PT_LONG}},
                                            {PROP_ID(PR_ROWID), {PT_LONG}}};
    return kinds;
}

const std::vector<Kind>& AttachmentKinds()
{
    static const std::vector<Kind> kinds = {{PROP_ID(PR_ATTACH_FILENAME), {PT_UNICODE}},
                                            {PROP_ID(PR_ATTACH_METHOD), {PT_LONG}},
                                            {PROP_ID(PR_ATTACH_DATA_BIN), {PT_BINARY}}};
    return kinds;
}

} // namespace zebstore::model
