// Arrays of binaries, for calls that take several entry identifiers.
#pragma once

#include "platform/overloads.h"
#include "zebapi/values/Binary.h"

/// Owns one SBinaryArray (an ENTRYLIST): the entry identifiers of messages to copy, move or delete, for instance.
///
/// The header and the block of entries are two top-level MAPI buffers; the bytes of each entry are chained to
/// the header. Emptying frees the header, and with it every entry's bytes, but not the block of entries,
/// which stays allocated until the provider is unloaded. Threads: none of its own.
class ZEBAPI_EXPORT CZebBinArray
{
protected:
    /// @throws CZebException* MAPI_E_INVALID_OBJECT without an array, MAPI_E_BAD_VALUE for an array of no
    /// entries, MAPI_E_NOT_FOUND for an index past the last.
    virtual void CheckValid(ULONG index) const;

public:
    virtual ~CZebBinArray();
    /// Empties the object and makes `n` entries of no bytes; a failure leaves the object empty.
    /// @throws CZebException* E_INVALIDARG for 0 entries, MAPI_E_NOT_ENOUGH_MEMORY, MAPI_E_NOT_INITIALIZED
    virtual void Allocate(ULONG n);
    /// Frees the entries' bytes and the header.
    virtual void Empty();
    /// Whether there is an array.
    virtual bool IsValid() const;
    ZEB_OVERLOADS(
        /// Stores the bytes of hexadecimal text; the entry's previous bytes stay chained until the array is emptied.
        /// @throws CZebException* as CheckValid, and MAPI_E_INVALID_OBJECT for a null text.
        virtual void SetAt(ULONG index, const char* hex),
        /// Stores a copy of the bytes.
        virtual void SetAt(ULONG index, const SBinary& value));
    /// A deep copy of an entry.
    virtual CZebBinary GetAt(ULONG index);
    /// The array, borrowed. @throws CZebException* as CheckValid(0).
    virtual operator SBinaryArray*() const;

    /// n entries of no bytes. @throws CZebException* as Allocate
    explicit CZebBinArray(ULONG n);
    /// For a count written as a plain number; a negative one is refused as too large.
    explicit CZebBinArray(int n);
    /// One entry.
    explicit CZebBinArray(const SBinary& value);
    /// One entry, from hexadecimal text.
    explicit CZebBinArray(const char* hex);
    CZebBinArray(const CZebBinArray&) = delete;
    CZebBinArray& operator=(const CZebBinArray&) = delete;

private:
    SBinaryArray* m_array = nullptr; ///< owned
};
