#include "tests/zebstore/model/Condition.h"

#include "platform/tags.h"

#include <algorithm>

namespace zebstore::model
{

namespace
{

bool RelationHolds(ULONG relation, std::optional<int> order)
{
    if (!order)
    {
        return relation == RELOP_NE;
    }
    switch (relation)
    {
    case RELOP_LT:
        return *order < 0;
    case RELOP_LE:
        return *order <= 0;
    case RELOP_GT:
        return *order > 0;
    case RELOP_GE:
        return *order >= 0;
    case RELOP_EQ:
        return *order == 0;
    default:
        return *order != 0;
    }
}

const Value& Find(const Properties& properties, ULONG tag)
{
    static const Value none;
    const auto found = properties.find((PROP_TYPE(tag) & MV_INSTANCE) != 0 ? InstanceId(tag) : PROP_ID(tag));
    return found != properties.end() ? found->second : none;
}

// Whether a column of this tag shows the value.
bool IsShown(const Value& value, ULONG tag)
{
    const ULONG type = PROP_TYPE(tag);
    return type == PT_UNSPECIFIED || AreComparable(value.type, (type & MV_INSTANCE) != 0 ? SingleOf(type) : type);
}

bool PartFits(ULONG level, const std::string& whole, const std::string& part)
{
    switch (level)
    {
    case FL_SUBSTRING:
        return whole.find(part) != std::string::npos;
    case FL_PREFIX:
        return whole.compare(0, part.size(), part) == 0;
    default:
        return whole == part;
    }
}

bool ContentHolds(const Condition& condition, const Value& value)
{
    const Value& part = condition.value;
    if ((value.type & MV_FLAG) != 0)
    {
        return std::any_of(value.many.begin(), value.many.end(),
                           [&](const Value& each) { return ContentHolds(condition, each); });
    }
    if (!AreComparable(value.type, part.type))
    {
        return false;
    }
    const ULONG level = condition.number & 0xFFFF;
    const TextFold fold = test::FoldOfFuzzy(condition.number);
    return value.type == PT_BINARY ? PartFits(level, value.bytes, part.bytes)
                                   : PartFits(level, FoldedText(value.text, fold), FoldedText(part.text, fold));
}

bool PropertyHolds(const Condition& condition, const Value& value)
{
    if ((value.type & MV_FLAG) != 0 && (condition.value.type & MV_FLAG) == 0)
    {
        return std::any_of(value.many.begin(), value.many.end(),
                           [&](const Value& each) { return PropertyHolds(condition, each); });
    }
    return AreComparable(value.type, condition.value.type) &&
           RelationHolds(condition.relation, Compared(value, condition.value));
}

bool CompareHolds(const Condition& condition, const Properties& own)
{
    const Value& left = Find(own, condition.tag);
    const Value& right = Find(own, condition.otherTag);
    return left && right && AreComparable(left.type, right.type) &&
           RelationHolds(condition.relation, Compared(left, right));
}

bool BitsHold(const Condition& condition, const Value& value)
{
    return (value.type == PT_LONG || value.type == PT_I2) &&
           ((static_cast<ULONG>(value.number) & (value.type == PT_I2 ? 0xFFFF : ~ULONG(0)) & condition.number) != 0) ==
               (condition.relation == BMR_NEZ);
}

bool SizeHolds(const Condition& condition, const Value& value)
{
    const std::uint64_t size = SizeOf(value, PROP_TYPE(condition.tag));
    return RelationHolds(condition.relation, size < condition.number ? -1 : size > condition.number ? 1 : 0);
}

bool ValueHolds(const Condition& condition, const Value& value)
{
    if (!value)
    {
        return false;
    }
    switch (condition.kind)
    {
    case RES_CONTENT:
        return ContentHolds(condition, value);
    case RES_PROPERTY:
        return PropertyHolds(condition, value);
    case RES_BITMASK:
        return BitsHold(condition, value);
    case RES_SIZE:
        return SizeHolds(condition, value);
    default:
        return IsShown(value, condition.tag);
    }
}

bool SubHolds(const Condition& condition, const Item& item)
{
    const bool ofRecipients = PROP_ID(condition.tag) == PROP_ID(PR_MESSAGE_RECIPIENTS);
    const std::vector<Properties>& rows = ofRecipients ? item.recipients : item.attachments;
    return std::any_of(rows.begin(), rows.end(),
                       [&](const Properties& row) { return Holds(condition.children[0], {row, {}, {}}); });
}

const char* const Relations[] = {"<", "<=", ">", ">=", "=", "!="};

std::string Joined(const Condition& condition, const char* word)
{
    std::string text = word;
    for (const Condition& child : condition.children)
    {
        text += (&child == condition.children.data() ? "(" : ", ") + Readable(child);
    }
    return text + (condition.children.empty() ? "()" : ")");
}

std::string HexText(ULONG number)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%X", static_cast<unsigned>(number));
    return text;
}

} // namespace

