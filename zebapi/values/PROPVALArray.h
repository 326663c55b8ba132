// Arrays of property values and of property problems.
#pragma once

#include "zebapi/values/OnePROPVAL.h"

/// Owns a counted array of SPropValue entries in one top-level MAPI buffer.
///
/// Either built here, tag by tag, and passed to IMAPIProp::SetProps, or received from IMAPIProp::GetProps through
/// CountPtr() and `&`. An entry whose property identifier is 0 is a free slot. Entries are read and written through
/// views whose allocations are chained to the array's buffer, so everything is freed with the array.
///
/// Views, and pointers read from them, become invalid when the array grows, empties or is filled again: the entries are
/// then copied into a new buffer and the old one is freed. `values[NEW_TAG] = (const char*)values[OLD_TAG]` therefore
/// reads freed memory when NEW_TAG makes the array grow; construct it large enough. `values[A] = other[A]` only rebinds
/// a temporary view: to copy a value write `values[A].Set(other[A])`. Threads: none of its own.
class ZEBAPI_EXPORT CZebPropValArray
{
protected:
    /// Resizes to `n` entries. Up to the current count only the count is set. Beyond it the entries are deep-copied to
    /// a new buffer (free slots stay free), in which all additional slots are free; a failure leaves the array
    /// unchanged.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, the result of PropCopyMore
    virtual void Allocate(ULONG n);
    /// The index of the first entry with the property identifier of `tag`, whatever its type; -1 when there
    /// is none.
    virtual int FindTag(ULONG tag) const;

public:
    virtual ~CZebPropValArray();
    /// Frees the buffer; the array may grow again.
    virtual void Empty();
    /// The number of entries, free slots included.
    virtual ULONG GetCount() const;
    /// True when there is a buffer and the count is not 0.
    virtual bool IsValid() const;
    /// The address of the count, for a MAPI call to fill.
    virtual ULONG* CountPtr();
    /// Empties the array and returns the address of its buffer pointer, for a MAPI call to fill. The array owns the
    /// stored buffer and accepts no new tags.
    virtual SPropValue** operator&();
    /// GetCount().
    virtual ULONG Count() const;
    /// The entries, borrowed. @throws CZebException* E_INVALIDARG without a buffer.
    virtual operator SPropValue*() const;
    /// The entry with the property identifier of `tag`, under its stored tag. A new tag uses the first free slot of an
    /// array that is built here, which grows by one entry when there is none.
    /// @throws CZebException* MAPI_E_UNEXPECTED_ID for a new tag in a received array.
    virtual CZebOnePropVal operator[](ULONG tag);
    /// @throws CZebException* MAPI_E_UNEXPECTED_ID for an index at or past the count.
    virtual CZebOnePropVal GetAt(ULONG index);
    /// Truncates the array before its first free slot.
    virtual void TruncateToExisting();
    /// Whether there is an entry with the property identifier of tag, whatever its type.
    virtual bool IsExists(ULONG tag) const;
    /// Whether there is such an entry with a value: not PT_UNSPECIFIED, PT_NULL, PT_ERROR or empty text.
    virtual bool hasRealValue(ULONG tag) const;

    /// An array with `n` free slots.
    explicit CZebPropValArray(ULONG n = 0);
    CZebPropValArray(const CZebPropValArray&) = delete;
    CZebPropValArray& operator=(const CZebPropValArray&) = delete;

private:
    ULONG m_count = 0;
    SPropValue* m_values = nullptr; ///< owned
    bool m_growable = true;
};

/// Owns an SPropProblemArray, as SetProps, DeleteProps and CopyTo return it: a top-level MAPI buffer.
class ZEBAPI_EXPORT CZebPropProblemArray
{
protected:
    /// Replaces the buffer by one for `n` problems, which keeps the contents up to the smaller size.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, MAPI_E_NOT_INITIALIZED
    virtual void Allocate(int n);

public:
    virtual ~CZebPropProblemArray();
    /// Frees the array.
    virtual void Empty();
    /// The number of problems; 0 without an array.
    virtual int GetCount() const;
    /// Whether there is an array.
    virtual bool IsValid() const;
    /// Holds a copy; a source without an array, and assigning the object to itself, empties it.
    virtual CZebPropProblemArray& operator=(const CZebPropProblemArray& source);
    /// Problem `i`, without a bounds check.
    virtual SPropProblem& operator[](int i);
    /// The array, borrowed; null when there is none.
    virtual operator SPropProblemArray*();
    /// Empties the object and returns the address of its pointer, for a MAPI call to fill.
    virtual SPropProblemArray** operator&();

    CZebPropProblemArray();
    /// Holds a copy.
    CZebPropProblemArray(const CZebPropProblemArray& source);

private:
    SPropProblemArray* m_problems = nullptr; ///< owned
};
