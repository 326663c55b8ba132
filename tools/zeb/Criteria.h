// What messages are looked for, as a restriction.
#pragma once

#include "zebapi/ZebAPI.h"

#include <functional>
#include <string>
#include <vector>

namespace zeb::tools
{

/// The conditions as they stand on a command line; empty ones do not count.
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
    /// @throws UsageError for a date or a size that is none
    explicit Criteria(const CriteriaText& text);

    /// Without a condition everything matches.
    bool IsEmpty() const { return m_conditions.empty(); }
    /// Fills a fresh node. @throws CZebException*
    void Build(CZebRestriction& node) const;

private:
    using Condition = std::function<void(CZebRestriction& node)>;

    void AddTimes(const CriteriaText& text);
    void AddSizes(const CriteriaText& text);

    std::vector<Condition> m_conditions;
    bool m_any;
};

} // namespace zeb::tools
