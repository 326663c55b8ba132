// A process that changes a store is killed at a random moment, again and again: what it was told is saved is there.
//
// ZEB_KILLS in the environment is the number of kills.
#include "tests/support/ChildProcess.h"
#include "tests/support/Count.h"
#include "tests/support/TempFolder.h"
#include "tests/zebstore/disk/MixedLoad.h"
#include "tests/zebstore/storage/Storage.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace zebstore::test
{
namespace
{

/// What a victim wrote to its log.
struct VictimLog
{
    bool opened = false;
    size_t done = 0;
    Content content;  ///< after all changes that were done
    LoadChange begun; ///< the one that may have been done
};

int Kills(int otherwise)
{
    const char* wanted = std::getenv("ZEB_KILLS");
    return wanted != nullptr ? std::atoi(wanted) : otherwise;
}

class Kill : public testing::Test
{
protected:
    /// @param content of the store before. A line that the kill cut is none.
    VictimLog ReadLog(const Content& content) const
    {
        VictimLog log;
        log.content = content;
        LoadChange change;
        std::ifstream file(std::filesystem::u8path(m_log), std::ios::binary);
        for (std::string line; std::getline(file, line) && !file.eof();)
        {
            log.opened = log.opened || line == "open";
            if (line[0] == '-')
            {
                change.removed.insert(line.substr(1));
            }
            else if (line[0] == '+')
            {
                change.added.insert(line.substr(1));
            }
            else if (line == "begin")
            {
                log.begun = std::exchange(change, LoadChange());
            }
            else if (line == "done")
            {
                Apply(std::exchange(log.begun, LoadChange()), log.content);
                ++log.done;
            }
        }
        return log;
    }

    /// Whether the victim has come to so many lines of the kind.
    bool HasWritten(const std::string& kind, unsigned count) const
    {
        std::ifstream file(std::filesystem::u8path(m_log), std::ios::binary);
        unsigned found = 0;
        for (std::string line; std::getline(file, line) && !file.eof();)
        {
            found += line == kind ? 1 : 0;
        }
        return found >= count;
    }

    static void Apply(const LoadChange& change, Content& content)
    {
        for (const std::string& line : change.removed)
        {
            const auto found = content.find(line);
            ASSERT_NE(found, content.end()) << line;
            content.erase(found);
        }
        content.insert(change.added.begin(), change.added.end());
    }

    /// Runs a victim and kills it so many microseconds after the line of its log.
    void RunVictim(const std::string& kind, unsigned count, unsigned microseconds)
    {
        std::filesystem::remove(std::filesystem::u8path(m_log));
        zeb::test::ChildProcess victim(ZEB_STORE_VICTIM, {m_path, m_log, std::to_string(m_random())});
        ASSERT_TRUE(victim.IsStarted());
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!HasWritten(kind, count) && std::chrono::steady_clock::now() < end)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
        ASSERT_TRUE(victim.Kill()) << "it ended by itself";
    }

    /// Compares the store with the log. @return what the store has
    Content Survey(const VictimLog& log)
    {
        const std::shared_ptr<StoreFile> store = StoreFile::Open(m_path, {});
        EXPECT_EQ(store->CheckWhole(), std::vector<std::string>());
        Content found = ContentOf(store);
        Content whole = log.content;
        Apply(log.begun, whole);
        EXPECT_TRUE(found == log.content || found == whole)
            << found.size() << " lines instead of " << log.content.size() << " or " << whole.size();
        m_done += log.done;
        m_opened += log.opened ? 1 : 0;
        m_halves += log.begun.added.empty() && log.begun.removed.empty() ? 0 : 1;
        return found;
    }

    zeb::test::TempFolder m_folder;
    const std::string m_path = m_folder.File("victim.zeb");
    const std::string m_log = m_folder.File("victim.log");
    std::mt19937 m_random{4711};
    size_t m_done = 0;
    int m_opened = 0;
    int m_halves = 0;
};

TEST_F(Kill, LosesNothingOfAMixedLoad)
{
    StoreFile::Create(m_path, "Test", {})->Texts().TurnOn();
    Content content;
    const int kills = Kills(40);
    for (int kill = 0; kill < kills && !HasFailure(); ++kill)
    {
        SCOPED_TRACE("kill " + std::to_string(kill));
        RunVictim("done", m_random() % 40, m_random() % 10000);
        content = Survey(ReadLog(content));
    }
    EXPECT_GT(m_done, 0u);
    std::printf("%zu changes acknowledged, %d kills during a change\n", m_done, m_halves);
    zeb::test::PrintCount("kills", kills);
}

TEST_F(Kill, LosesNothingOfAnUpgrade)
{
    const int kills = Kills(20);
    for (int kill = 0; kill < kills && !HasFailure(); ++kill)
    {
        const int version = 1 + kill % (SchemaVersion - 1);
        SCOPED_TRACE("kill " + std::to_string(kill) + ", version " + std::to_string(version));
        std::filesystem::remove(std::filesystem::u8path(m_path));
        Content content;
        {
            const std::shared_ptr<StoreFile> store = StoreFile::Create(m_path, "Test", {});
            MixedLoad load(store, m_random());
            for (int i = 0; i < 100; ++i)
            {
                load.Step([&](const LoadChange& change) { Apply(change, content); });
            }
            MakeOlder(*store, version);
        }
        if (version < AddressBookVersion)
        {
            // It had no address book.
            for (auto each = content.begin(); each != content.end();)
            {
                each = each->rfind("entry ", 0) == 0 ? content.erase(each) : std::next(each);
            }
        }
        RunVictim("start", 1, m_random() % 10000);
        Survey(ReadLog(content));
    }
    std::printf("%d of %d kills after the upgrade\n", m_opened, kills);
    zeb::test::PrintCount("kills", kills);
}

} // namespace
} // namespace zebstore::test
