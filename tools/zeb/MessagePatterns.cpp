#include "tools/zeb/MessagePatterns.h"

#include <algorithm>
#include <utility>

namespace zeb::tools
{
namespace
{

bool MatchesAddress(const MailAddress& address, const Pattern& pattern)
{
    return pattern.Matches(address.name) || pattern.Matches(address.address);
}

bool MatchesSubject(const ReadableMessage& message, const Pattern& pattern)
{
    return pattern.Matches(message.subject);
}

bool MatchesAuthor(const ReadableMessage& message, const Pattern& pattern)
{
    return MatchesAddress(message.from, pattern);
}

bool MatchesRecipient(const ReadableMessage& message, const Pattern& pattern)
{
    const auto one = [&](const MailAddress& address) { return MatchesAddress(address, pattern); };
    const auto any = [&](const std::vector<MailAddress>& list) { return std::any_of(list.begin(), list.end(), one); };
    return any(message.to) || any(message.cc) || any(message.bcc);
}

bool MatchesBody(const ReadableMessage& message, const Pattern& pattern)
{
    return pattern.Matches(message.text);
}

bool MatchesAnywhere(const ReadableMessage& message, const Pattern& pattern)
{
    return MatchesSubject(message, pattern) || MatchesAuthor(message, pattern) || MatchesRecipient(message, pattern) ||
           MatchesBody(message, pattern);
}

} // namespace

MessagePatterns::MessagePatterns(CriteriaText& text)
{
    m_body = text.body.empty() && text.text.empty() ? BodyKind::None : BodyKind::Plain;
    Add("--subject", text.subject, MatchesSubject);
    Add("--from", text.from, MatchesAuthor);
    Add("--to", text.to, MatchesRecipient);
    Add("--body", text.body, MatchesBody);
    Add("--text", text.text, MatchesAnywhere);
}

void MessagePatterns::Add(const char* option, std::string& text, bool (*match)(const ReadableMessage&, const Pattern&))
{
    const std::string expression = std::exchange(text, {});
    if (!expression.empty())
    {
        m_conditions.push_back([pattern = Pattern(option, expression), match](const ReadableMessage& message)
        { return match(message, pattern); });
    }
}

bool MessagePatterns::Match(CZebMessage& message, bool any) const
{
    const ReadableMessage read = ReadTextOnly(message, m_body);
    const auto matches = [&](const Condition& condition) { return condition(read); };
    return any ? std::any_of(m_conditions.begin(), m_conditions.end(), matches)
               : std::all_of(m_conditions.begin(), m_conditions.end(), matches);
}

} // namespace zeb::tools
