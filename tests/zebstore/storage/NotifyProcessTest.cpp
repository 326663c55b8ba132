#include "tests/zebstore/storage/NotifyTables.h"

#include "platform/module.h"

#include <cstdlib>

namespace zebstore::test
{
namespace
{

using NotifyProcessTest = NotifyTables;

// No more changes than a folder lists, so that every one of them is notified.
TEST_F(NotifyProcessTest, AnotherProcessIsReportedByRow)
{
    for (LONG i = 0; i < 30; ++i)
    {
        Add(i * 3);
    }
    std::vector<Followed> tables;
    tables.emplace_back(Contents());
    tables.emplace_back(Sorted(Contents(), PR_IMPORTANCE, TABLE_SORT_DESCEND));
    tables.emplace_back(Restricted(Sorted(Contents(), PR_SUBJECT_A), 50));
    tables.emplace_back(Contents(Archive));
    tables.emplace_back(Hierarchy(IdOf(StandardFolder::Root), true));
    const std::string command = zeb::platform::OwnFolder() + ZEB_STORE_CHANGER + " \"" + Path("test.zeb") + "\" 100";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    for (size_t i = 0; i < tables.size(); ++i)
    {
        SCOPED_TRACE(i);
        ExpectFollowed(tables[i]);
        EXPECT_FALSE(tables[i].Sink().Events().empty());
    }
}

} // namespace
} // namespace zebstore::test
