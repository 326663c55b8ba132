// Restrictions: a copy of an SRestriction tree that can be asked of a row.
#pragma once

#include "zebstore/storage/PropertySet.h"

#include <string>
#include <unordered_set>
#include <vector>

namespace zebstore
{

/// Texts that a property is compared with for equality, without case.
struct EqualTexts
{
    ULONG tag = 0;
    std::unordered_set<std::string> folded;
};

/// One node, with all that the kind needs; what it does not need is empty.
struct RestrictionNode
{
    ULONG kind = RES_AND; ///< RES_...
    ULONG tag = 0;
    ULONG otherTag = 0;      ///< RES_COMPAREPROPS
    ULONG relation = 0;      ///< RELOP_... or BMR_...
    ULONG fuzzy = 0;         ///< FL_...
    ULONG number = 0;        ///< the mask, or the size
    ULONG valueType = 0;     ///< of `value`
    std::string value;       ///< encoded
    std::string foldedValue; ///< text in the fold of `fuzzy` (RES_CONTENT), or case folded (RES_PROPERTY)
    std::vector<RestrictionNode> children;
    /// RES_OR with many children: those that ask whether a text is equal, to be looked up rather than compared one
    /// by one; `unequal` are the places of the other children.
    std::vector<EqualTexts> equal;
    std::vector<size_t> unequal;
};

/// A restriction as tables use it.
///
/// Text is compared without case by RES_PROPERTY and RES_COMPAREPROPS, and as the fuzzy level says by
/// RES_CONTENT (FL_LOOSE: without case and accents). A missing property, or one of another type, fulfils no
/// relation, not even RELOP_NE. Of a multi-valued property one value that fits is enough when the restriction
/// has a single one. RES_SIZE counts the bytes that the value takes in an SPropValue's own memory: text with
/// its terminator (in the form that the tag names), binaries, arrays without their pointers, other types
/// their size. RES_SUBRESTRICTION holds when one recipient or one attachment fits. A text that PR_ANR is to equal
/// (RES_PROPERTY, RES_CONTENT) is a name that is searched for (NameSearch.h). Threads: it does not
/// change once it is made.
class Restriction
{
public:
    /// Levels of nesting that are accepted.
    static constexpr int MostLevels = 256;

    /// @throws Error MAPI_E_TOO_COMPLEX for what no table of this provider can say (RELOP_RE, unknown kinds and
    ///   relations, deeper nesting than MostLevels, sub-tables that messages do not have),
    ///   MAPI_E_INVALID_PARAMETER for a null pointer where a node or value must be
    explicit Restriction(const SRestriction& source);

    bool Matches(const ValueSource& values) const;
    const RestrictionNode& Root() const { return m_root; }

private:
    RestrictionNode m_root;
};

} // namespace zebstore
