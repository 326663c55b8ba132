// Restrictions and sort orders as the tests themselves understand them, by MAPI's rules and slowly.
#pragma once

#include "tests/zebstore/model/Random.h"
#include "tests/zebstore/storage/Restrictions.h"

namespace zebstore::model
{

/// What a table row is made of.
struct Item
{
    Properties own;
    std::vector<Properties> recipients;
    std::vector<Properties> attachments;
};

struct Condition
{
    ULONG kind = RES_AND; ///< RES_...
    ULONG tag = 0;
    ULONG otherTag = 0; ///< RES_COMPAREPROPS
    ULONG relation = 0; ///< RELOP_..., BMR_...
    ULONG number = 0;   ///< fuzzy level, mask, size
    Value value;
    std::vector<Condition> children;
};

bool Holds(const Condition& condition, const Item& item);
std::string Readable(const Condition& condition);

struct SortKey
{
    ULONG tag;
    bool descending;
};
using Order = std::vector<SortKey>;

bool IsBefore(const Item& left, const Item& right, const Order& order);
std::string Readable(const Order& order);
std::string ReadableTag(ULONG tag);

/// The property as a column of this tag shows it: none when it has another type.
Value Shown(const Properties& properties, ULONG tag);

/// The restriction for MAPI; its memory belongs to `maker` and `room`.
SRestriction* Made(const Condition& condition, test::RestrictionMaker& maker, Room& room);

/// Random conditions and orders over properties of these kinds.
class ConditionMaker
{
public:
    /// @param sample a row whose values are often asked for; null: none has any
    ConditionMaker(Random& random, const std::vector<Kind>& kinds, const Item* sample);

    Condition Tree(int levels);
    Order SortOrder(size_t most);

private:
    Condition Leaf();
    Condition Of(const Kind& kind, const Properties* sample);
    Condition Content(ULONG tag, const Value& value);
    Condition Bits(ULONG tag);
    Condition Sub();
    Value Sample(const Kind& kind, const Properties* sample, ULONG type);

    Random& m_random;
    const std::vector<Kind>& m_kinds;
    const Item* m_sample;
};

/// Simpler conditions to try in place of this one, the simplest first.
std::vector<Condition> Simpler(const Condition& condition);

const std::vector<Kind>& RecipientKinds();
const std::vector<Kind>& AttachmentKinds();

} // namespace zebstore::model
