#include "zebapi/EntryIDObjects.h"

#include "qorth/Hex.h"
#include "qorth/Text.h"
#include "zebapi/EntryIDInfo.h"

#include <cstdio>

namespace zeb
{

namespace
{

// Object types of a folder's or message's identifier.
constexpr std::uint16_t folderType = 2;
constexpr std::uint16_t messageType = 3;

// Behind the four numbers of a contact identifier that stands for a folder.
constexpr std::uint64_t contactFolderGap = 8;

const char* YesNo(bool yes)
{
    return yes ? "Yes" : "No";
}

void AppendNumber(std::string& out, std::uint32_t number)
{
    char text[sizeof "0x12345678"];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(number));
    out.append(text);
}

const char* ContactTypeName(std::uint32_t type)
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

CStringA Narrow(const CStringA& text)
{
    return text;
}

CStringA Narrow(const CStringW& text)
{
    return QorConvertStringByANSITable(text.GetString(), text.GetLength());
}

} // namespace

void AppendHex(std::string& out, const void* bytes, ULONG count)
{
    CStringA text;
    Bin2String(text, bytes, count, 0);
    out.append(text.GetString(), static_cast<size_t>(text.GetLength()));
}

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

void CEntryIDFolderObject::Dump(std::string& out, const std::string& prefix) const
{
    out.append(prefix).append("CEntryIDFolderObject\r\n");
    out.append(prefix).append("  DatabaseGUID: ");
    AppendHex(out, m_folder.databaseGuid, sizeof m_folder.databaseGuid);
    out.append("\r\n").append(prefix).append("  TODO: dump more there...\r\n");
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

void CEntryIDMessageObject::Dump(std::string& out, const std::string& prefix) const
{
    out.append(prefix).append("CEntryIDMessageObject\r\n");
    out.append(prefix).append("  FolderDatabaseGUID: ");
    AppendHex(out, m_folder.databaseGuid, sizeof m_folder.databaseGuid);
    out.append("\r\n").append(prefix).append("  MessageDatabaseGUID: ");
    AppendHex(out, m_message.databaseGuid, sizeof m_message.databaseGuid);
    out.append("\r\n").append(prefix).append("  TODO: dump more there...\r\n");
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
    if (m_objectType == folderType)
    {
        m_object = std::make_unique<CEntryIDFolderObject>();
    }
    else if (m_objectType == messageType)
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

void CEntryIDData::Dump(std::string& out, const std::string& prefix) const
{
    out.append(prefix).append("CEntryIDData\r\n");
    out.append(prefix).append("  Type: ");
    AppendNumber(out, m_objectType);
    out.append("\r\n").append(prefix).append("  Object:\r\n");
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

void CEntryIDMessageDatabaseObject::Dump(std::string& out, const std::string& prefix) const
{
    out.append(prefix).append("CEntryIDMessageDatabaseObject\r\n");
    out.append(prefix).append("  DLLFileName: ").append(m_dllFileName.GetString()).append("\r\n");
    out.append(prefix).append("  bIsExchange: ").append(YesNo(m_isExchange)).append("\r\n");
    out.append(prefix).append("  WrappedProviderUID = ");
    AppendHex(out, m_wrappedProviderUID, sizeof m_wrappedProviderUID);
    out.append("\r\n").append(prefix).append("  ServerShortname = ").append(m_serverShortname.GetString());
    out.append("\r\n").append(prefix).append("  MailboxDN = ").append(m_mailboxDN.GetString()).append("\r\n");
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
void CEntryIDOneOffInfo<Text>::Dump(std::string& out, const std::string& prefix) const
{
    out.append(prefix).append("CEntryIDOneOffInfo\r\n");
    out.append(prefix).append("DisplayName: ").append(Narrow(m_displayName).GetString()).append("\r\n");
    out.append(prefix).append("AddressType: ").append(Narrow(m_addressType).GetString()).append("\r\n");
    out.append(prefix).append("EmailAddress=").append(Narrow(m_emailAddress).GetString()).append("\r\n");
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

void CEntryIDOneOffRecipientObject::Dump(std::string& out, const std::string& prefix) const
{
    out.append(prefix).append("CEntryIDOneOffRecipientObject\r\n");
    out.append(prefix).append("  Unicode: ").append(YesNo(IsUnicode())).append("\r\n");
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

void CEntryIDAddressBookObject::Dump(std::string& out, const std::string& prefix) const
{
    out.append(prefix).append("CEntryIDAddressBookObject\r\n").append(prefix).append("  TODO...\r\n");
}

CEntryIDContactAddressBookObject::CEntryIDContactAddressBookObject() = default;

CEntryIDContactAddressBookObject::CEntryIDContactAddressBookObject(
    const CEntryIDContactAddressBookObject& other)
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
        parser.Advance(contactFolderGap);
    }
    const std::uint64_t rest = parser.Remaining();
    if (rest != 0)
    {
        const CZebBinary wrapped(static_cast<ULONG>(rest),
                                 const_cast<void*>(static_cast<const void*>(parser.Current())));
        m_wrapped = std::make_unique<CEntryIDInfo>(wrapped, true);
        parser.Advance(rest - m_wrapped->Unread());
    }
}

std::unique_ptr<CEntryIDProviderData> CEntryIDContactAddressBookObject::Clone() const
{
    return std::make_unique<CEntryIDContactAddressBookObject>(*this);
}

void CEntryIDContactAddressBookObject::Dump(std::string& out, const std::string& prefix) const
{
    out.append(prefix).append("CEntryIDContactAddressBookObject\r\n");
    out.append(prefix).append("  Version: ");
    AppendNumber(out, m_version);
    out.append("\r\n").append(prefix).append("  Type: ").append(ContactTypeName(m_type)).append(" (");
    AppendNumber(out, m_type);
    out.append(")\r\n").append(prefix).append("  Index: ");
    AppendNumber(out, m_index);
    out.append("\r\n").append(prefix).append("  EntryIDCount: ");
    AppendNumber(out, m_entryIDCount);
    out.append("\r\n").append(prefix).append("  Object:\r\n");
    DumpOrNull(m_wrapped.get(), out, prefix + "  ");
}

} // namespace zeb
