// Internal: what kind of object an entry identifier names, and its diagnostic dump.
#pragma once

#include "zebapi/entryid/BinaryParser.h"
#include "zebapi/entryid/internal/DumpText.h"
#include "zebapi/values/Binary.h"

#include <memory>
#include <string>

namespace zeb
{

class CEntryIDInfo;

/// Type code of a contact identifier for a contacts folder of a message store.
constexpr ULONG CONTAB_FOLDER = 3;
constexpr ULONG CONTAB_USER = 4;
constexpr ULONG CONTAB_DISTLIST = 5;

/// The part of an identifier after its 20-byte header. Parsing never throws: missing parts of a short identifier are
/// zero or empty. Dumps go to the end of `out`; each line begins with `prefix` and ends with "\r\n", and nested objects
/// are indented by two more blanks. Texts are written unchanged.
class CEntryIDProviderData
{
public:
    virtual ~CEntryIDProviderData() = default;
    virtual void Parse(CBinaryParser& parser) = 0;
    virtual std::unique_ptr<CEntryIDProviderData> Clone() const = 0;
    virtual void Dump(CDumpText& out, const std::string& prefix) const = 0;

protected:
    CEntryIDProviderData() = default;
    CEntryIDProviderData(const CEntryIDProviderData&) = default;
    CEntryIDProviderData& operator=(const CEntryIDProviderData&) = default;
};

/// The part of a folder's or message's identifier that depends on which of them it is.
class CEntryIDDataObject
{
public:
    virtual ~CEntryIDDataObject() = default;
    virtual void Parse(CBinaryParser& parser) = 0;
    virtual std::unique_ptr<CEntryIDDataObject> Clone() const = 0;
    virtual void Dump(CDumpText& out, const std::string& prefix) const = 0;

protected:
    CEntryIDDataObject() = default;
    CEntryIDDataObject(const CEntryIDDataObject&) = default;
    CEntryIDDataObject& operator=(const CEntryIDDataObject&) = default;
};

/// The position of an object in its database: 24 bytes.
struct CEntryIDLocation
{
    BYTE databaseGuid[16] = {};
    BYTE globalCounter[6] = {};
    BYTE pad[2] = {};

    void Parse(CBinaryParser& parser);
};

class CEntryIDFolderObject : public CEntryIDDataObject
{
public:
    void Parse(CBinaryParser& parser) override;
    std::unique_ptr<CEntryIDDataObject> Clone() const override;
    void Dump(CDumpText& out, const std::string& prefix) const override;

private:
    CEntryIDLocation m_folder;
};

class CEntryIDMessageObject : public CEntryIDDataObject
{
public:
    void Parse(CBinaryParser& parser) override;
    std::unique_ptr<CEntryIDDataObject> Clone() const override;
    void Dump(CDumpText& out, const std::string& prefix) const override;

private:
    CEntryIDLocation m_folder;
    CEntryIDLocation m_message;
};

/// A folder's or a message's identifier: an object type and the part that belongs to it; none for other types.
class CEntryIDData : public CEntryIDProviderData
{
public:
    CEntryIDData() = default;
    CEntryIDData(const CEntryIDData& other);
    CEntryIDData& operator=(const CEntryIDData&) = delete;

    void Parse(CBinaryParser& parser) override;
    std::unique_ptr<CEntryIDProviderData> Clone() const override;
    void Dump(CDumpText& out, const std::string& prefix) const override;

private:
    std::uint16_t m_objectType = 0;
    std::unique_ptr<CEntryIDDataObject> m_object;
};

/// A wrapped store identifier.
class CEntryIDMessageDatabaseObject : public CEntryIDProviderData
{
public:
    void Parse(CBinaryParser& parser) override;
    std::unique_ptr<CEntryIDProviderData> Clone() const override;
    void Dump(CDumpText& out, const std::string& prefix) const override;

private:
    std::uint8_t m_version = 0;
    std::uint8_t m_flag = 0;
    CStringA m_dllFileName;
    bool m_isExchange = false; ///< the following fields exist only for Exchange stores
    std::uint32_t m_wrappedFlags = 0;
    BYTE m_wrappedProviderUID[16] = {};
    std::uint32_t m_wrappedResourceType = 0;
    CStringA m_serverShortname;
    CStringA m_mailboxDN;
};

/// The three texts of a one-off identifier, in their original width.
template <class Text>
class CEntryIDOneOffInfo
{
public:
    void Parse(CBinaryParser& parser);
    /// Wide texts are narrowed.
    void Dump(CDumpText& out, const std::string& prefix) const;

private:
    Text m_displayName;
    Text m_addressType;
    Text m_emailAddress;
};

/// A recipient without an address book entry.
class CEntryIDOneOffRecipientObject : public CEntryIDProviderData
{
public:
    void Parse(CBinaryParser& parser) override;
    std::unique_ptr<CEntryIDProviderData> Clone() const override;
    void Dump(CDumpText& out, const std::string& prefix) const override;

private:
    bool IsUnicode() const { return (m_flags & MAPI_UNICODE) != 0; }

