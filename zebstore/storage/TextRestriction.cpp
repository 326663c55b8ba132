#include "zebstore/storage/TextRestriction.h"

#include "zebstore/storage/Encoding.h"

namespace zebstore
{

namespace
{

/// Alternatives that are looked up at most; reading the rows takes less time than more.
constexpr size_t MostAlternatives = 64;

using FieldOf = std::optional<TextField> (*)(ULONG tag);

std::optional<TextPlan> PlanOf(const RestrictionNode& node, FieldOf fieldOf);

// Equality without case is a special case of "contains".
bool AsksForText(const RestrictionNode& node)
{
    return IsText(node.valueType) && (node.kind == RES_CONTENT || node.relation == RELOP_EQ);
}

std::optional<TextPlan> LeafPlan(const RestrictionNode& node, FieldOf fieldOf)
{
    const std::optional<TextField> field = fieldOf(node.tag);
    if (!field || !AsksForText(node))
    {
        return std::nullopt;
    }
    TextPlan plan;
    plan.grams = GramsWanted(*field, StoredTextOf(node.valueType, node.value));
    return plan.grams.empty() ? std::nullopt : std::optional(plan);
}

std::optional<TextPlan> AllPlan(const RestrictionNode& node, FieldOf fieldOf)
{
    TextPlan all;
    for (const RestrictionNode& child : node.children)
    {
        if (std::optional<TextPlan> plan = PlanOf(child, fieldOf))
        {
            all.children.push_back(std::move(*plan));
        }
    }
    return all.children.empty() ? std::nullopt : std::optional(all);
}

std::optional<TextPlan> AnyPlan(const RestrictionNode& node, FieldOf fieldOf)
{
    if (node.children.empty() || node.children.size() > MostAlternatives)
    {
        return std::nullopt;
    }
    TextPlan any;
    any.isAny = true;
    for (const RestrictionNode& child : node.children)
    {
        std::optional<TextPlan> plan = PlanOf(child, fieldOf);
        if (!plan)
        {
            return std::nullopt;
        }
        any.children.push_back(std::move(*plan));
    }
    return any;
}

std::optional<TextPlan> PlanOf(const RestrictionNode& node, FieldOf fieldOf)
{
    switch (node.kind)
    {
    case RES_AND:
    case RES_COMMENT:
        return AllPlan(node, fieldOf);
    case RES_OR:
        return AnyPlan(node, fieldOf);
    case RES_CONTENT:
    case RES_PROPERTY:
        return LeafPlan(node, fieldOf);
    case RES_SUBRESTRICTION:
        // One recipient fits as a whole, so the recipients together have the texts.
        return PROP_ID(node.tag) == PROP_ID(PR_MESSAGE_RECIPIENTS) ? PlanOf(node.children[0], RecipientFieldOf)
                                                                   : std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<TextPlan> MakeTextPlan(const RestrictionNode& node)
{
    return PlanOf(node, TextFieldOf);
}

} // namespace zebstore
