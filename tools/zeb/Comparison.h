// A comparison of a property with a value, from a command line.
#pragma once

#include "tools/common/Property.h"

#include <string>

namespace zeb::tools
{

/// "PR_MESSAGE_SIZE > 100K": a condition on one property. A message without the property does not match.
class Comparison
{
public:
    enum class Kind
    {
        Exists,   ///< no operator and no value
        Compares, ///< by a relational operator
        Contains, ///< a text, in any letter case
    };

    Comparison(Property property, Kind kind, ULONG relation);

    /// Gives a named property its tag in the store of `object`. @throws CZebException*
    void Resolve(CZebIProp& object);
    /// Fills a new node. @throws CZebException*
    void Build(CZebRestriction& node) const;

private:
    Property m_property;
    const Kind m_kind;
    const ULONG m_relation;
};

/// Reads "NAME", or "NAME OPERATOR VALUE" with = != < <= > >= or ~ (contains), blanks around the operator or none. Names
/// and values are as for ParseAssignment; numbers may end in k, M or G.
/// @throws UsageError
Comparison ParseComparison(const std::string& text);

} // namespace zeb::tools
