// Binaries: entry identifiers, search keys, record keys and every other counted byte string.
#pragma once

#include "framework/CString.h"
#include "platform/export.h"
#include "platform/mapi.h"
#include "platform/overloads.h"

/// Owns one SBinary: a count and its bytes, in MAPI memory.
///
/// The header is a top-level MAPI buffer and the bytes are chained to it, so that freeing the header frees
/// both. A header of 0 bytes has a null byte pointer. An object without a header is not valid; it compares
/// unequal to everything, and reading it throws. Text form: upper-case hexadecimal digits, two per byte, without
/// separators. Threads: none of its own; use one object from one thread.
///
/// The class overloads `&`: containers and other code that needs its own address use std::addressof.
class ZEBAPI_EXPORT CZebBinary
{
protected:
    /// @throws CZebException* MAPI_E_INVALID_OBJECT without a header.
    virtual void CheckValid() const;

public:
    virtual ~CZebBinary();
    /// Frees the header and its bytes.
    virtual void Empty();
    /// True for 0 bytes. @throws CZebException* MAPI_E_INVALID_OBJECT without a header.
    virtual bool IsEmpty() const;
    /// True when there is a header, even one of 0 bytes.
    virtual bool IsValid() const;
    /// Holds a copy of `cb` bytes; `bytes` may be the object's own and may be null for 0 bytes.
    /// When the allocation fails the object is left empty.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, MAPI_E_NOT_INITIALIZED; MAPI_E_INVALID_PARAMETER for a null
    /// `bytes` with a count; the object is then unchanged
    virtual void SetBinary(ULONG cb, void* bytes);
    /// SetBinary for an entry identifier.
    virtual void SetEntryId(ULONG cb, ENTRYID* id);
    ZEB_OVERLOADS(
        /// Holds the bytes of hexadecimal text; "" gives 0 bytes. Throws as SetBinary does.
        virtual void String(const char* hex),
        /// The bytes as hexadecimal text. @throws CZebException* MAPI_E_INVALID_OBJECT,
        /// MAPI_E_NOT_ENOUGH_MEMORY for too many bytes for a text.
        virtual zeb::CStringA String() const);
    ZEB_OVERLOADS(
        /// Holds a copy of the source's bytes; throws as SetBinary does.
        virtual CZebBinary& operator=(const SBinary& source),
        /// Holds a copy of the source's bytes; a source without a header empties this object.
        virtual CZebBinary& operator=(const CZebBinary& source));
    /// Empties the object and returns the address of its header pointer, for a MAPI call to fill. The object then owns
    /// the header; its bytes must be chained to it.
    virtual SBinary** operator&();
    /// The number of bytes. @throws CZebException* MAPI_E_INVALID_OBJECT
    virtual operator ULONG() const;
    /// The bytes, borrowed; null for 0 bytes. @throws CZebException* MAPI_E_INVALID_OBJECT
    virtual operator unsigned char*() const;
    /// The bytes as an entry identifier, borrowed. @throws CZebException* MAPI_E_INVALID_OBJECT
    virtual operator ENTRYID*() const;
    /// The header, borrowed. @throws CZebException* MAPI_E_INVALID_OBJECT
    virtual operator const SBinary&() const;
    /// String().
    virtual operator zeb::CStringA();
    /// The address of this object; `&` returns the header's address instead.
    virtual operator CZebBinary*();
    /// Equal counts and equal bytes; false when either side has no header.
    virtual bool operator==(const CZebBinary& other) const;
    /// The opposite of ==.
    virtual bool operator!=(const CZebBinary& other) const;

    CZebBinary();
    /// Holds a copy.
    CZebBinary(const CZebBinary& source);
    /// Holds a copy.
    CZebBinary(const SBinary& source);
    /// As SetBinary.
    CZebBinary(ULONG cb, void* bytes);
    /// As SetEntryId.
    CZebBinary(ULONG cb, ENTRYID* id);
    /// From hexadecimal text.
    CZebBinary(zeb::CStringA& hex);
    /// From hexadecimal text; a null pointer gives an object without a header.
    CZebBinary(const char* hex);

    /// Copies the bytes of `source` into a block of their own, chained to `parent` (top-level when it is
    /// null), and stores count and block in `target`. A block is allocated even for 0 bytes. `target` is not read, and
    /// is unchanged when the allocation fails.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, MAPI_E_NOT_INITIALIZED
    static void CopyTo(SBinary& target, const SBinary& source, void* parent);
    /// Zeb_DumpEntryID of the text.
    static zeb::CStringA DumpEntryID(zeb::CStringA& hex);

protected:
    SBinary* m_binary = nullptr; ///< owned
};

/// Receives an entry identifier from a MAPI call that returns it through two out-parameters.
///
/// Pass the object twice, as ULONG* and as ENTRYID**; read it afterwards only through CZebBinary's operations, because
/// either conversion frees the previous identifier. The bytes are a separate top-level MAPI buffer, as MAPI returned
/// them, and are freed separately; a copy creates such a buffer too.
class ZEBAPI_EXPORT CZebEntryIDRequest : public CZebBinary
{
public:
    ~CZebEntryIDRequest() override;
    void Empty() override;
    /// @throws CZebException* E_FAIL always: only MAPI fills the buffer.
    void SetBinary(ULONG cb, void* bytes) override;
    using CZebBinary::String;
    /// @throws CZebException* E_FAIL always: only MAPI fills the buffer.
    void String(const char* hex) override;
    CZebBinary& operator=(const SBinary& source) override;
    using CZebBinary::operator=;
    /// Holds a copy of the identifier.
    CZebEntryIDRequest& operator=(const CZebEntryIDRequest& source);

protected:
    /// Frees the identifier and ensures that there is a header.
    virtual void PreAllocate();
    /// Frees the identifier and keeps the header, with a count of 0.
    virtual void ClearEntryID();

public:
    /// The address for the identifier; frees the previous one. @throws CZebException* as Zeb_MemAllocate does.
    virtual operator ENTRYID**();
    /// The address for the count; frees the previous identifier. @throws CZebException* as Zeb_MemAllocate does.
    virtual operator ULONG*();

    CZebEntryIDRequest();
    /// Holds a copy of the identifier.
    CZebEntryIDRequest(const CZebEntryIDRequest& source);
};

/// The diagnostic dump of the entry identifier in hexadecimal text; a null pointer or empty text gives an empty result.
/// Lines end with "\r\n".
/// @throws CZebException* MAPI_E_NOT_INITIALIZED without a bound allocator, MAPI_E_NOT_ENOUGH_MEMORY
ZEBAPI_EXPORT zeb::CStringA Zeb_DumpEntryID(const char* hex);
