// What SQL can say of restrictions and sort orders over the table of messages.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/Restriction.h"
#include "zebstore/storage/SortOrder.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace zebstore
{

/// A condition over message's columns with its parameters in the order of their marks. A row passes when it is true; of a
/// row without the column it is 0 or NULL.
struct SqlFilter
{
    std::string sql;
    std::vector<std::variant<std::int64_t, std::string>> parameters;
    /// The condition lets exactly the rows through that the restriction does, where no sort key was cut
    /// (HasCutKeys); else it lets more through.
    bool exact = true;
    /// Comparisons in the condition.
    size_t terms = 1;
    /// Looks for a text inside another, which takes longer than any other comparison.
    bool searches = false;

    /// Binds the parameters from `first` on; the filter must outlive the query. @return the next index
    int Bind(Query& query, int first) const;
};

/// Comparisons that are handed to SQL at most; what is wider is judged row by row by the restriction itself.
constexpr size_t MostSqlTerms = 500;

/// Nothing when SQL cannot narrow the rows at all, or the restriction is too wide for it.
/// @param computed identifiers that are computed and so not for SQL to judge
std::optional<SqlFilter> MakeFilter(const RestrictionNode& node, const std::vector<ULONG>& computed);

/// "column [DESC], ..." when every key is a column; nothing else.
std::optional<std::string> MakeOrder(const SortOrder& order, const std::vector<ULONG>& computed);

} // namespace zebstore
