#include "tests/zebstore/storage/Storage.h"

#include "platform/module.h"

#include <cstdlib>
#include <fstream>
#include <thread>

namespace zebstore::test
{
namespace
{

class CrashTest : public StorageTest
{
protected:
    void RunWriter(int milliseconds)
    {
        const std::string command = zeb::platform::OwnFolder() + ZEB_STORE_WRITER + " \"" + Path("test.zeb") + "\" \"" +
                                    Path("saved.log") + "\" " + std::to_string(milliseconds);
        const int status = std::system(command.c_str());
        // The status is in the upper byte on POSIX systems and as it is elsewhere.
        EXPECT_TRUE(status == 9 || status == 9 << 8) << command << ": " << status;
    }
    std::vector<MessageId> Saved()
    {
        std::vector<MessageId> saved;
        std::ifstream log(Path("saved.log"));
        for (MessageId message = 0; log >> message;)
        {
            saved.push_back(message);
        }
        return saved;
    }
};

TEST_F(CrashTest, SavedMessagesSurviveACrash)
{
    for (int round = 0; round < 4; ++round)
    {
        m_store.reset();
        RunWriter(300 + 170 * round);
        m_store = StoreFile::Open(Path("test.zeb"), {});
        for (const std::string& problem : Store().CheckWhole())
        {
            ADD_FAILURE() << problem;
        }
        const std::vector<MessageId> saved = Saved();
        EXPECT_FALSE(saved.empty());
        for (const MessageId message : saved)
        {
            ASSERT_TRUE(Store().Messages().Exists(message)) << message;
        }
        const MessageContent last = Store().Messages().LoadWhole(saved.back());
        EXPECT_EQ(last.properties.Text(PR_BODY_W), std::string(20000, 'b'));
        EXPECT_EQ(last.recipients->size(), 1u);
        // At most the save that was under way may have been done without having been reported.
        EXPECT_LE(Store().Folders().Info(Inbox).messages, saved.size() + static_cast<size_t>(round) + 1);
    }
}

TEST_F(CrashTest, TwoProcessesWriteTheSameStore)
{
    std::thread other([this] { RunWriter(1500); });
    size_t mine = 0;
    while (Saved().size() < 5)
    {
        Store().Messages().Create({Inbox, false}, Mail("mine"));
        ++mine;
    }
    other.join();
    EXPECT_GE(Store().Folders().Info(Inbox).messages, mine + Saved().size());
}

} // namespace
} // namespace zebstore::test
