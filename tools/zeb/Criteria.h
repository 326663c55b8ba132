// Search conditions for messages, as a restriction.
#pragma once

#include "zebapi/ZebAPI.h"

#include <functional>
#include <string>
#include <vector>

namespace zeb::tools
{

/// The conditions as given on the command line; empty ones are ignored.
struct CriteriaText
{
    std::string subject, from, since, until, size, maxSize, messageClass;
    bool unread = false;
    bool attachments = false;
    bool any = false; ///< one condition is enough
    bool utc = false; ///< dates without a zone are UTC, not local
};

class Criteria
{
public:
    /// @throws UsageError for an invalid date or size
    explicit Criteria(const CriteriaText& text);

    /// Without conditions every message matches.
    bool IsEmpty() const { return m_conditions.empty(); }
    /// Fills a new node. @throws CZebException*
    void Build(CZebRestriction& node) const;

private:
    using Condition = std::function<void(CZebRestriction& node)>;

    void AddTimes(const CriteriaText& text);
    void AddSizes(const CriteriaText& text);

    std::vector<Condition> m_conditions;
    bool m_any;
};

} // namespace zeb::tools