bool Holds(const Condition& condition, const Item& item)
{
    const auto holds = [&](const Condition& child) { return Holds(child, item); };
    const std::vector<Condition>& children = condition.children;
    switch (condition.kind)
    {
    case RES_AND:
    case RES_COMMENT:
        return std::all_of(children.begin(), children.end(), holds);
    case RES_OR:
        return std::any_of(children.begin(), children.end(), holds);
    case RES_NOT:
        return !Holds(children[0], item);
    case RES_COMPAREPROPS:
        return CompareHolds(condition, item.own);
    case RES_SUBRESTRICTION:
        return SubHolds(condition, item);
    default:
        return ValueHolds(condition, Find(item.own, condition.tag));
    }
}

std::string ReadableTag(ULONG tag)
{
    char text[16];
    std::snprintf(text, sizeof(text), "%08X", static_cast<unsigned>(tag));
    return text;
}

std::string Readable(const Condition& condition)
{
    const std::string tag = ReadableTag(condition.tag);
    const std::string relation = condition.relation < 6 ? Relations[condition.relation] : "?";
    switch (condition.kind)
    {
    case RES_AND:
        return Joined(condition, "and");
    case RES_OR:
        return Joined(condition, "or");
    case RES_NOT:
        return Joined(condition, "not");
    case RES_COMMENT:
        return Joined(condition, "comment");
    case RES_SUBRESTRICTION:
        return Joined(condition, ("any of " + tag + " ").c_str());
    case RES_CONTENT:
        return tag + " contains[" + HexText(condition.number) + "] " + Readable(condition.value);
    case RES_PROPERTY:
        return tag + " " + relation + " " + Readable(condition.value);
    case RES_COMPAREPROPS:
        return tag + " " + relation + " " + ReadableTag(condition.otherTag);
    case RES_BITMASK:
        return tag + " & " + HexText(condition.number) + (condition.relation == BMR_NEZ ? " != 0" : " = 0");
    case RES_SIZE:
        return "size of " + tag + " " + relation + " " + std::to_string(condition.number);
    default:
        return tag + " exists";
    }
}

Value Shown(const Properties& properties, ULONG tag)
{
    const Value& value = Find(properties, tag);
    return IsShown(value, tag) ? value : Value();
}

bool IsBefore(const Item& left, const Item& right, const Order& order)
{
    for (const SortKey& key : order)
    {
        const int each = ComparedForSorting(Shown(left.own, key.tag), Shown(right.own, key.tag));
        if (each != 0)
        {
            return key.descending ? each > 0 : each < 0;
        }
    }
    return false;
}

std::string Readable(const Order& order)
{
    std::string text;
    for (const SortKey& key : order)
    {
        text += (text.empty() ? "" : ", ") + ReadableTag(key.tag) + (key.descending ? " descending" : "");
    }
    return text.empty() ? "natural" : text;
}

SRestriction* Made(const Condition& condition, test::RestrictionMaker& maker, Room& room)
{
    std::vector<SRestriction*> children;
    for (const Condition& child : condition.children)
    {
        children.push_back(Made(child, maker, room));
    }
    // The tag of the question is the condition's, the type of the value its own.
    const auto asked = [&](SRestriction* made)
    {
        (made->rt == RES_CONTENT ? made->res.resContent.ulPropTag : made->res.resProperty.ulPropTag) = condition.tag;
        return made;
    };
    switch (condition.kind)
    {
    case RES_AND:
        return maker.And(children);
    case RES_OR:
        return maker.Or(children);
    case RES_NOT:
        return maker.Not(children[0]);
    case RES_COMMENT:
        return maker.Comment(children.empty() ? nullptr : children[0]);
    case RES_SUBRESTRICTION:
        return maker.Sub(condition.tag, children[0]);
    case RES_CONTENT:
        return asked(maker.Content(condition.number, room.Mapi(condition.tag, condition.value)));
    case RES_PROPERTY:
        return asked(maker.Property(condition.relation, room.Mapi(condition.tag, condition.value)));
    case RES_COMPAREPROPS:
        return maker.CompareProps(condition.relation, condition.tag, condition.otherTag);
    case RES_BITMASK:
        return maker.BitMask(condition.tag, condition.number, condition.relation);
    case RES_SIZE:
        return maker.Size(condition.relation, condition.tag, condition.number);
    default:
        return maker.Exist(condition.tag);
    }
}

std::vector<Condition> Simpler(const Condition& condition)
{
    std::vector<Condition> simpler = condition.children;
    for (size_t i = 0; i < condition.children.size(); ++i)
    {
        const bool isList = condition.kind == RES_AND || condition.kind == RES_OR;
        if (isList)
        {
            simpler.push_back(condition);
            simpler.back().children.erase(simpler.back().children.begin() + static_cast<std::ptrdiff_t>(i));
        }
        for (const Condition& child : Simpler(condition.children[i]))
        {
            simpler.push_back(condition);
            simpler.back().children[i] = child;
        }
    }
    return simpler;
}

} // namespace zebstore::model
