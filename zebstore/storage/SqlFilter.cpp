#include "zebstore/storage/SqlFilter.h"

#include "zebstore/storage/Encoding.h"

#include <algorithm>

namespace zebstore
{

namespace
{

struct HotColumn
{
    ULONG tag;
    const char* name;
};

constexpr HotColumn HotColumns[] = {
    {PR_SUBJECT_W, "subject"},
    {PR_MESSAGE_DELIVERY_TIME, "delivered"},
    {PR_CLIENT_SUBMIT_TIME, "submitted"},
    {PR_LAST_MODIFICATION_TIME, "modified"},
    {PR_MESSAGE_SIZE, "size"},
    {PR_MESSAGE_FLAGS, "flags"},
    {PR_MESSAGE_CLASS_W, "class"},
    {PR_SENDER_NAME_W, "sender"},
};

const HotColumn* FindColumn(ULONG tag, const std::vector<ULONG>& computed)
{
    for (const HotColumn& column : HotColumns)
    {
        if (PROP_ID(column.tag) == PROP_ID(tag))
        {
            return std::find(computed.begin(), computed.end(), PROP_ID(tag)) == computed.end() ? &column : nullptr;
        }
    }
    return nullptr;
}

const char* const Operators[] = {"<", "<=", ">", ">=", "=", "!="};

SqlFilter Condition(const std::string& test)
{
    SqlFilter filter;
    filter.sql = "(" + test + ")";
    return filter;
}

std::optional<SqlFilter> PropertyFilter(const RestrictionNode& node, const HotColumn& column)
{
    if (!TypesMatch(PROP_TYPE(column.tag), node.valueType))
    {
        return std::nullopt;
    }
    SqlFilter filter = Condition(std::string(column.name) + Operators[node.relation] + "?");
    if (IsText(node.valueType))
    {
        filter.parameters.emplace_back(node.foldedValue);
    }
    else if (node.valueType == PT_LONG)
    {
        filter.parameters.emplace_back(std::int64_t(ReadNumber<std::int32_t>(node.value)));
    }
    else
    {
        filter.parameters.emplace_back(ReadNumber<std::int64_t>(node.value));
    }
    return filter;
}

std::optional<SqlFilter> ContentFilter(const RestrictionNode& node, const HotColumn& column)
{
    // The sort keys contain accents, so a search without them must look at the text itself.
    if (!IsText(PROP_TYPE(column.tag)) || !IsText(node.valueType) || (node.fuzzy & (FL_IGNORENONSPACE | FL_LOOSE)))
    {
        return std::nullopt;
    }
    const std::string folded = Folded(StoredTextOf(node.valueType, node.value), TextFold::IgnoreCase);
    const std::string name = column.name;
    SqlFilter filter;
    switch (node.fuzzy & 0xFFFF)
    {
    case FL_SUBSTRING:
        filter = Condition("instr(" + name + ",?)>0");
        break;
    case FL_PREFIX:
        filter = Condition("instr(" + name + ",?)=1");
        break;
    default:
        filter = Condition(name + "=?");
        break;
    }
    filter.parameters.emplace_back(folded);
    filter.exact = (node.fuzzy & FL_IGNORECASE) != 0;
    filter.searches = (node.fuzzy & 0xFFFF) != FL_FULLSTRING;
    return filter;
}

std::optional<SqlFilter> BitFilter(const RestrictionNode& node, const HotColumn& column)
{
    if (PROP_TYPE(column.tag) != PT_LONG)
    {
        return std::nullopt;
    }
    SqlFilter filter = Condition(std::string("(") + column.name + " & ?)" + (node.relation == BMR_NEZ ? "!=0" : "=0"));
    filter.parameters.emplace_back(std::int64_t(static_cast<std::int32_t>(node.number)));
    return filter;
}

std::optional<SqlFilter> ExistFilter(const RestrictionNode& node, const HotColumn& column)
{
    // Under PT_UNSPECIFIED a value of another type exists too, and the column does not know it.
    if (!TypesMatch(PROP_TYPE(column.tag), PROP_TYPE(node.tag)))
    {
        return std::nullopt;
    }
    return Condition(std::string(column.name) + " IS NOT NULL");
}

void Append(SqlFilter& to, const SqlFilter& more, const char* with)
{
    to.sql += to.sql.empty() ? "(" : with;
    to.sql += more.sql;
    to.parameters.insert(to.parameters.end(), more.parameters.begin(), more.parameters.end());
    to.exact = to.exact && more.exact;
    to.terms += more.terms;
    to.searches = to.searches || more.searches;
}

// SQLite evaluates the parts from left to right and no more of them than it needs: the cheap ones go first.
std::optional<SqlFilter> Joined(std::vector<SqlFilter> parts, const char* with)
{
    if (parts.empty())
    {
        return std::nullopt;
    }
    std::stable_partition(parts.begin(), parts.end(), [](const SqlFilter& part) { return !part.searches; });
    SqlFilter joined;
    joined.terms = 0;
    for (const SqlFilter& part : parts)
    {
        Append(joined, part, with);
    }
    joined.sql += ")";
    return joined;
}

std::optional<SqlFilter> AndFilter(const RestrictionNode& node, const std::vector<ULONG>& computed)
{
    std::vector<SqlFilter> parts;
    size_t terms = 0;
    for (const RestrictionNode& child : node.children)
    {
        const std::optional<SqlFilter> filter = MakeFilter(child, computed);
        if (filter && terms + filter->terms <= MostSqlTerms)
        {
            terms += filter->terms;
            parts.push_back(*filter);
        }
    }
    const bool isWhole = parts.size() == node.children.size();
    std::optional<SqlFilter> joined = Joined(std::move(parts), " AND ");
    if (joined)
    {
        joined->exact = joined->exact && isWhole;
    }
    return joined;
}

std::optional<SqlFilter> OrFilter(const RestrictionNode& node, const std::vector<ULONG>& computed)
{
    if (node.children.size() > MostSqlTerms)
    {
        return std::nullopt;
    }
    std::vector<SqlFilter> parts;
    size_t terms = 0;
    for (const RestrictionNode& child : node.children)
    {
        const std::optional<SqlFilter> filter = MakeFilter(child, computed);
        if (!filter || terms + filter->terms > MostSqlTerms)
        {
            return std::nullopt;
        }
        terms += filter->terms;
        parts.push_back(*filter);
    }
    return Joined(std::move(parts), " OR ");
}

std::optional<SqlFilter> NotFilter(const RestrictionNode& node, const std::vector<ULONG>& computed)
{
    std::optional<SqlFilter> filter = MakeFilter(node.children[0], computed);
    // The opposite of "more than matches" is less than matches.
    if (!filter || !filter->exact)
    {
        return std::nullopt;
    }
    filter->sql = "(" + filter->sql + " IS NOT TRUE)"; // also where a column is NULL
    return filter;
}

} // namespace

int SqlFilter::Bind(Query& query, int first) const
{
    for (const auto& parameter : parameters)
    {
        if (const auto* number = std::get_if<std::int64_t>(&parameter))
        {
            query.Bind(first++, *number);
        }
        else
        {
            query.BindText(first++, std::get<std::string>(parameter));
        }
    }
    return first;
}

std::optional<SqlFilter> MakeFilter(const RestrictionNode& node, const std::vector<ULONG>& computed)
{
    switch (node.kind)
    {
    case RES_AND:
    case RES_COMMENT:
        return AndFilter(node, computed);
    case RES_OR:
        return OrFilter(node, computed);
    case RES_NOT:
        return NotFilter(node, computed);
    default:
        break;
    }
    const HotColumn* column = FindColumn(node.tag, computed);
    if (column == nullptr)
    {
        return std::nullopt;
    }
    switch (node.kind)
    {
    case RES_PROPERTY:
        return PropertyFilter(node, *column);
    case RES_CONTENT:
        return ContentFilter(node, *column);
    case RES_BITMASK:
        return BitFilter(node, *column);
    case RES_EXIST:
        return ExistFilter(node, *column);
    default:
        return std::nullopt;
    }
}

std::optional<std::string> MakeOrder(const SortOrder& order, const std::vector<ULONG>& computed)
{
    std::string sql;
    for (const SortOrder::Key& key : order.Keys())
    {
        const HotColumn* column = FindColumn(key.tag, computed);
        if (column == nullptr || !TypesMatch(PROP_TYPE(column->tag), PROP_TYPE(key.tag)))
        {
            return std::nullopt;
        }
        sql += std::string(sql.empty() ? "" : ", ") + column->name + (key.descending ? " DESC" : "");
    }
    return sql;
}

} // namespace zebstore
