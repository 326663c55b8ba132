#include "zebapi/entryid/EntryIDInfo.h"

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

/// The provider UIDs that say what an identifier is, in the order they are looked at.
struct KnownProvider
{
    BYTE uid[16];
    eidt type;
    std::unique_ptr<CEntryIDProviderData> (*make)();
};

constexpr KnownProvider knownProviders[] = {
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

// What is left behind the header of an identifier that no provider UID tells, for a folder and for a message.
constexpr std::uint64_t folderRest = 18;
constexpr std::uint64_t messageRest = 34;

constexpr BYTE topBit = 0x80;

constexpr char invalidBinary[] = "<InvalidBinary>";

// What a dump has room for at once: identifiers of this many bytes, and its lines without what they show.
constexpr size_t usualCount = 1024;
constexpr size_t usualLines = 768;

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
    if (m_type == eidtUnknown && (m_flags[0] & topBit) != 0)
    {
        m_type = eidtShortTerm;
    }
    m_unread = parser.Remaining();
}

void CEntryIDInfo::Classify(const CBinaryParser& parser)
{
    for (const KnownProvider& provider : knownProviders)
    {
        if (std::memcmp(provider.uid, m_providerUID, sizeof m_providerUID) == 0)
        {
            m_type = provider.type;
            m_data = provider.make();
            return;
        }
    }
    const std::uint64_t rest = parser.Remaining();
    if (rest == folderRest || rest == messageRest)
    {
        m_type = rest == folderRest ? eidtFolder : eidtMessage;
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
    return m_binary.IsValid() ? m_binary.String() : CStringA(invalidBinary);
}

CStringA CEntryIDInfo::Dump(const char* prefix) const
{
    // The identifier is shown up to twice, the second time by what it wraps.
    const size_t count = m_binary.IsValid() ? static_cast<ULONG>(m_binary) : 0;
    CDumpText text(4 * std::min(count, usualCount) + usualLines);
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
        out.Line(prefix, "  EntryID: ", invalidBinary);
    }
    out.Line(prefix, "  Type: ", TypeName());
    out.Line(prefix, "  ShortTerm: ", YesNo((m_flags[0] & topBit) != 0));
    out.Line(prefix, "  Compound: ", YesNo((m_flags[1] & topBit) != 0));
    out.LineOfHex(prefix, "  ProviderUID: ", m_providerUID, sizeof m_providerUID);
    // The object follows on the same line, behind a prefix of its own.
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
        CZebException::Throw(MAPI_E_INVALID_TYPE, __FILE__, __LINE__);
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

} // namespace zeb
