#include "tools/zeb/Criteria.h"

#include "tools/common/Output.h"
#include "tools/zeb/Arguments.h"
#include "tools/zeb/Moments.h"

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
{
    if (!text.subject.empty())
    {
        m_conditions.push_back([subject = WideFromUtf8(text.subject)](CZebRestriction& node)
        { Contains(node, PR_SUBJECT_W, subject); });
    }
    if (!text.from.empty())
    {
        m_conditions.push_back([from = WideFromUtf8(text.from)](CZebRestriction& node) { IsFrom(node, from); });
    }
    AddTimes(text);
    AddSizes(text);
    if (!text.messageClass.empty())
    {
        m_conditions.push_back([messageClass = WideFromUtf8(text.messageClass)](CZebRestriction& node)
        { node.CreateContentW(PR_MESSAGE_CLASS_W, messageClass, FL_PREFIX | FL_IGNORECASE); });
    }
    if (text.unread)
    {
        m_conditions.push_back([](CZebRestriction& node)
        { node.CreateBitMask(PR_MESSAGE_FLAGS, MSGFLAG_READ, BMR_EQZ); });
    }
    if (text.attachments)
    {
        m_conditions.push_back([](CZebRestriction& node) { node.CreateProp(PR_HASATTACH, RELOP_EQ) = true; });
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
