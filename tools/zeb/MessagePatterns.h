// Search conditions that are regular expressions: the tool evaluates them, because no provider does.
#pragma once

#include "tools/common/ReadableMessage.h"
#include "tools/zeb/Criteria.h"
#include "tools/zeb/Pattern.h"

namespace zeb::tools
{

class MessagePatterns
{
public:
    /// No conditions.
    MessagePatterns() = default;
    /// Takes the texts out of the conditions (subject, from, to, body, text), which then go to the provider without
    /// them. @throws UsageError for an invalid expression
    explicit MessagePatterns(CriteriaText& text);

    bool IsEmpty() const { return m_conditions.empty(); }
    /// Whether all of them match, or, with `any`, one. @throws CZebException*
    bool Match(CZebMessage& message, bool any) const;

private:
    using Condition = std::function<bool(const ReadableMessage& message)>;

    void Add(const char* option, std::string& text, bool (*match)(const ReadableMessage&, const Pattern&));

    std::vector<Condition> m_conditions;
    BodyKind m_body = BodyKind::None;
};

} // namespace zeb::tools
