#include "zebapi/entryid/EntryIDInfo.h"

#include "qorth/Text.h"
#include "zebapi/frame/Exception.h"

#include <algorithm>
#include <cstring>

namespace zeb
{

namespace
{

template <class Data>
std::unique_ptr<CEntryIDProviderData> Make()
{
    return std::make_unique<Data>();
}

/// The provider UIDs that determine an identifier's kind, in the order of the checks.
struct KnownProvider
{
    BYTE uid[16];
    eidt type;
    std::unique_ptr<CEntryIDProviderData> (*make)();
};

constexpr KnownProvider KnownProviders[] = {
    {{0x81, 0x2B, 0x1F, 0xA4, 0xBE, 0xA3, 0x10, 0x19, 0x9D, 0x6E, 0x00, 0xDD, 0x01, 0x0F, 0x54, 0x02},
     eidtOneOff,
     &Make<CEntryIDOneOffRecipientObject>},
    {{0xDC, 0xA7, 0x40, 0xC8, 0xC0, 0x42, 0x10, 0x1A, 0xB4, 0xB9, 0x08, 0x00, 0x2B, 0x2F, 0xE1, 0x82},
     eidtAddressBook,
     &Make<CEntryIDAddressBookObject>},
    {{0xFE, 0x42, 0xAA, 0x0A, 0x18, 0xC7, 0x1A, 0x10, 0xE8, 0x85, 0x0B, 0x65, 0x1C, 0x24, 0x00, 0x00},
     eidtContact,
     &Make<CEntryIDContactAddressBookObject>},
    {{0x38, 0xA1, 0xBB, 0x10, 0x05, 0xE5, 0x10, 0x1A, 0xA1, 0xBB, 0x08, 0x00, 0x2B, 0x2A, 0x56, 0xC2},
     eidtMessageDatabase,
     &Make<CEntryIDMessageDatabaseObject>},
};

// The sizes after the header of an identifier with an unknown provider UID, for a folder and for a message.
constexpr std::uint64_t FolderRest = 18;
constexpr std::uint64_t MessageRest = 34;

constexpr BYTE TopBit = 0x80;

constexpr char InvalidBinary[] = "<InvalidBinary>";

// Initial capacity of a dump: identifiers of this size in bytes, and the fixed text of its lines.
constexpr size_t UsualCount = 1024;
constexpr size_t UsualLines = 768;

} // namespace

CEntryIDInfo::CEntryIDInfo(const CZebBinary& identifier)
    : m_binary(identifier)
{
    Parse(false);
}

CEntryIDInfo::CEntryIDInfo(const char* hex)
    : m_binary(hex)
{
    Parse(false);
}

CEntryIDInfo::CEntryIDInfo(ULONG count, const BYTE* nested)
    : m_binary(count, const_cast<void*>(static_cast<const void*>(nested)))
{
    Parse(true);
}

CEntryIDInfo::CEntryIDInfo(const CEntryIDInfo& other)
    : m_type(other.m_type)
    , m_binary(other.m_binary)
    , m_data(other.m_data != nullptr ? other.m_data->Clone() : nullptr)
    , m_unread(other.m_unread)
{
    std::memcpy(m_flags, other.m_flags, sizeof m_flags);
    std::memcpy(m_providerUID, other.m_providerUID, sizeof m_providerUID);
}

CEntryIDInfo::~CEntryIDInfo() = default;

void CEntryIDInfo::Parse(bool nested)
{
    if (!m_binary.IsValid())
    {
        return;
    }
    const SBinary& bytes = m_binary;
    CBinaryParser parser(bytes.cb, bytes.lpb);
    for (BYTE& flag : m_flags)
    {
        flag = parser.Read8();
    }
    parser.ReadBytes(sizeof m_providerUID, m_providerUID);
    if (nested)
    {
        m_type = eidtMessage;
        m_data = Make<CEntryIDData>();
    }
    else
    {
        Classify(parser);
    }
    if (m_data != nullptr)
    {
        m_data->Parse(parser);
    }
    if (m_type == eidtUnknown && (m_flags[0] & TopBit) != 0)
    {
        m_type = eidtShortTerm;
    }
    m_unread = parser.Remaining();
}

void CEntryIDInfo::Classify(const CBinaryParser& parser)
{
    for (const KnownProvider& provider : KnownProviders)
    {
        if (std::memcmp(provider.uid, m_providerUID, sizeof m_providerUID) == 0)
        {
            m_type = provider.type;
            m_data = provider.make();
            return;
        }
    }
    const std::uint64_t rest = parser.Remaining();
    if (rest == FolderRest || rest == MessageRest)
    {
        m_type = rest == FolderRest ? eidtFolder : eidtMessage;
        m_data = Make<CEntryIDData>();
    }
}

const char* CEntryIDInfo::TypeName() const
{
    static const char* const names[] = {"eidtUnknown",     "eidtShortTerm",       "eidtFolder",
                                        "eidtMessage",     "eidtMessageDatabase", "eidtOneOff",
                                        "eidtAddressBook", "eidtContact",         "eidtNewsGroupFolder"};
    return m_type >= eidtUnknown && m_type <= eidtNewsGroupFolder ? names[m_type] : names[eidtUnknown];
}

CStringA CEntryIDInfo::String() const
{
    return m_binary.IsValid() ? m_binary.String() : CStringA(InvalidBinary);
}

CStringA CEntryIDInfo::Dump(const char* prefix) const
{
    // The identifier is printed up to twice, the second time by the wrapped object.
    const size_t count = m_binary.IsValid() ? static_cast<ULONG>(m_binary) : 0;
    CDumpText text(4 * std::min(count, UsualCount) + UsualLines);
    Dump(text, prefix);
    return text.Take();
}

void CEntryIDInfo::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDInfo");
    if (m_binary.IsValid())
    {
        const SBinary& bytes = m_binary;
        out.LineOfHex(prefix, "  EntryID: ", bytes.lpb, bytes.cb);
    }
    else
    {
        out.Line(prefix, "  EntryID: ", InvalidBinary);
    }
    out.Line(prefix, "  Type: ", TypeName());
    out.Line(prefix, "  ShortTerm: ", YesNo((m_flags[0] & TopBit) != 0));
    out.Line(prefix, "  Compound: ", YesNo((m_flags[1] & TopBit) != 0));
    out.LineOfHex(prefix, "  ProviderUID: ", m_providerUID, sizeof m_providerUID);
    // The object follows on the same line, after its own prefix.
    out.Begin(prefix, "  Object:");
    DumpOrNull(m_data.get(), out, prefix + "  ");
}

