// Internal: what kind of object an entry identifier names, and its diagnostic dump.
#pragma once

#include "zebapi/entryid/internal/EntryIDObjects.h"

#include <memory>
#include <string>

namespace zeb
{

/// Kinds of entry identifiers.
enum eidt : LONG
{
    eidtUnknown = 0,
    eidtShortTerm = 1,
    eidtFolder = 2,
    eidtMessage = 3,
    eidtMessageDatabase = 4,
    eidtOneOff = 5,
    eidtAddressBook = 6,
    eidtContact = 7,
    eidtNewsGroupFolder = 8, ///< has a name; no identifier is taken for one
};

/// An entry identifier taken apart.
///
/// The kind follows from the provider UID, or else from the length. Nothing throws over what is in the bytes:
/// a short or unknown identifier is classified and dumped all the same. An object without a header gives an
/// empty info. Copies are deep. Threads: none of its own.
class CEntryIDInfo
{
public:
    explicit CEntryIDInfo(const CZebBinary& identifier);
    /// From hexadecimal text.
    explicit CEntryIDInfo(const char* hex);
    /// The identifier of `count` bytes that stands inside another one, which makes it a message's.
    CEntryIDInfo(ULONG count, const BYTE* nested);
    CEntryIDInfo(const CEntryIDInfo& other);
    CEntryIDInfo& operator=(const CEntryIDInfo&) = delete;
    ~CEntryIDInfo();

    eidt Type() const { return m_type; }
    const char* TypeName() const;
    /// Bytes that are left unread behind what the identifier's kind says.
    std::uint64_t Unread() const { return m_unread; }
    /// The identifier as hexadecimal text; "<InvalidBinary>" without a header.
    CStringA String() const;
    /// Lines that end with "\r\n", each behind `prefix`.
    CStringA Dump(const char* prefix) const;
    void Dump(CDumpText& out, const std::string& prefix) const;

    /// The contact part; null for other identifiers.
    const CEntryIDContactAddressBookObject* Contact() const;
    /// The dump of the identifier that a contact identifier wraps.
    /// @throws CZebException* MAPI_E_INVALID_TYPE for another identifier and for one that wraps nothing
    CStringA WrappedDump() const;
    /// That identifier as hexadecimal text. @throws CZebException* as WrappedDump
    CStringA WrappedString() const;

private:
    void Parse(bool nested);
    void Classify(const CBinaryParser& parser);
    const CEntryIDInfo& Wrapped() const;

    eidt m_type = eidtUnknown;
    BYTE m_flags[4] = {};
    BYTE m_providerUID[16] = {};
    CZebBinary m_binary;
    std::unique_ptr<CEntryIDProviderData> m_data;
    std::uint64_t m_unread = 0;
};

} // namespace zeb
