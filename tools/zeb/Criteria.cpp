#include "tools/zeb/Criteria.h"

#include "platform/tags.h"
#include "tools/common/Failure.h"
#include "tools/common/MailProperties.h"
#include "tools/common/Moments.h"
#include "tools/common/Output.h"
#include "tools/zeb/Arguments.h"

#include <iterator>

namespace zeb::tools
{
namespace
{

void Contains(CZebRestriction& node, ULONG tag, const CStringW& text)
{
    node.CreateContentW(tag, text, FL_SUBSTRING | FL_IGNORECASE);
}

/// The sender as listings show it: the author, or the sender of a message without an author.
void IsFrom(CZebRestriction& node, const CStringW& from)
{
    node.CreateOr(3);
    CZebRestriction name = node[0], address = node[1], noAuthor = node[2];
    Contains(name, PR_SENT_REPRESENTING_NAME_W, from);
    Contains(address, PR_SENT_REPRESENTING_EMAIL_ADDRESS_W, from);
    noAuthor.CreateAnd(2);
    CZebRestriction unnamed = noAuthor[0], sent = noAuthor[1];
    unnamed.CreateNot().CreateProp(PR_SENT_REPRESENTING_NAME_W, RELOP_GT) = CStringW();
    sent.CreateOr(2);
    CZebRestriction senderName = sent[0], senderAddress = sent[1];
    Contains(senderName, PR_SENDER_NAME_W, from);
    Contains(senderAddress, PR_SENDER_EMAIL_ADDRESS_W, from);
}

/// The name or an address of a recipient.
void IsTo(CZebRestriction& node, const CStringW& to)
{
    constexpr ULONG Tags[] = {PR_DISPLAY_NAME_W, PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W};
    CZebRestriction recipient = node.CreateSubRestriction(PR_MESSAGE_RECIPIENTS);
    recipient.CreateOr(static_cast<ULONG>(std::size(Tags)));
    for (ULONG i = 0; i < std::size(Tags); ++i)
    {
        CZebRestriction child = recipient[i];
        Contains(child, Tags[i], to);
    }
}

/// The subject, the text, the sender or a recipient.
void IsAnywhere(CZebRestriction& node, const CStringW& text)
{
    node.CreateOr(4);
    CZebRestriction subject = node[0], body = node[1], from = node[2], to = node[3];
    Contains(subject, PR_SUBJECT_W, text);
    Contains(body, PR_BODY_W, text);
    IsFrom(from, text);
    IsTo(to, text);
}

/// The date that listings show: the submit time, or the delivery time when it has none.
void CompareDate(CZebRestriction& node, ULONG relop, const FILETIME& time)
{
    node.CreateOr(2);
    CZebRestriction sent = node[0], delivered = node[1];
    sent.CreateProp(PR_CLIENT_SUBMIT_TIME, relop) = time;
    delivered.CreateAnd(2);
    CZebRestriction notSent = delivered[0], then = delivered[1];
    notSent.CreateNot().CreateExist(PR_CLIENT_SUBMIT_TIME);
    then.CreateProp(PR_MESSAGE_DELIVERY_TIME, relop) = time;
}

} // namespace

Criteria::Criteria(const CriteriaText& text)
    : m_any(text.any)
    , m_inverted(text.inverted)
{
    AddTexts(text);
    AddTimes(text);
    AddSizes(text);
    AddStates(text);
    for (const std::string& each : text.where)
    {
        m_comparisons.push_back(std::make_shared<Comparison>(ParseComparison(each)));
        m_conditions.push_back([comparison = m_comparisons.back()](CZebRestriction& node) { comparison->Build(node); });
    }
    if (m_inverted && m_conditions.empty())
    {
        throw UsageError("--not needs a condition");
    }
}

void Criteria::AddTexts(const CriteriaText& text)
{
    const auto add = [&](const std::string& value, const auto& build)
    {
        if (!value.empty())
        {
            m_conditions.push_back([wanted = WideFromUtf8(value), build](CZebRestriction& node)
            { build(node, wanted); });
        }
    };
    add(text.subject, [](CZebRestriction& node, const CStringW& wanted) { Contains(node, PR_SUBJECT_W, wanted); });
    add(text.from, IsFrom);
    add(text.to, IsTo);
    add(text.body, [](CZebRestriction& node, const CStringW& wanted) { Contains(node, PR_BODY_W, wanted); });
    add(text.text, IsAnywhere);
    add(text.messageClass, [](CZebRestriction& node, const CStringW& wanted)
    { node.CreateContentW(PR_MESSAGE_CLASS_W, wanted, FL_PREFIX | FL_IGNORECASE); });
}

void Criteria::AddStates(const CriteriaText& text)
{
    if (text.unread)
    {
        m_conditions.push_back([](CZebRestriction& node)
        { node.CreateBitMask(PR_MESSAGE_FLAGS, MSGFLAG_READ, BMR_EQZ); });
    }
    if (text.flagged)
    {
        m_conditions.push_back([](CZebRestriction& node) { node.CreateProp(PR_FLAG_STATUS, RELOP_EQ) = FlagMarked; });
    }
    if (text.attachments)
    {
        m_conditions.push_back([](CZebRestriction& node) { node.CreateProp(PR_HASATTACH, RELOP_EQ) = true; });
    }
}

void Criteria::Resolve(CZebIProp& object)
{
    for (const std::shared_ptr<Comparison>& each : m_comparisons)
    {
        each->Resolve(object);
    }
}

void Criteria::AddTimes(const CriteriaText& text)
{
    const Zone zone = text.utc ? Zone::Utc : Zone::Local;
    if (!text.since.empty())
    {
        m_conditions.push_back([since = ParseMoment("--since", text.since, zone)](CZebRestriction& node)
        { CompareDate(node, RELOP_GE, since.time); });
    }
    if (!text.until.empty())
    {
        m_conditions.push_back([until = ParseMoment("--until", text.until, zone)](CZebRestriction& node)
        { CompareDate(node, until.isDay ? RELOP_LT : RELOP_LE, until.end); });
    }
}

void Criteria::AddSizes(const CriteriaText& text)
{
    if (!text.size.empty())
    {
        m_conditions.push_back([size = ParseSize("--size", text.size)](CZebRestriction& node)
        { node.CreateProp(PR_MESSAGE_SIZE, RELOP_GE) = size; });
    }
    if (!text.maxSize.empty())
    {
        m_conditions.push_back([size = ParseSize("--max-size", text.maxSize)](CZebRestriction& node)
        { node.CreateProp(PR_MESSAGE_SIZE, RELOP_LE) = size; });
    }
}

void Criteria::Build(CZebRestriction& node) const
{
    if (!m_inverted)
    {
        return BuildAll(node);
    }
    CZebRestriction inner = node.CreateNot();
    BuildAll(inner);
}

void Criteria::BuildAll(CZebRestriction& node) const
{
    if (m_conditions.size() == 1)
    {
        return m_conditions.front()(node);
    }
    const ULONG count = static_cast<ULONG>(m_conditions.size());
    if (m_any)
    {
        node.CreateOr(count);
    }
    else
    {
        node.CreateAnd(count);
    }
    for (ULONG i = 0; i < count; ++i)
    {
        CZebRestriction child = node[i];
        m_conditions[i](child);
    }
}

} // namespace zeb::tools
