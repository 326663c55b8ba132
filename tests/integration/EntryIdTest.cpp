// Dumps of the provider's identifiers of store, folders and messages.
#include "tests/integration/Host.h"

namespace zeb::test
{
namespace
{

using EntryIdDump = StoreHost;

/// The content of a folder's or message's identifier: the object type after the header, then a database identifier.
std::string ItemDump(const std::string& hex, const std::string& type, const std::string& number,
                     const std::string& object)
{
    return "CEntryIDInfo\r\n  EntryID: " + hex + "\r\n  Type: " + type +
           "\r\n  ShortTerm: No\r\n  Compound: No\r\n  ProviderUID: " + hex.substr(8, 32) +
           "\r\n  Object:  CEntryIDData\r\n    Type: 0x0000000" + number + "\r\n    Object:\r\n    " + object +
           "\r\n      TODO: dump more there...\r\n";
}

std::string DumpOf(const CZebBinary& id)
{
    return std::string(Zeb_DumpEntryID(id.String()).GetString());
}

/// Each truncated identifier still gives a dump of the remaining part.
void ExpectEveryCutToDump(const CZebBinary& id)
{
    const std::string hex(id.String().GetString());
    for (size_t length = 0; length < hex.size(); ++length)
    {
        const std::string cut = hex.substr(0, length);
        const std::string dump(Zeb_DumpEntryID(cut.c_str()).GetString());
        const std::string begin =
            length == 0 ? "" : "CEntryIDInfo\r\n  EntryID: " + hex.substr(0, length / 2 * 2) + "\r\n  Type: ";
        EXPECT_EQ(dump.compare(0, begin.size(), begin), 0) << dump;
    }
}

TEST_F(EntryIdDump, StoreNamesItsProvidersFile)
{
    const CZebBinary id = m_store->GetEntryID();
    const std::string dump = DumpOf(id);
    EXPECT_NE(dump.find("Type: eidtMessageDatabase\r\n"), std::string::npos) << dump;
    EXPECT_NE(dump.find("  ProviderUID: 38A1BB1005E5101AA1BB08002B2A56C2\r\n"), std::string::npos) << dump;
    const std::string object =
        "  Object:  CEntryIDMessageDatabaseObject\r\n    DLLFileName: zebstore.dll\r\n    bIsExchange: No\r\n"
        "    WrappedProviderUID = 00000000000000000000000000000000\r\n    ServerShortname = \r\n"
        "    MailboxDN = \r\n";
    EXPECT_EQ(dump.substr(dump.size() - object.size()), object);
    ExpectEveryCutToDump(id);
}

TEST_F(EntryIdDump, ItsLengthMarksAFolder)
{
    const CZebBinary id = Inbox().GetEntryID();
    const std::string hex(id.String().GetString());
    EXPECT_EQ(DumpOf(id),
              ItemDump(hex, "eidtFolder", "2", "CEntryIDFolderObject\r\n      DatabaseGUID: " + hex.substr(44, 32)));
    ExpectEveryCutToDump(id);
}

TEST_F(EntryIdDump, ItsLengthMarksAMessage)
{
    AddMessage("one", 1);
    CZebTable table = Contents();
    table.SetColumns(1, PR_ENTRYID);
    CZebRowSet rows;
    table.QueryRows(&rows, 1, nullptr, nullptr);
    const CZebBinary id(static_cast<const SBinary&>(rows[0][PR_ENTRYID]));
    const std::string hex(id.String().GetString());
    EXPECT_EQ(DumpOf(id), ItemDump(hex, "eidtMessage", "3",
                                   "CEntryIDMessageObject\r\n      FolderDatabaseGUID: " + hex.substr(44, 32) +
                                       "\r\n      MessageDatabaseGUID: " + std::string(32, '0')));
    ExpectEveryCutToDump(id);
}

} // namespace
} // namespace zeb::test
