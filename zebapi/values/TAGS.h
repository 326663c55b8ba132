// Arrays of property tags.
#pragma once

#include "platform/export.h"
#include "platform/mapi.h"
#include "platform/overloads.h"

#include <cstdarg>
#include <cstdint>

class CZebIProp;

/// Owns an SPropTagArray in a top-level MAPI buffer of exactly 4 + 4 * count bytes: a column set or a list of
/// properties. It grows by exact reallocation. Threads: none of its own.
class ZEBAPI_EXPORT CZebPropTagArray
{
protected:
    /// Replaces the buffer by one for `n` tags, which keeps the tags up to the smaller size; the count stays.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, MAPI_E_NOT_INITIALIZED
    virtual void Allocate(int n);

public:
    virtual ~CZebPropTagArray();
    /// Frees the buffer.
    virtual void Empty();
    /// The number of tags; 0 without a buffer.
    virtual int GetCount() const;
    /// Whether there is a buffer, even one of no tags.
    virtual bool IsValid() const;
    /// Appends one tag. @throws CZebException* as Allocate does.
    virtual void AddOne(ULONG tag);
    ZEB_OVERLOADS(
        /// Appends `tag`, whatever it is, and then the tags of an argument list up to the first 0, growing
        /// once. The list is then positioned after that 0.
        ///
        /// Inside a function that received its va_list as a parameter, this overload may lose to the variadic
        /// one, which would read the list itself as a tag: call AddList there.
        virtual void Add(ULONG tag, va_list& args),
        /// Appends `tag`, whatever it is, and then the further tags up to the first 0, which is required.
        virtual void Add(ULONG tag, ...));
    /// Holds a copy; a source without a buffer, and assigning the object to itself, empties it.
    virtual CZebPropTagArray& operator=(const CZebPropTagArray& source);
    /// Tag `i`, without a bounds check.
    virtual ULONG operator[](int i) const;
    /// The array, borrowed. @throws CZebException* E_INVALIDARG without a buffer.
    virtual operator SPropTagArray*();
    /// Empties the object and returns the address of its pointer, for a MAPI call to fill.
    virtual SPropTagArray** operator&();
    /// Replaces every tag with the object's real one: tags of named properties become those of its store. When it
    /// throws, the tags are unchanged.
    /// @throws CZebException* E_INVALIDARG without a buffer; what CZebIProp::GetRealTag throws; as Allocate does.
    virtual void ApplyTo(CZebIProp& object);

    CZebPropTagArray();
    /// Holds a copy; a source without a buffer makes an empty object.
    CZebPropTagArray(const CZebPropTagArray& source);

    /// Reserves memory for `count` more tags; 0 creates an empty array, which is valid.
    /// @throws CZebException* as Allocate does.
    void Reserve(ULONG count);
    /// Appends exactly `count` tags of an argument list, whatever they are, and positions the list after the last.
    /// Never throws.
    /// REQUIRES: Reserve(count) came just before.
    void Fill(ULONG count, va_list& args);
    /// Add(tag, args) for a list received as a parameter; the caller's list is not advanced.
    void AddList(ULONG tag, va_list args);

private:
    /// Allocates memory for `more` additional tags.
    void Grow(std::uint64_t more);

    SPropTagArray* m_tags = nullptr; ///< owned
};