const CEntryIDContactAddressBookObject* CEntryIDInfo::Contact() const
{
    return m_type == eidtContact ? static_cast<const CEntryIDContactAddressBookObject*>(m_data.get()) : nullptr;
}

const CEntryIDInfo& CEntryIDInfo::Wrapped() const
{
    const CEntryIDContactAddressBookObject* contact = Contact();
    if (contact == nullptr || contact->Wrapped() == nullptr)
    {
        CZebException::Throw(MAPI_E_INVALID_TYPE);
    }
    return *contact->Wrapped();
}

CStringA CEntryIDInfo::WrappedDump() const
{
    return Wrapped().Dump("");
}

CStringA CEntryIDInfo::WrappedString() const
{
    return Wrapped().String();
}

namespace
{

// Object types of a folder's or message's identifier.
constexpr std::uint16_t FolderType = 2;
constexpr std::uint16_t MessageType = 3;

// After the four numbers of a contact identifier of a folder.
constexpr std::uint64_t ContactFolderGap = 8;

std::string_view ContactTypeName(std::uint32_t type)
{
    switch (type)
    {
    case CONTAB_FOLDER:
        return "CONTAB_FOLDER";
    case CONTAB_USER:
        return "CONTAB_USER";
    case CONTAB_DISTLIST:
        return "CONTAB_DISTLIST";
    default:
        return "<Unknown>";
    }
}

const CStringA& Narrow(const CStringA& text)
{
    return text;
}

CStringA Narrow(const CStringW& text)
{
    return QorConvertStringByANSITable(text.GetString(), text.GetLength());
}

template <size_t Size, class Text>
void TextLine(CDumpText& out, const std::string& prefix, const char (&label)[Size], const Text& text)
{
    const CStringA& narrow = Narrow(text);
    out.Line(prefix, label, {narrow.GetString(), static_cast<size_t>(narrow.GetLength())});
}

} // namespace

