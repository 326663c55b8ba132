// The context in the exceptions of failed operations.
#include "tests/integration/Content.h"

using namespace zeb::test;

namespace
{

template <class Body>
std::string ContextOf(Body&& body)
{
    return FailureOf(std::forward<Body>(body)).context;
}

SBinary Bytes(const char* text)
{
    return {static_cast<ULONG>(std::strlen(text)), reinterpret_cast<BYTE*>(const_cast<char*>(text))};
}

class ContextOfFailures : public StoreHost
{
};

} // namespace

TEST_F(ContextOfFailures, NamesTheFolderOrTheEntry)
{
    CZebFolder inbox = Inbox();
    EXPECT_EQ(ContextOf([&] { inbox.OpenFolderByNameA("Missing"); }), "GetFolderEntryIdByNameA 'Missing'");
    const WCHAR wide[] = {'W', 'e', 'g', 0};
    EXPECT_EQ(ContextOf([&] { inbox.OpenFolderByNameW(wide); }), "GetFolderEntryIdByNameW 'Weg'");
    const SBinary id = Bytes("ab");
    const std::string entry = " entry 6162 (2 bytes)";
    CZebMessage message;
    EXPECT_EQ(ContextOf([&] { m_store->OpenEntry(id, message, 0); }), "OpenEntry" + entry);
    EXPECT_EQ(ContextOf([&] { m_session->OpenEntry(id, message, 0); }), "OpenEntry" + entry);
    EXPECT_EQ(ContextOf([&] { m_session->OpenMsgStore(id, nullptr, 0); }), "OpenMsgStore" + entry);
    EXPECT_EQ(ContextOf([&] { inbox.DeleteFolder(id, nullptr, 0, nullptr); }), "DeleteFolder" + entry);
    std::string shown;
    for (int i = 0; i < 32; ++i)
    {
        shown += "61";
    }
    EXPECT_EQ(ContextOf([&] { m_store->OpenEntry(Bytes(std::string(40, 'a').c_str()), message, 0); }),
              "OpenEntry entry " + shown + "... (40 bytes)");
}

TEST_F(ContextOfFailures, CountsTheMessagesOfAList)
{
    CZebFolder inbox = Inbox();
    CZebFolder other = inbox.CreateFolder("Other", false, true, 0, nullptr, FOLDER_GENERIC);
    SBinary ids[] = {Bytes("ab"), Bytes("cd")};
    SBinaryArray list = {2, ids};
    EXPECT_EQ(ContextOf([&] { inbox.DeleteMessages(&list, nullptr, 0, nullptr); }), "DeleteMessages 2 messages");
    EXPECT_EQ(ContextOf([&] { inbox.DeleteMessage(ids[0]); }), "DeleteMessages 1 message");
    EXPECT_EQ(ContextOf([&] { inbox.MoveMessages(&list, other, 0, nullptr, nullptr); }), "CopyMessages 2 messages");
}

TEST_F(ContextOfFailures, NamesThePropertyOrCountsThem)
{
    CZebFolder inbox = m_store->OpenInboxFolder(0);
    SPropValue value = {};
    value.ulPropTag = PR_COMMENT_A;
    value.Value.lpszA = const_cast<char*>("x");
    EXPECT_EQ(ContextOf([&] { inbox.SetProps(1, &value, nullptr); }), "SetProps PR_COMMENT 0x3004001E");
    SPropValue two[] = {value, value};
    EXPECT_EQ(ContextOf([&] { inbox.SetProps(2, two, nullptr); }), "SetProps 2 values");
    SPropTagArray tag = {1, {PR_COMMENT_A}};
    EXPECT_EQ(ContextOf([&] { inbox.DeleteProps(&tag, nullptr); }), "DeleteProps PR_COMMENT 0x3004001E");
    EXPECT_EQ(ContextOf([&] { inbox.OpenProperty(PR_CONTENT_COUNT, 0); }), "OpenProperty PR_CONTENT_COUNT 0x36020003");
    EXPECT_EQ(ContextOf(
                  [&]
    {
        ULONG count = 0;
        CZebPropValArray all;
        inbox.GetProps(nullptr, &count, &all, 0x40000000);
    }),
              "GetProps all properties");
}

TEST_F(ContextOfFailures, SaysWhereATableLooked)
{
    CZebTable table = m_store->OpenInboxFolder(0).GetContentsTable(0);
    EXPECT_EQ(ContextOf([&] { table.FreeBookmark(4711); }), "FreeBookmark bookmark 4711");
    EXPECT_EQ(ContextOf([&] { table.SeekRow(4711, -1, nullptr); }), "SeekRow -1 rows from bookmark 4711");
    EXPECT_EQ(ContextOf([&] { table.FindRow(nullptr, 4711, 0); }), "FindRow from bookmark 4711");
    EXPECT_EQ(ContextOf([&] { table.Unadvise(4711); }), "Unadvise connection 4711");
    SPropTagArray none = {0, {}};
    EXPECT_EQ(ContextOf([&] { table.SetColumns(&none); }), "SetColumns 0 tags");
}
