// The entry identifiers of a real mailbox, imported into a store and dumped by the library.
#include "tests/integration/Host.h"

#include "platform/module.h"
#include "platform/text.h"

#include <cstdlib>

namespace zeb::test
{
namespace
{

constexpr const char* InboxPath = "lokay-m/MLOKAY (Non-Privileged)/Personal";
constexpr ULONG Messages = 47;

const std::string OneOffUid = "812B1FA4BEA310199D6E00DD010F5402";

/// A one-off identifier: four flag bytes, the provider UID, four more flag bytes (the top bit of the last one is the
/// width), three terminated texts.
struct OneOff
{
    explicit OneOff(const std::string& bytes)
        : wide((static_cast<unsigned char>(bytes.at(23)) & 0x80) != 0)
    {
        size_t at = 24;
        for (std::string& text : texts)
        {
            std::basic_string<WCHAR> units;
            for (; Unit(bytes, at) != 0; at += Width())
            {
                units += static_cast<WCHAR>(Unit(bytes, at));
                text += bytes.at(at);
            }
            at += Width();
            if (wide)
            {
                text = platform::NarrowFromWide(units.data(), units.size());
            }
        }
        EXPECT_EQ(at, bytes.size()) << "nothing is left over";
    }
    size_t Width() const { return wide ? 2 : 1; }
    unsigned Unit(const std::string& bytes, size_t at) const
    {
        const unsigned low = static_cast<unsigned char>(bytes.at(at));
        return wide ? low | static_cast<unsigned>(static_cast<unsigned char>(bytes.at(at + 1))) << 8 : low;
    }
    std::string Dump(const std::string& hex) const
    {
        return "CEntryIDInfo\r\n  EntryID: " + hex +
               "\r\n  Type: eidtOneOff\r\n  ShortTerm: No\r\n  Compound: No\r\n  ProviderUID: " + OneOffUid +
               "\r\n  Object:  CEntryIDOneOffRecipientObject\r\n    Unicode: " + (wide ? "Yes" : "No") +
               "\r\n    CEntryIDOneOffInfo\r\n    DisplayName: " + texts[0] + "\r\n    AddressType: " + texts[1] +
               "\r\n    EmailAddress=" + texts[2] + "\r\n";
    }

    bool wide;
    std::string texts[3];
};

std::string DumpOf(const std::string& hex)
{
    return std::string(Zeb_DumpEntryID(hex.c_str()).GetString());
}

/// A truncated identifier is dumped as far as possible.
void ExpectEveryCutToDump(const std::string& hex)
{
    for (size_t size = 2; size < hex.size(); size += 2)
    {
        const std::string cut = hex.substr(0, size);
        const bool header = size >= 40;
        const std::string dump = DumpOf(cut);
        const std::string head =
            "CEntryIDInfo\r\n  EntryID: " + cut + "\r\n  Type: " + (header ? "eidtOneOff" : "eidtUnknown") +
            "\r\n  ShortTerm: No\r\n  Compound: No\r\n  ProviderUID: " + (header ? OneOffUid : std::string(32, '0')) +
            "\r\n  Object:  " + (header ? "CEntryIDOneOffRecipientObject\r\n" : "<NULL>");
        EXPECT_EQ(dump.compare(0, head.size(), head), 0) << dump;
    }
}

class RealIdentifiers : public StoreHost
{
protected:
    RealIdentifiers()
    {
        const std::string import = "'" + platform::OwnFolder() + "zeb-import' pst '" + ZEB_SAMPLE_PST + "' --inbox '" +
                                   InboxPath + "' > '" + File("import.log") + "' 2>&1";
        EXPECT_EQ(std::system(import.c_str()), 0) << import;
    }

    /// Expects the identifier in a row to be dumped according to its bytes, and to contain the row's address type and
    /// address.
    void ExpectOneOff(const CZebRow& row, ULONG id, ULONG type, ULONG address)
    {
        const SBinary& binary = row[id];
        const std::string hex(row[id].String(false).GetString());
        const OneOff oneOff(std::string(reinterpret_cast<const char*>(binary.lpb), binary.cb));
        EXPECT_EQ(DumpOf(hex), oneOff.Dump(hex));
        EXPECT_EQ(row[type].String(false), oneOff.texts[1].c_str());
        // One sender has two forms of the address; the identifier has the last one.
        const CStringA named = row[address].String(false);
        EXPECT_EQ(named.Right(static_cast<int>(oneOff.texts[2].size())), oneOff.texts[2].c_str());
        ExpectEveryCutToDump(hex);
        ++(oneOff.wide ? m_wide : m_narrow);
    }

    ULONG m_wide = 0;
    ULONG m_narrow = 0;
};

TEST_F(RealIdentifiers, OfSendersMatchTheMessage)
{
    CZebTable table = Contents();
    table.SetColumns(6, PR_SENDER_ENTRYID, PR_SENDER_ADDRTYPE_A, PR_SENDER_EMAIL_ADDRESS_A,
                     PR_SENT_REPRESENTING_ENTRYID, PR_SENT_REPRESENTING_ADDRTYPE_A,
                     PR_SENT_REPRESENTING_EMAIL_ADDRESS_A);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ASSERT_EQ(rows.Count(), Messages);
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        ExpectOneOff(rows[i], PR_SENDER_ENTRYID, PR_SENDER_ADDRTYPE_A, PR_SENDER_EMAIL_ADDRESS_A);
        ExpectOneOff(rows[i], PR_SENT_REPRESENTING_ENTRYID, PR_SENT_REPRESENTING_ADDRTYPE_A,
                     PR_SENT_REPRESENTING_EMAIL_ADDRESS_A);
    }
}

TEST_F(RealIdentifiers, OfRecipientsMatchTheirRows)
{
    CZebTable table = Contents();
    table.SetColumns(1, PR_ENTRYID);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ULONG recipients = 0;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        CZebMessage wrapper;
        m_store->OpenEntry(rows[i][PR_ENTRYID], wrapper, MAPI_BEST_ACCESS);
        CComPtr<IMessage> message;
        ThrowIfFailed(wrapper.GetInterface().QueryInterface(IID_IMessage, message));
        CComPtr<IMAPITable> raw;
        ThrowIfFailed(message->GetRecipientTable(0, raw.Put()), message);
        CZebTable each(raw.Get());
        each.SetColumns(3, PR_ENTRYID, PR_ADDRTYPE_A, PR_EMAIL_ADDRESS_A);
        CZebRowSet found;
        each.QueryRows(&found, 0, nullptr, nullptr);
        recipients += found.Count();
        for (ULONG j = 0; j < found.Count(); ++j)
        {
            if (static_cast<const SBinary&>(found[j][PR_ENTRYID]).cb == 0)
            {
                EXPECT_EQ(DumpOf(""), "") << "a recipient that the file keeps without an identifier";
            }
            else
            {
                ExpectOneOff(found[j], PR_ENTRYID, PR_ADDRTYPE_A, PR_EMAIL_ADDRESS_A);
            }
        }
    }
    EXPECT_GT(m_wide + m_narrow, Messages);
    EXPECT_LE(m_wide + m_narrow, recipients);
}

} // namespace
} // namespace zeb::test
