// Each call that SQLite makes of the disk fails once while a host works: the host is told, what was saved is there.
#include "tests/support/Count.h"
#include "tests/support/TempFolder.h"
#include "tests/zebstore/disk/DiskFaults.h"
#include "tests/zebstore/disk/WorkEffects.h"
#include "tests/zebstore/storage/Storage.h"

#include <algorithm>

namespace zebstore::test
{
namespace
{

struct Outcome
{
    bool opened = false;
    std::vector<bool> done;
    std::vector<StepFailure> failures;
};

/// The store to work on, and what the work does to it: the same for all tests.
struct Shared
{
    zeb::test::TempFolder folder;
    const std::string original = folder.File("original.zeb");
    const std::string path = folder.File("work.zeb");
    std::unique_ptr<WorkEffects> effects;
};
Shared* g_shared = nullptr;

class FailingDisks : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        g_shared = new Shared;
        MakeStoreToWorkOn(g_shared->original, true);
        g_shared->effects = std::make_unique<WorkEffects>(g_shared->original, g_shared->path);
    }
    static void TearDownTestSuite()
    {
        delete g_shared;
        g_shared = nullptr;
    }
    void SetUp() override
    {
        m_objects = g_liveObjects;
        m_buffers = g_liveBuffers;
    }

    Outcome Work(bool fullDurability)
    {
        Outcome outcome;
        outcome.done.resize(StoreWork::StepCount());
        StoreWork work(m_path, fullDurability);
        outcome.opened = work.Open();
        for (size_t step = 0; outcome.opened && step < StoreWork::StepCount(); ++step)
        {
            outcome.done[step] = work.Step(step);
        }
        work.Close();
        outcome.failures = work.Failures();
        return outcome;
    }

    void ExpectStated(const Outcome& outcome, const DiskFault& fault)
    {
        for (const StepFailure& failure : outcome.failures)
        {
            EXPECT_TRUE(IsStated(failure.code))
                << failure.step << ": " << std::hex << failure.code << " " << failure.text;
            EXPECT_NE(failure.text, "") << failure.step;
        }
        const auto failed = std::count(outcome.done.begin(), outcome.done.end(), false);
        if (!fault.lasting)
        {
            EXPECT_LE(outcome.failures.size(), 1u)
                << "the second failure is " << outcome.failures.back().step << ": " << outcome.failures.back().text;
            EXPECT_LE(outcome.opened ? failed : 0, 1);
        }
    }

    void ExpectWhole(Outcome outcome)
    {
        Lines problems;
        const Lines found = DumpStore(m_path, problems);
        EXPECT_EQ(problems, Lines());
        // A step that failed may have been done: not all that it asks follows from what it did.
        m_effects->AddFound(found, outcome.done);
        const Lines expected = m_effects->After(outcome.done);
        EXPECT_EQ(Without(found, expected), Lines()) << "nobody made this";
        EXPECT_EQ(Without(expected, found), Lines()) << "this was lost";
    }

    /// @return whether the work made so many calls
    bool RunWith(const DiskFault& fault, int number, bool fullDurability)
    {
        SCOPED_TRACE(std::string(NameOf(fault.call)) + " " + std::to_string(number) + " " + fault.name);
        CopyStore(m_original, m_path);
        FailingDisk disk;
        Outcome outcome;
        {
            const DiskScope scope(disk);
            disk.Arm(fault, number);
            outcome = Work(fullDurability);
            EXPECT_EQ(OpenDiskFiles(), 0);
        }
        EXPECT_EQ(g_liveObjects.load(), m_objects);
        EXPECT_EQ(g_liveBuffers.load(), m_buffers);
        ExpectStated(outcome, fault);
        ExpectWhole(outcome);
        m_failed += outcome.failures.empty() ? 0 : 1;
        return disk.Happened();
    }

    void RunAll(const std::vector<DiskFault>& faults, int least, bool fullDurability = false)
    {
        m_failed = 0;
        const int points = EachFault(faults, Numbers(), [&](const DiskFault& fault, int number)
        { return RunWith(fault, number, fullDurability); });
        EXPECT_GE(points, least);
        std::printf("%d calls of %s failed, %d of them failed a call of the host\n", points, NameOf(faults[0].call),
                    m_failed);
        zeb::test::PrintCount("I/O faults", points);
    }

    const std::string& m_original = g_shared->original;
    const std::string& m_path = g_shared->path;
    const WorkEffects* m_effects = g_shared->effects.get();
    long m_objects = 0;
    long m_buffers = 0;
    int m_failed = 0;
};

TEST_F(FailingDisks, WorkDoneOnASoundOneIsWhole)
{
    CopyStore(m_original, m_path);
    const Outcome outcome = Work(false);
    EXPECT_EQ(outcome.failures.size(), 0u);
    ExpectWhole(outcome);
    EXPECT_NE(m_effects->Before(), m_effects->After(outcome.done));
}

TEST_F(FailingDisks, OpensThatFailLoseNothing)
{
    RunAll(OpenFaults, 2);
}
TEST_F(FailingDisks, ReadsThatFailLoseNothing)
{
    RunAll(ReadFaults, 20);
}
TEST_F(FailingDisks, WritesThatFailLoseNothing)
{
    RunAll(WriteFaults, 100);
}
TEST_F(FailingDisks, SyncsThatFailLoseNothing)
{
    RunAll(SyncFaults, 2);
}
TEST_F(FailingDisks, SyncsOfEachSaveLoseNothing)
{
    RunAll(SyncFaults, 14, true);
}
TEST_F(FailingDisks, TruncationsThatFailLoseNothing)
{
    RunAll(TruncateFaults, 0);
}
TEST_F(FailingDisks, UnknownSizesLoseNothing)
{
    RunAll(SizeFaults, 2);
}
TEST_F(FailingDisks, DeletionsThatFailLoseNothing)
{
    RunAll(DeleteFaults, 1);
}
TEST_F(FailingDisks, AccessesThatFailLoseNothing)
{
    RunAll(AccessFaults, 1);
}
TEST_F(FailingDisks, LocksThatFailLoseNothing)
{
    RunAll(LockFaults, 2);
}
TEST_F(FailingDisks, SharedMemoryThatFailsLosesNothing)
{
    RunAll(MapFaults, 1);
}
TEST_F(FailingDisks, SharedLocksThatFailLoseNothing)
{
    RunAll(SharedLockFaults, 30);
}

} // namespace
} // namespace zebstore::test
