// Profiles and store files that cannot be used: one clear error text that names the object, and nothing is changed.
#include "tests/integration/Host.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace zeb::test
{
namespace
{

std::string Contents(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

void Write(const std::string& file, const std::string& bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

class BadStore : public Host
{
protected:
    BadStore()
        : m_file(File("bad.zeb"))
    {
        Start();
        CreateProfile("mine", m_file);
        CZebSession session = LogOn();
        {
            CZebMsgStore store = OpenDefaultStore(session);
            CZebPropValArray properties(2);
            properties[PR_SUBJECT_A] = "there";
            properties[PR_BODY_A] = std::string(300'000, 'x').c_str();
            store.OpenInboxFolder(MAPI_BEST_ACCESS).CreateMessage(properties, true, 0);
        }
        Zeb_GetMAPI().Uninitialize(&session);
        Start();
    }

    /// Logs on and opens the store; either may fail.
    Failure OpenStore()
    {
        const Failure thrown = FailureOf([&]
        {
            CZebSession session = LogOn();
            try
            {
                OpenDefaultStore(session).OpenInboxFolder(MAPI_BEST_ACCESS);
            }
            catch (...)
            {
                session.Logoff(0, 0, 0);
                throw;
            }
            session.Logoff(0, 0, 0);
        });
        return thrown;
    }

    void ExpectSentenceNamesTheFile(const Failure& thrown)
    {
        EXPECT_LT(thrown.result, 0);
        EXPECT_NE(thrown.text.find("bad.zeb"), std::string::npos) << thrown.text;
        EXPECT_EQ(thrown.text.find("bad.zeb"), thrown.text.rfind("bad.zeb")) << "named once: " << thrown.text;
    }

    const std::string m_file;
};

TEST_F(BadStore, AMissingProfileIsRefused)
{
    const Failure thrown = FailureOf([&] { LogOn("nobody"); });
    EXPECT_TRUE(thrown.result == MAPI_E_NOT_FOUND || thrown.result == MAPI_E_LOGON_FAILED) << std::hex << thrown.result;
    EXPECT_TRUE(Zeb_GetMAPI().WasFailed());
}

TEST_F(BadStore, AMissingFileIsOnlyNamed)
{
    std::filesystem::remove(m_file);
    std::filesystem::remove(m_file + "-wal");
    std::filesystem::remove(m_file + "-shm");
    ExpectSentenceNamesTheFile(OpenStore());
    EXPECT_FALSE(std::filesystem::exists(m_file));
}

TEST_F(BadStore, ANonDatabaseIsLeftAlone)
{
    const std::string text(5000, 't');
    Write(m_file, text);
    ExpectSentenceNamesTheFile(OpenStore());
    EXPECT_EQ(Contents(m_file), text);
}

TEST_F(BadStore, AnEmptyFileIsLeftAlone)
{
    Write(m_file, "");
    ExpectSentenceNamesTheFile(OpenStore());
    EXPECT_EQ(std::filesystem::file_size(m_file), 0u);
}

TEST_F(BadStore, ATruncatedFileIsNamed)
{
    const auto size = std::filesystem::file_size(m_file);
    ASSERT_GT(size, 100'000u);
    const std::string half = Contents(m_file).substr(0, size / 2);
    Write(m_file, half);
    ExpectSentenceNamesTheFile(OpenStore());
    EXPECT_EQ(Contents(m_file), half);
}

TEST_F(BadStore, NewerSchemasAreLeftAlone)
{
    // SQLite keeps the user version in four bytes, high byte first, at offset 60 of the header.
    std::string bytes = Contents(m_file);
    bytes[60] = 0x7F;
    Write(m_file, bytes);
    const Failure thrown = OpenStore();
    ExpectSentenceNamesTheFile(thrown);
    EXPECT_NE(thrown.text.find("schema version"), std::string::npos) << thrown.text;
    EXPECT_EQ(Contents(m_file), bytes);
}

TEST_F(BadStore, AReadOnlyFileRefusesChanges)
{
    namespace fs = std::filesystem;
    fs::permissions(m_file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    const std::string before = Contents(m_file);
    CZebSession session = LogOn();
    {
        CZebFolder inbox = OpenDefaultStore(session).OpenInboxFolder(MAPI_BEST_ACCESS);
        EXPECT_EQ(inbox.GetContentsTable(0).GetRowCount(), 1u);
        const Failure thrown = FailureOf([&] { inbox.CreateMessage(0); });
        ExpectSentenceNamesTheFile(thrown);
        EXPECT_EQ(thrown.result, MAPI_E_NO_ACCESS);
    }
    session.Logoff(0, 0, 0);
    fs::permissions(m_file, fs::perms::owner_write, fs::perm_options::add);
    EXPECT_EQ(Contents(m_file), before);
}

} // namespace
} // namespace zeb::test
