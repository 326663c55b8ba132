// Search conditions for messages, as a restriction.
#pragma once

#include "tools/zeb/Comparison.h"
#include "zebapi/ZebAPI.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zeb::tools
{

/// The conditions as given on the command line; empty ones are ignored.
struct CriteriaText
{
    std::string subject, from, to, body, text, since, until, size, maxSize, messageClass;
    std::vector<std::string> where; ///< see ParseComparison
    bool unread = false;
    bool flagged = false;
    bool attachments = false;
    bool any = false;      ///< one condition is enough
    bool inverted = false; ///< messages that do not match
    bool utc = false;      ///< dates without a zone are UTC, not local
};

class Criteria
{
public:
    /// @throws UsageError for an invalid date, size or comparison, and for no condition that is to be inverted
    explicit Criteria(const CriteriaText& text);

    /// Gives named properties their tags in the store of `object`. Call it before Build. @throws CZebException*
    void Resolve(CZebIProp& object);

    /// Without conditions every message matches.
    bool IsEmpty() const { return m_conditions.empty(); }
    /// Fills a new node. @throws CZebException*
    void Build(CZebRestriction& node) const;

private:
    using Condition = std::function<void(CZebRestriction& node)>;

    void AddTimes(const CriteriaText& text);
    void AddTexts(const CriteriaText& text);
    void AddSizes(const CriteriaText& text);
    void AddStates(const CriteriaText& text);
    void BuildAll(CZebRestriction& node) const;

    std::vector<Condition> m_conditions;
    std::vector<std::shared_ptr<Comparison>> m_comparisons; ///< also used by their conditions
    bool m_any;
    bool m_inverted;
};

} // namespace zeb::tools