    std::uint32_t m_flags = 0;
    CEntryIDOneOffInfo<CStringA> m_narrow;
    CEntryIDOneOffInfo<CStringW> m_wide;
};

/// An entry of the Exchange address book; not decoded further.
class CEntryIDAddressBookObject : public CEntryIDProviderData
{
public:
    void Parse(CBinaryParser& parser) override;
    std::unique_ptr<CEntryIDProviderData> Clone() const override;
    void Dump(CDumpText& out, const std::string& prefix) const override;
};

/// An entry of the contact address book: it wraps the identifier of a contacts folder or of a message in one.
class CEntryIDContactAddressBookObject : public CEntryIDProviderData
{
public:
    CEntryIDContactAddressBookObject();
    CEntryIDContactAddressBookObject(const CEntryIDContactAddressBookObject& other);
    CEntryIDContactAddressBookObject& operator=(const CEntryIDContactAddressBookObject&) = delete;
    ~CEntryIDContactAddressBookObject() override;

    void Parse(CBinaryParser& parser) override;
    std::unique_ptr<CEntryIDProviderData> Clone() const override;
    void Dump(CDumpText& out, const std::string& prefix) const override;

    /// CONTAB_FOLDER, CONTAB_USER, CONTAB_DISTLIST or anything else.
    ULONG Type() const { return m_type; }
    /// The wrapped identifier; null when nothing is wrapped.
    const CEntryIDInfo* Wrapped() const { return m_wrapped.get(); }

private:
    std::uint32_t m_version = 0;
    std::uint32_t m_type = 0;
    std::uint32_t m_index = 0;
    std::uint32_t m_entryIDCount = 0;
    std::unique_ptr<CEntryIDInfo> m_wrapped;
};

/// The text of a boolean in a dump.
constexpr std::string_view YesNo(bool yes)
{
    return yes ? "Yes" : "No";
}

/// The dump of `object`, or of its absence.
template <class Object>
void DumpOrNull(const Object* object, CDumpText& out, const std::string& prefix)
{
    if (object != nullptr)
    {
        object->Dump(out, prefix);
    }
    else
    {
        out.Begin(prefix, "<NULL>");
    }
}

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
    eidtNewsGroupFolder = 8, ///< has a name, but no identifier gets this kind
};

/// A decoded entry identifier.
///
/// The kind follows from the provider UID, or else from the length. The content of the bytes never throws: a short or
/// unknown identifier is classified and dumped as well. An object without a header gives an empty info. Copies are
/// deep. Threads: none of its own.
class CEntryIDInfo
{
public:
    explicit CEntryIDInfo(const CZebBinary& identifier);
    /// From hexadecimal text.
    explicit CEntryIDInfo(const char* hex);
    /// The identifier of `count` bytes inside another one; it is treated as that of a message.
    CEntryIDInfo(ULONG count, const BYTE* nested);
    CEntryIDInfo(const CEntryIDInfo& other);
    CEntryIDInfo& operator=(const CEntryIDInfo&) = delete;
    ~CEntryIDInfo();

    eidt Type() const { return m_type; }
    const char* TypeName() const;
    /// Unread bytes after the end of the identifier's known structure.
    std::uint64_t Unread() const { return m_unread; }
    /// The identifier as hexadecimal text; "<InvalidBinary>" without a header.
    CStringA String() const;
    /// Lines that end with "\r\n", each after `prefix`.
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