void CEntryIDLocation::Parse(CBinaryParser& parser)
{
    parser.ReadBytes(sizeof databaseGuid, databaseGuid);
    parser.ReadBytes(sizeof globalCounter, globalCounter);
    parser.ReadBytes(sizeof pad, pad);
}

void CEntryIDFolderObject::Parse(CBinaryParser& parser)
{
    m_folder.Parse(parser);
}

std::unique_ptr<CEntryIDDataObject> CEntryIDFolderObject::Clone() const
{
    return std::make_unique<CEntryIDFolderObject>(*this);
}

void CEntryIDFolderObject::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDFolderObject");
    out.LineOfHex(prefix, "  DatabaseGUID: ", m_folder.databaseGuid, sizeof m_folder.databaseGuid);
    out.Line(prefix, "  TODO: dump more there...");
}

void CEntryIDMessageObject::Parse(CBinaryParser& parser)
{
    m_folder.Parse(parser);
    m_message.Parse(parser);
}

std::unique_ptr<CEntryIDDataObject> CEntryIDMessageObject::Clone() const
{
    return std::make_unique<CEntryIDMessageObject>(*this);
}

void CEntryIDMessageObject::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDMessageObject");
    out.LineOfHex(prefix, "  FolderDatabaseGUID: ", m_folder.databaseGuid, sizeof m_folder.databaseGuid);
    out.LineOfHex(prefix, "  MessageDatabaseGUID: ", m_message.databaseGuid, sizeof m_message.databaseGuid);
    out.Line(prefix, "  TODO: dump more there...");
}

CEntryIDData::CEntryIDData(const CEntryIDData& other)
    : CEntryIDProviderData(other)
    , m_objectType(other.m_objectType)
    , m_object(other.m_object != nullptr ? other.m_object->Clone() : nullptr)
{
}

void CEntryIDData::Parse(CBinaryParser& parser)
{
    m_objectType = parser.Read16();
    if (m_objectType == FolderType)
    {
        m_object = std::make_unique<CEntryIDFolderObject>();
    }
    else if (m_objectType == MessageType)
    {
        m_object = std::make_unique<CEntryIDMessageObject>();
    }
    if (m_object != nullptr)
    {
        m_object->Parse(parser);
    }
}

std::unique_ptr<CEntryIDProviderData> CEntryIDData::Clone() const
{
    return std::make_unique<CEntryIDData>(*this);
}

void CEntryIDData::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDData");
    out.LineOfNumber(prefix, "  Type: ", m_objectType);
    out.Line(prefix, "  Object:");
    DumpOrNull(m_object.get(), out, prefix + "  ");
}

void CEntryIDMessageDatabaseObject::Parse(CBinaryParser& parser)
{
    m_version = parser.Read8();
    m_flag = parser.Read8();
    m_dllFileName = parser.ReadStringA();
    m_isExchange = m_dllFileName.CompareNoCase("emsmdb.dll") == 0;
    if (!m_isExchange)
    {
        return;
    }
    // The next field begins on a multiple of 4, counted from the identifier's start.
    parser.Advance(3 - (parser.Offset() + 3) % 4);
    m_wrappedFlags = parser.Read32();
    parser.ReadBytes(sizeof m_wrappedProviderUID, m_wrappedProviderUID);
    m_wrappedResourceType = parser.Read32();
    m_serverShortname = parser.ReadStringA();
    m_mailboxDN = parser.ReadStringA();
}

std::unique_ptr<CEntryIDProviderData> CEntryIDMessageDatabaseObject::Clone() const
{
    return std::make_unique<CEntryIDMessageDatabaseObject>(*this);
}

void CEntryIDMessageDatabaseObject::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDMessageDatabaseObject");
    TextLine(out, prefix, "  DLLFileName: ", m_dllFileName);
    out.Line(prefix, "  bIsExchange: ", YesNo(m_isExchange));
    out.LineOfHex(prefix, "  WrappedProviderUID = ", m_wrappedProviderUID, sizeof m_wrappedProviderUID);
    TextLine(out, prefix, "  ServerShortname = ", m_serverShortname);
    TextLine(out, prefix, "  MailboxDN = ", m_mailboxDN);
}

