// Restrictions: the filters of table queries.
#pragma once

#include "platform/overloads.h"
#include "zebapi/values/OnePROPVAL.h"

/// A view of one node of a restriction tree: makes the node one kind of restriction and returns views of its children,
/// so a tree is built top-down.
///
/// The view owns nothing; everything is chained to the tree's root, which a CZebRestrictionAllocator owns,
/// and views are valid while it owns the tree. A new node is all zero: an AND without children. Building a node twice
/// overwrites it; the memory of the first stays until the tree is freed. Every builder, `[]` and the conversion throw
/// MAPI_E_INVALID_OBJECT for an empty view. Relational operators, fuzzy levels and bitmask relations are MAPI's own
/// values. Threads: none of its own.
class ZEBAPI_EXPORT CZebRestriction
{
protected:
    /// @throws CZebException* MAPI_E_INVALID_OBJECT for an empty view.
    virtual void CheckValid() const;

public:
    virtual ~CZebRestriction();
    /// Whether this view refers to no node.
    virtual bool IsEmpty();
    /// RES_AND with `count` fresh children, reached by `[]`. @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY
    virtual void CreateAnd(ULONG count);
    /// RES_OR, likewise.
    virtual void CreateOr(ULONG count);
    /// RES_NOT. @return a view of the negated child.
    virtual CZebRestriction CreateNot();
    /// RES_PROPERTY. @return a view of the value to compare with, which has the tag and no value yet. Write it with `=`
    /// from a plain value, or with Set: `CreateProp(...) = otherView` only rebinds a temporary view.
    virtual CZebOnePropVal CreateProp(ULONG propTag, ULONG relop);
    /// RES_EXIST.
    virtual void CreateExist(ULONG propTag);
    /// RES_COMPAREPROPS.
    virtual void CreateCompareProps(ULONG propTag1, ULONG propTag2, ULONG relop);
    /// RES_CONTENT over a PT_STRING8 property; the text is copied.
    /// @throws CZebException* MAPI_E_INVALID_TYPE for a tag of another type, MAPI_E_INVALID_PARAMETER for a null text;
    /// the node is then unchanged.
    virtual void CreateContentA(ULONG propTag, const char* text, ULONG fuzzyLevel);
    /// RES_CONTENT over a PT_UNICODE property, likewise.
    virtual void CreateContentW(ULONG propTag, const WCHAR* text, ULONG fuzzyLevel);
    /// CreateContentA.
    virtual void CreateContent(ULONG propTag, const char* text, ULONG fuzzyLevel);
    /// RES_BITMASK.
    virtual void CreateBitMask(ULONG propTag, ULONG mask, ULONG relBMR);
    /// RES_SUBRESTRICTION: one recipient or one attachment of the message fits. @return a view of the condition for it.
    /// @param subObject  PR_MESSAGE_RECIPIENTS or PR_MESSAGE_ATTACHMENTS
    CZebRestriction CreateSubRestriction(ULONG subObject);
    ZEB_OVERLOADS(
        /// A child of an AND or OR.
        /// @throws CZebException* MAPI_E_INVALID_OBJECT for a node of another kind, E_INVALIDARG for an index outside.
        virtual CZebRestriction operator[](int index),
        /// The same for an unsigned index.
        virtual CZebRestriction operator[](ULONG index));
    /// Refers to the node of `other`.
    virtual CZebRestriction& operator=(const CZebRestriction& other);
    /// The node, borrowed.
    virtual operator SRestriction*();

    /// Refers to the node of other.
    CZebRestriction(const CZebRestriction& other);

protected:
    CZebRestriction();
    /// A view of node in the tree whose root allocation is base.
    CZebRestriction(SRestriction* node, void* base);

    void* m_base;         ///< the tree's root allocation
    SRestriction* m_node; ///< in the tree
};

/// Owns a restriction tree and is the view of its root. Call Allocate before building.
///
/// The whole tree is chained to the root's allocation and is freed in one call. An owner cannot be copied or assigned;
/// views can be created from it.
class ZEBAPI_EXPORT CZebRestrictionAllocator : public CZebRestriction
{
public:
    ~CZebRestrictionAllocator() override;
    /// @throws CZebException* E_INVALIDARG always.
    CZebRestriction& operator=(const CZebRestriction& other) override;
    /// @throws CZebException* E_INVALIDARG always.
    CZebRestrictionAllocator& operator=(const CZebRestrictionAllocator& other);
    /// Frees the tree and creates a new root. @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, MAPI_E_NOT_INITIALIZED
    virtual void Allocate();
    /// Frees the tree; all views of it dangle.
    virtual void Free();

    CZebRestrictionAllocator();
    CZebRestrictionAllocator(const CZebRestrictionAllocator&) = delete;
};
