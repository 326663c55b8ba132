#include "zebstore/storage/Restriction.h"

#include "zebstore/base/Error.h"
#include "zebstore/storage/Compare.h"
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/InstanceTag.h"
#include "zebstore/storage/NameSearch.h"

#include <algorithm>

namespace zebstore
{

namespace
{

[[noreturn]] void TooComplex(const char* text)
{
    throw Error(MAPI_E_TOO_COMPLEX, text);
}

TextFold FoldOf(ULONG fuzzy)
{
    const bool noCase = (fuzzy & (FL_IGNORECASE | FL_LOOSE)) != 0;
    const bool noMarks = (fuzzy & (FL_IGNORENONSPACE | FL_LOOSE)) != 0;
    if (noCase)
    {
        return noMarks ? TextFold::IgnoreCaseAndMarks : TextFold::IgnoreCase;
    }
    return noMarks ? TextFold::IgnoreMarks : TextFold::Exact;
}

ULONG Relation(ULONG relop)
{
    if (relop > RELOP_NE)
    {
        TooComplex("A restriction has a relation that tables do not know.");
    }
    return relop;
}

void TakeValue(const SPropValue* value, RestrictionNode& node)
{
    Require(value != nullptr, "A restriction has no value to compare with.");
    node.valueType = PROP_TYPE(value->ulPropTag);
    node.value = Encode(*value);
}

// PR_ANR is no property: a restriction by it searches for a name.
bool IsNameSearch(ULONG tag)
{
    return PROP_ID(tag) == PROP_ID(PR_ANR);
}

void TakeName(RestrictionNode& node)
{
    if (!IsText(node.valueType) || (node.kind == RES_PROPERTY && node.relation != RELOP_EQ))
    {
        TooComplex("A restriction searches for a name otherwise than by an equal text.");
    }
    node.foldedValue = Folded(StoredTextOf(node.valueType, node.value), TextFold::IgnoreCaseAndMarks);
}

void TakeContent(const SContentRestriction& source, RestrictionNode& node)
{
    node.tag = source.ulPropTag;
    node.fuzzy = source.ulFuzzyLevel;
    TakeValue(source.lpProp, node);
    if ((node.fuzzy & 0xFFFF) > FL_PREFIX)
    {
        TooComplex("A restriction has a fuzzy level that tables do not know.");
    }
    if (IsText(node.valueType))
    {
        node.foldedValue = Folded(StoredTextOf(node.valueType, node.value), FoldOf(node.fuzzy));
    }
    else if (node.valueType == PT_BINARY)
    {
        node.foldedValue = node.value;
    }
    else
    {
        TooComplex("A content restriction compares text or binaries only.");
    }
}

void TakeProperty(const SPropertyRestriction& source, RestrictionNode& node)
{
    node.tag = source.ulPropTag;
    node.relation = Relation(source.relop);
    TakeValue(source.lpProp, node);
    if (IsText(node.valueType))
    {
        node.foldedValue = Folded(StoredTextOf(node.valueType, node.value), TextFold::IgnoreCase);
    }
}

RestrictionNode Take(const SRestriction* source, int level);

void TakeChildren(const SRestriction* children, ULONG count, RestrictionNode& node, int level)
{
    Require(count == 0 || children != nullptr, "A restriction has no children where it counts some.");
    for (ULONG i = 0; i < count; ++i)
    {
        node.children.push_back(Take(children + i, level + 1));
    }
}

bool AsksForEqualText(const RestrictionNode& node)
{
    if (!IsText(node.valueType) || IsNameSearch(node.tag))
    {
        return false;
    }
    if (node.kind == RES_PROPERTY)
    {
        return node.relation == RELOP_EQ;
    }
    return node.kind == RES_CONTENT && (node.fuzzy & 0xFFFF) == FL_FULLSTRING &&
           FoldOf(node.fuzzy) == TextFold::IgnoreCase;
}

// So a row costs one look-up for each property, however many texts are asked for.
void GatherEqualTexts(RestrictionNode& node)
{
    constexpr size_t Many = 16;
    if (node.children.size() < Many)
    {
        return;
    }
    for (size_t i = 0; i < node.children.size(); ++i)
    {
        const RestrictionNode& child = node.children[i];
        if (!AsksForEqualText(child))
        {
            node.unequal.push_back(i);
            continue;
        }
        auto texts = std::find_if(node.equal.begin(), node.equal.end(),
                                  [&](const EqualTexts& each) { return PROP_ID(each.tag) == PROP_ID(child.tag); });
        if (texts == node.equal.end())
        {
            texts = node.equal.insert(texts, EqualTexts{child.tag, {}});
        }
        texts->folded.insert(child.foldedValue);
    }
}

void TakeSub(const SSubRestriction& source, RestrictionNode& node, int level)
{
    node.tag = source.ulSubObject;
    const ULONG id = PROP_ID(node.tag);
    if (id != PROP_ID(PR_MESSAGE_RECIPIENTS) && id != PROP_ID(PR_MESSAGE_ATTACHMENTS))
    {
        TooComplex("A restriction asks for a sub-table that messages do not have.");
    }
    TakeChildren(source.lpRes, 1, node, level);
}

void TakeRest(const SRestriction& source, RestrictionNode& node, int level)
{
    switch (source.rt)
    {
    case RES_COMPAREPROPS:
        node.tag = source.res.resCompareProps.ulPropTag1;
        node.otherTag = source.res.resCompareProps.ulPropTag2;
        node.relation = Relation(source.res.resCompareProps.relop);
        return;
    case RES_BITMASK:
        node.tag = source.res.resBitMask.ulPropTag;
        node.number = source.res.resBitMask.ulMask;
        node.relation = source.res.resBitMask.relBMR;
        if (node.relation > BMR_NEZ)
        {
            TooComplex("A restriction has a bit relation that tables do not know.");
        }
        return;
    case RES_SIZE:
        node.tag = source.res.resSize.ulPropTag;
        node.number = source.res.resSize.cb;
        node.relation = Relation(source.res.resSize.relop);
        return;
    case RES_EXIST:
        node.tag = source.res.resExist.ulPropTag;
        return;
    case RES_SUBRESTRICTION:
        return TakeSub(source.res.resSub, node, level);
    case RES_COMMENT:
        // The values of a comment are the caller's own; they say nothing of rows.
        TakeChildren(source.res.resComment.lpRes, source.res.resComment.lpRes != nullptr ? 1 : 0, node, level);
        return;
    default:
        TooComplex("A restriction is of a kind that tables do not know.");
    }
}

RestrictionNode Take(const SRestriction* source, int level)
{
    if (level > Restriction::MostLevels)
    {
        TooComplex("A restriction is nested too deep.");
    }
    Require(source != nullptr, "A restriction has no child where it needs one.");
    RestrictionNode node;
    node.kind = source->rt;
    switch (source->rt)
    {
    case RES_AND:
        TakeChildren(source->res.resAnd.lpRes, source->res.resAnd.cRes, node, level);
        break;
    case RES_OR:
        TakeChildren(source->res.resOr.lpRes, source->res.resOr.cRes, node, level);
        GatherEqualTexts(node);
        break;
    case RES_NOT:
        TakeChildren(source->res.resNot.lpRes, 1, node, level);
        break;
    case RES_CONTENT:
        TakeContent(source->res.resContent, node);
        break;
    case RES_PROPERTY:
        TakeProperty(source->res.resProperty, node);
        break;
    default:
        TakeRest(*source, node, level);
        break;
    }
    if ((node.kind == RES_CONTENT || node.kind == RES_PROPERTY) && IsNameSearch(node.tag))
    {
        TakeName(node);
    }
    return node;
}

bool ContentFits(ULONG fuzzy, std::string_view whole, std::string_view part)
{
    switch (fuzzy & 0xFFFF)
    {
    case FL_SUBSTRING:
        return whole.find(part) != std::string_view::npos;
    case FL_PREFIX:
        return whole.substr(0, part.size()) == part;
    default:
        return whole == part;
    }
}

bool ContentMatches(const RestrictionNode& node, ULONG type, std::string_view bytes)
{
    if (type & MV_FLAG)
    {
        for (ULONG i = 0; i < ElementCount(type, bytes); ++i)
        {
            if (ContentMatches(node, type & ~static_cast<ULONG>(MV_FLAG), Element(type, bytes, i)))
            {
                return true;
            }
        }
        return false;
    }
    if (!TypesMatch(type, node.valueType))
    {
        return false;
    }
    if (type == PT_BINARY)
    {
        return ContentFits(node.fuzzy, bytes, node.foldedValue);
    }
    const std::string_view text = StoredTextOf(type, bytes);
    const TextFold fold = FoldOf(node.fuzzy);
    if (fold == TextFold::Exact)
    {
        return ContentFits(node.fuzzy, text, node.foldedValue);
    }
    return ContentFits(node.fuzzy, Folded(text, fold), node.foldedValue);
}

bool PropertyMatches(const RestrictionNode& node, ULONG type, std::string_view bytes)
{
    bool comparable = true;
    if ((type & MV_FLAG) && !(node.valueType & MV_FLAG))
    {
        for (ULONG i = 0; i < ElementCount(type, bytes); ++i)
        {
            if (PropertyMatches(node, type & ~static_cast<ULONG>(MV_FLAG), Element(type, bytes, i)))
            {
                return true;
            }
        }
        return false;
    }
    if (!TypesMatch(type, node.valueType))
    {
        return false;
    }
    if (IsText(type))
    {
        const int order = Folded(StoredTextOf(type, bytes), TextFold::IgnoreCase).compare(node.foldedValue);
        return Holds(node.relation, order, true);
    }
    const int order = Compare(type, bytes, node.valueType, node.value, comparable);
    return Holds(node.relation, order, comparable);
}

bool CompareMatches(const RestrictionNode& node, const ValueSource& values)
{
    const EncodedValue left = values.Find(node.tag);
    std::string leftRoom;
    const std::string leftBytes(BytesOf(left, leftRoom));
    const EncodedValue right = values.Find(node.otherTag);
    if (!left || !right || !TypesMatch(left.Type(), right.Type()))
    {
        return false;
    }
    std::string rightRoom;
    bool comparable = true;
    const int order = Compare(left.Type(), leftBytes, right.Type(), BytesOf(right, rightRoom), comparable);
    return Holds(node.relation, order, comparable);
}

bool BitsMatch(const RestrictionNode& node, const EncodedValue& value)
{
    if (value.Type() != PT_LONG && value.Type() != PT_I2)
    {
        return false;
    }
    const ULONG number =
        value.Type() == PT_LONG ? ReadNumber<std::uint32_t>(value.bytes) : ReadNumber<std::uint16_t>(value.bytes);
    return ((number & node.number) != 0) == (node.relation == BMR_NEZ);
}

std::uint64_t SizeOfSingle(ULONG type, ULONG asked, std::string_view bytes)
{
    if (!IsText(type))
    {
        return bytes.size();
    }
    const std::string_view text = StoredTextOf(type, bytes);
    const ULONG form = IsText(asked) ? asked : type;
    if (form == PT_UNICODE)
    {
        return (WideFromStored(text).size() + 1) * sizeof(WCHAR);
    }
    return (type == PT_STRING8 ? NarrowOf(bytes) : NarrowFromStored(text)).size() + 1;
}

std::uint64_t SizeOf(const EncodedValue& value, ULONG asked)
{
    const ULONG single = ~static_cast<ULONG>(MV_FLAG);
    // A large value tells its size without being read, unless its text has to be converted for the answer.
    if (value.large != nullptr && (value.Type() == asked || value.Type() == PT_BINARY))
    {
        return value.large->Size() + (value.Type() == PT_UNICODE ? 2 : value.Type() == PT_STRING8 ? 1 : 0);
    }
    std::string room;
    const std::string_view bytes = BytesOf(value, room);
    if (!(value.Type() & MV_FLAG))
    {
        return SizeOfSingle(value.Type(), asked, bytes);
    }
    std::uint64_t size = 0;
    for (ULONG i = 0; i < ElementCount(value.Type(), bytes); ++i)
    {
        size += SizeOfSingle(value.Type() & single, asked & single, Element(value.Type(), bytes, i));
    }
    return size;
}

bool SizeMatches(const RestrictionNode& node, const EncodedValue& value)
{
    const std::uint64_t size = SizeOf(value, PROP_TYPE(node.tag));
    return Holds(node.relation, size < node.number ? -1 : size > node.number ? 1 : 0, true);
}

bool ExistMatches(const RestrictionNode& node, const EncodedValue& value)
{
    // Of a multi-valued property's instances the value is a single one; without instances it is all of them.
    if (IsInstanceTag(node.tag))
    {
        const ULONG single = ~static_cast<ULONG>(MV_FLAG | MV_INSTANCE);
        return TypesMatch(value.Type() & single, PROP_TYPE(node.tag) & single);
    }
    const ULONG asked = PROP_TYPE(node.tag);
    return asked == PT_UNSPECIFIED || asked == PT_NULL || TypesMatch(value.Type(), asked);
}

bool ValueMatches(const RestrictionNode& node, const EncodedValue& value)
{
    if (!value)
    {
        return false;
    }
    std::string room;
    switch (node.kind)
    {
    case RES_CONTENT:
        return ContentMatches(node, value.Type(), BytesOf(value, room));
    case RES_PROPERTY:
        return PropertyMatches(node, value.Type(), BytesOf(value, room));
    case RES_BITMASK:
        return BitsMatch(node, value);
    case RES_SIZE:
        return SizeMatches(node, value);
    default:
        return ExistMatches(node, value);
    }
}

bool IsOneOf(const EqualTexts& texts, ULONG type, std::string_view bytes)
{
    if (type & MV_FLAG)
    {
        for (ULONG i = 0; i < ElementCount(type, bytes); ++i)
        {
            if (IsOneOf(texts, type & ~static_cast<ULONG>(MV_FLAG), Element(type, bytes, i)))
            {
                return true;
            }
        }
        return false;
    }
    return IsText(type) && texts.folded.count(Folded(StoredTextOf(type, bytes), TextFold::IgnoreCase)) != 0;
}

bool NodeMatches(const RestrictionNode& node, const ValueSource& values);

bool AnyMatches(const RestrictionNode& node, const ValueSource& values)
{
    if (node.equal.empty())
    {
        return std::any_of(node.children.begin(), node.children.end(),
                           [&](const RestrictionNode& child) { return NodeMatches(child, values); });
    }
    for (const EqualTexts& texts : node.equal)
    {
        const EncodedValue value = values.Find(texts.tag);
        std::string room;
        if (value && IsOneOf(texts, value.Type(), BytesOf(value, room)))
        {
            return true;
        }
    }
    return std::any_of(node.unequal.begin(), node.unequal.end(),
                       [&](size_t child) { return NodeMatches(node.children[child], values); });
}

bool NodeMatches(const RestrictionNode& node, const ValueSource& values)
{
    const auto matches = [&](const RestrictionNode& child) { return NodeMatches(child, values); };
    switch (node.kind)
    {
    case RES_AND:
    case RES_COMMENT:
        return std::all_of(node.children.begin(), node.children.end(), matches);
    case RES_OR:
        return AnyMatches(node, values);
    case RES_NOT:
        return !NodeMatches(node.children[0], values);
    case RES_COMPAREPROPS:
        return CompareMatches(node, values);
    case RES_SUBRESTRICTION:
        return values.AnyOf(node.tag, [&](const ValueSource& row) { return NodeMatches(node.children[0], row); });
    case RES_CONTENT:
    case RES_PROPERTY:
        if (IsNameSearch(node.tag))
        {
            return MatchesName(node.foldedValue, values);
        }
        return ValueMatches(node, values.Find(node.tag));
    default:
        return ValueMatches(node, values.Find(node.tag));
    }
}

} // namespace

Restriction::Restriction(const SRestriction& source)
    : m_root(Take(&source, 1))
{
}

bool Restriction::Matches(const ValueSource& values) const
{
    return NodeMatches(m_root, values);
}

} // namespace zebstore