template <>
void CEntryIDOneOffInfo<CStringA>::Parse(CBinaryParser& parser)
{
    m_displayName = parser.ReadStringA();
    m_addressType = parser.ReadStringA();
    m_emailAddress = parser.ReadStringA();
}

template <>
void CEntryIDOneOffInfo<CStringW>::Parse(CBinaryParser& parser)
{
    m_displayName = parser.ReadStringW();
    m_addressType = parser.ReadStringW();
    m_emailAddress = parser.ReadStringW();
}

template <class Text>
void CEntryIDOneOffInfo<Text>::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDOneOffInfo");
    TextLine(out, prefix, "DisplayName: ", m_displayName);
    TextLine(out, prefix, "AddressType: ", m_addressType);
    TextLine(out, prefix, "EmailAddress=", m_emailAddress);
}

void CEntryIDOneOffRecipientObject::Parse(CBinaryParser& parser)
{
    m_flags = parser.Read32();
    if (IsUnicode())
    {
        m_wide.Parse(parser);
    }
    else
    {
        m_narrow.Parse(parser);
    }
}

std::unique_ptr<CEntryIDProviderData> CEntryIDOneOffRecipientObject::Clone() const
{
    return std::make_unique<CEntryIDOneOffRecipientObject>(*this);
}

void CEntryIDOneOffRecipientObject::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDOneOffRecipientObject");
    out.Line(prefix, "  Unicode: ", YesNo(IsUnicode()));
    if (IsUnicode())
    {
        m_wide.Dump(out, prefix + "  ");
    }
    else
    {
        m_narrow.Dump(out, prefix + "  ");
    }
}

void CEntryIDAddressBookObject::Parse(CBinaryParser&) {}

std::unique_ptr<CEntryIDProviderData> CEntryIDAddressBookObject::Clone() const
{
    return std::make_unique<CEntryIDAddressBookObject>(*this);
}

void CEntryIDAddressBookObject::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDAddressBookObject");
    out.Line(prefix, "  TODO...");
}

CEntryIDContactAddressBookObject::CEntryIDContactAddressBookObject() = default;

CEntryIDContactAddressBookObject::CEntryIDContactAddressBookObject(const CEntryIDContactAddressBookObject& other)
    : CEntryIDProviderData(other)
    , m_version(other.m_version)
    , m_type(other.m_type)
    , m_index(other.m_index)
    , m_entryIDCount(other.m_entryIDCount)
    , m_wrapped(other.m_wrapped != nullptr ? std::make_unique<CEntryIDInfo>(*other.m_wrapped) : nullptr)
{
}

CEntryIDContactAddressBookObject::~CEntryIDContactAddressBookObject() = default;

void CEntryIDContactAddressBookObject::Parse(CBinaryParser& parser)
{
    m_version = parser.Read32();
    m_type = parser.Read32();
    m_index = parser.Read32();
    m_entryIDCount = parser.Read32();
    if (m_type == CONTAB_FOLDER)
    {
        parser.Advance(ContactFolderGap);
    }
    const std::uint64_t rest = parser.Remaining();
    if (rest != 0)
    {
        m_wrapped = std::make_unique<CEntryIDInfo>(static_cast<ULONG>(rest), parser.Current());
        parser.Advance(rest - m_wrapped->Unread());
    }
}

std::unique_ptr<CEntryIDProviderData> CEntryIDContactAddressBookObject::Clone() const
{
    return std::make_unique<CEntryIDContactAddressBookObject>(*this);
}

void CEntryIDContactAddressBookObject::Dump(CDumpText& out, const std::string& prefix) const
{
    out.Line(prefix, "CEntryIDContactAddressBookObject");
    out.LineOfNumber(prefix, "  Version: ", m_version);
    out.Begin(prefix, "  Type: ");
    out.Append(ContactTypeName(m_type));
    out.Append(" (");
    out.AppendNumber(m_type);
    out.Append(")\r\n");
    out.LineOfNumber(prefix, "  Index: ", m_index);
    out.LineOfNumber(prefix, "  EntryIDCount: ", m_entryIDCount);
    out.Line(prefix, "  Object:");
    DumpOrNull(m_wrapped.get(), out, prefix + "  ");
}

} // namespace zeb
