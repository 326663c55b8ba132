#include "tests/zebstore/disk/WorkEffects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace zebstore::test
{

namespace fs = std::filesystem;

Lines Without(const Lines& a, const Lines& b)
{
    Lines left;
    std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(left));
    return left;
}

WorkEffects::WorkEffects(const std::string& original, const std::string& copy)
{
    Lines problems;
    CopyStore(original, copy);
    m_before = DumpStore(copy, problems);
    EXPECT_EQ(problems, Lines());
    Lines last = m_before;
    for (size_t step = 0; step < StoreWork::StepCount(); ++step)
    {
        StoreWork work(copy, false);
        EXPECT_TRUE(work.Open() && work.Step(step)) << StoreWork::StepName(step) << ": " << work.Failures().back().text;
        work.Close();
        Lines now = DumpStore(copy, problems);
        EXPECT_EQ(problems, Lines()) << StoreWork::StepName(step);
        m_effects.push_back({Without(now, last), Without(last, now)});
        last = std::move(now);
    }
    EXPECT_EQ(last, After(std::vector<bool>(m_effects.size(), true)));
}

Lines WorkEffects::After(const std::vector<bool>& done) const
{
    Lines lines = m_before;
    for (size_t step = 0; step < m_effects.size(); ++step)
    {
        if (done[step])
        {
            const Effect& effect = m_effects[step];
            lines = Without(lines, effect.removed);
            lines.insert(lines.end(), effect.added.begin(), effect.added.end());
            std::sort(lines.begin(), lines.end());
        }
    }
    return lines;
}

void WorkEffects::AddFound(const Lines& found, std::vector<bool>& done) const
{
    for (size_t step = 0; step < m_effects.size(); ++step)
    {
        const Effect& effect = m_effects[step];
        const bool removed = !effect.removed.empty() && Without(effect.removed, found) == effect.removed;
        const bool added = !effect.added.empty() && Without(effect.added, found).empty();
        done[step] = done[step] || added || removed;
    }
}

void CopyStore(const std::string& from, const std::string& to)
{
    // On Windows an open file cannot be removed: a handle that leaked is noticed here.
    for (const char* suffix : {"", "-wal", "-shm", "-journal"})
    {
        fs::remove(fs::u8path(to + suffix));
    }
    fs::copy_file(fs::u8path(from), fs::u8path(to));
}

} // namespace zebstore::test
