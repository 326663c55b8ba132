#include "zebapi/entryid/internal/EntryIDObjects.h"

#include "qorth/Text.h"
#include "zebapi/entryid/EntryIDInfo.h"

namespace zeb
{

namespace
{

// Object types of a folder's or message's identifier.
constexpr std::uint16_t folderType = 2;
constexpr std::uint16_t messageType = 3;

// Behind the four numbers of a contact identifier that stands for a folder.
constexpr std::uint64_t contactFolderGap = 8;

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
        parser.Advance(contactFolderGap);
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
