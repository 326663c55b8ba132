// The entry identifiers of a real mailbox, imported into a store and dumped by the library.
#include "tests/integration/Host.h"

#include "platform/module.h"

#include <cstdlib>

namespace zeb::test
{
namespace
{

constexpr const char* kInbox = "lokay-m/MLOKAY (Non-Privileged)/Personal";
constexpr ULONG kMessages = 47;

const std::string kOneOffUid = "812B1FA4BEA310199D6E00DD010F5402";

/// The dump of a one-off identifier in wide text, out of its bytes and what the mail says of the address.
std::string OneOffDump(const std::string& hex, const CZebRow& row, ULONG name, ULONG type, ULONG address)
{
    const auto text = [&](ULONG tag) { return std::string(row[tag].String(false).GetString()); };
    return "CEntryIDInfo\r\n  EntryID: " + hex +
           "\r\n  Type: eidtOneOff\r\n  ShortTerm: No\r\n  Compound: No\r\n  ProviderUID: " + kOneOffUid +
           "\r\n  Object:  CEntryIDOneOffRecipientObject\r\n    Unicode: Yes\r\n    CEntryIDOneOffInfo\r\n"
           "    DisplayName: " +
           text(name) + "\r\n    AddressType: " + text(type) + "\r\n    EmailAddress=" + text(address) +
           "\r\n";
}

std::string DumpOf(const std::string& hex)
{
    return std::string(Zeb_DumpEntryID(hex.c_str()).GetString());
}

/// Whatever is cut off an identifier, the rest is dumped as far as it goes.
void ExpectEveryCutToDump(const std::string& hex)
{
    for (size_t size = 2; size < hex.size(); size += 2)
    {
        const std::string cut = hex.substr(0, size);
        const bool header = size >= 40;
        const std::string dump = DumpOf(cut);
        const std::string head =
            "CEntryIDInfo\r\n  EntryID: " + cut + "\r\n  Type: " + (header ? "eidtOneOff" : "eidtUnknown") +
            "\r\n  ShortTerm: No\r\n  Compound: No\r\n  ProviderUID: " +
            (header ? kOneOffUid : std::string(32, '0')) +
            "\r\n  Object:  " + (header ? "CEntryIDOneOffRecipientObject\r\n" : "<NULL>");
        EXPECT_EQ(dump.compare(0, head.size(), head), 0) << dump;
    }
}

class RealIdentifiers : public StoreHost
{
protected:
    RealIdentifiers()
    {
        const std::string import = "'" + platform::OwnFolder() + "zeb-import' pst '" + ZEB_SAMPLE_PST +
                                   "' --inbox '" + kInbox + "' > '" + File("import.log") + "' 2>&1";
        EXPECT_EQ(std::system(import.c_str()), 0) << import;
    }

    /// Expects the identifier in a row to dump as the name, type and address beside it say.
    static void ExpectOneOff(const CZebRow& row, ULONG id, ULONG name, ULONG type, ULONG address)
    {
        const std::string hex(row[id].String(false).GetString());
        EXPECT_EQ(DumpOf(hex), OneOffDump(hex, row, name, type, address));
        ExpectEveryCutToDump(hex);
    }
};

TEST_F(RealIdentifiers, OfSendersNameWhatTheMessageNames)
{
    CZebTable table = Contents();
    table.SetColumns(8, PR_SENDER_ENTRYID, PR_SENDER_NAME_A, PR_SENDER_ADDRTYPE_A, PR_SENDER_EMAIL_ADDRESS_A,
                     PR_SENT_REPRESENTING_ENTRYID, PR_SENT_REPRESENTING_NAME_A,
                     PR_SENT_REPRESENTING_ADDRTYPE_A, PR_SENT_REPRESENTING_EMAIL_ADDRESS_A);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ASSERT_EQ(rows.Count(), kMessages);
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        ExpectOneOff(rows[i], PR_SENDER_ENTRYID, PR_SENDER_NAME_A, PR_SENDER_ADDRTYPE_A,
                     PR_SENDER_EMAIL_ADDRESS_A);
        ExpectOneOff(rows[i], PR_SENT_REPRESENTING_ENTRYID, PR_SENT_REPRESENTING_NAME_A,
                     PR_SENT_REPRESENTING_ADDRTYPE_A, PR_SENT_REPRESENTING_EMAIL_ADDRESS_A);
    }
}

TEST_F(RealIdentifiers, OfRecipientsNameWhatTheirRowsName)
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
        ThrowIfFailed(wrapper.GetInterface().QueryInterface(IID_IMessage, message), __FILE__, __LINE__);
        CComPtr<IMAPITable> raw;
        ThrowIfFailed(message->GetRecipientTable(0, raw.Put()), message, __FILE__, __LINE__);
        CZebTable each(raw.Get());
        each.SetColumns(4, PR_ENTRYID, PR_DISPLAY_NAME_A, PR_ADDRTYPE_A, PR_EMAIL_ADDRESS_A);
        CZebRowSet found;
        each.QueryRows(&found, 0, nullptr, nullptr);
        recipients += found.Count();
        for (ULONG j = 0; j < found.Count(); ++j)
        {
            ExpectOneOff(found[j], PR_ENTRYID, PR_DISPLAY_NAME_A, PR_ADDRTYPE_A, PR_EMAIL_ADDRESS_A);
        }
    }
    EXPECT_GE(recipients, kMessages);
}

} // namespace
} // namespace zeb::test
