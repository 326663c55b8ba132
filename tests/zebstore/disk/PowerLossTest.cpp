// The power is lost at each write, truncation, deletion and sync of a host's work: all that was not synced is lost, or a
// part of it in any order. With full durability all that was acknowledged is there; without, a beginning of it.
//
// ZEB_FAULTS=all in the environment makes several losses at each moment.
#include "tests/support/Count.h"
#include "tests/support/TempFolder.h"
#include "tests/zebstore/disk/DiskFaults.h"
#include "tests/zebstore/disk/RecordingDisk.h"
#include "tests/zebstore/disk/WorkEffects.h"
#include "tests/zebstore/storage/Storage.h"

#include <algorithm>
#include <filesystem>

namespace zebstore::test
{
namespace
{

constexpr const char* WorkName = "work.zeb";

class PowerLoss : public testing::Test
{
protected:
    /// The work with its steps marked in the record.
    static void Record(RecordingDisk& disk, const std::string& path, bool fullDurability)
    {
        const DiskScope scope(disk);
        StoreWork work(path, fullDurability);
        ASSERT_TRUE(work.Open());
        work.CheckpointEvery(40); // so that the log is begun anew several times
        for (size_t step = 0; step < StoreWork::StepCount(); ++step)
        {
            ASSERT_TRUE(work.Step(step)) << StoreWork::StepName(step) << work.Failures().back().text;
            disk.AddDone();
        }
        work.Close();
    }

    /// `check` looks at the files after each loss; it is given how many steps were done before.
    template <class Check>
    int LoseAtEach(const RecordingDisk& disk, Check&& check)
    {
        UnsyncedFiles files(m_original);
        int points = 0;
        size_t done = 0;
        for (const DiskEvent& event : disk.Events())
        {
            DiskEvent here = event;
            if (event.kind == DiskEvent::Kind::Done)
            {
                ++done;
                continue;
            }
            // SQLite may write the folder otherwise.
            here.name = m_original + event.name.substr(event.name.rfind(WorkName) + std::string(WorkName).size());
            files.Add(here);
            const int losses = AllFaults() ? 8 : 1;
            for (int loss = 0; loss < losses && !HasFailure(); ++loss, ++points)
            {
                SCOPED_TRACE("moment " + std::to_string(points) + ", " + std::to_string(done) + " steps done");
                std::mt19937 random(static_cast<unsigned>(points));
                std::filesystem::remove(std::filesystem::u8path(m_original + "-shm"));
                // Each third loss is that of everything.
                files.WriteImage(points % 3 == 0 ? nullptr : &random);
                check(done);
            }
        }
        return points;
    }

    /// The largest number of steps, from the first, whose effects and no others the store has. Some have none.
    size_t DoneIn(const Lines& lines) const
    {
        const auto found = std::find(m_after.rbegin(), m_after.rend(), lines);
        if (found == m_after.rend())
        {
            ADD_FAILURE() << "the store has the effects of other than the first steps";
            return 0;
        }
        return static_cast<size_t>(m_after.rend() - found) - 1;
    }

    void LoseDuringWork(bool fullDurability)
    {
        MakeStoreToWorkOn(m_original, true);
        const WorkEffects effects(m_original, m_path);
        for (size_t count = 0; count <= StoreWork::StepCount(); ++count)
        {
            std::vector<bool> done(StoreWork::StepCount());
            std::fill_n(done.begin(), count, true);
            m_after.push_back(effects.After(done));
        }
        CopyStore(m_original, m_path);
        RecordingDisk disk;
        Record(disk, m_path, fullDurability);
        size_t lost = 0;
        const int points = LoseAtEach(disk, [&](size_t done)
        {
            Lines problems;
            const size_t found = DoneIn(DumpStore(m_original, problems));
            EXPECT_EQ(problems, Lines());
            EXPECT_TRUE(found <= done + 1 || m_after[found] == m_after[done + 1]) << found;
            EXPECT_TRUE(!fullDurability || found >= done) << "only " << found << " steps are there";
            lost += found < done ? 1 : 0;
        });
        EXPECT_GT(points, 200);
        EXPECT_EQ(lost == 0, fullDurability) << "without full durability the last steps may be lost";
        std::printf("%s durability: the last saves lost in %zu of %d\n", fullDurability ? "full" : "normal", lost,
                    points);
        zeb::test::PrintCount("power losses", points);
    }

    zeb::test::TempFolder m_folder;
    const std::string m_original = m_folder.File("lost.zeb");
    const std::string m_path = m_folder.File(WorkName);
    std::vector<Lines> m_after;
};

TEST_F(PowerLoss, LosesNothingWithFullDurability)
{
    LoseDuringWork(true);
}

TEST_F(PowerLoss, LosesTheLastSavesWithNormalDurability)
{
    LoseDuringWork(false);
}

TEST_F(PowerLoss, LosesNothingDuringUpgrades)
{
    for (int version = 1; version < SchemaVersion; ++version)
    {
        SCOPED_TRACE("version " + std::to_string(version));
        std::filesystem::remove(std::filesystem::u8path(m_original));
        MakeStoreToWorkOn(m_original, false);
        MakeOlder(*StoreFile::Open(m_original, {}), version);
        CopyStore(m_original, m_path);
        RecordingDisk disk;
        {
            const DiskScope scope(disk);
            StoreFile::Open(m_path, {});
        }
        Lines problems;
        const Lines before = DumpStore(m_path, problems);
        const int points = LoseAtEach(disk, [&](size_t)
        {
            EXPECT_EQ(DumpStore(m_original, problems), before);
            EXPECT_EQ(problems, Lines());
        });
        zeb::test::PrintCount("power losses", points);
        EXPECT_GT(points, 10);
    }
}

} // namespace
} // namespace zebstore::test
