#include "tests/zebapi/slots/Slots.h"

using namespace zeb::test;

TEST(Slots, EveryClassHasItsTable)
{
    EXPECT_EQ(SlotTables().size(), 37u);
}

TEST(Slots, EveryOperationHasItsSlot)
{
    for (const auto& [name, table] : SlotTables())
    {
        for (const SlotRow& row : table.rows)
        {
            EXPECT_EQ(row.entry, EntryOfSlot(row.number, table.destructor)) << name << " " << row.name;
        }
    }
}

TEST(Slots, EveryAddedSlotIsPinned)
{
    for (const auto& [name, table] : SlotTables())
    {
        std::set<size_t> pinned = {table.destructor};
        for (const SlotRow& row : table.rows)
        {
            EXPECT_TRUE(pinned.insert(row.number).second) << name << " has two of slot " << row.number;
        }
        for (size_t slot = table.first; slot < table.count; ++slot)
        {
            EXPECT_EQ(pinned.count(slot), 1u) << name << " lacks slot " << slot;
        }
    }
}

TEST(Slots, NoClassHasFurtherOnes)
{
    for (const auto& [name, table] : SlotTables())
    {
        EXPECT_EQ(table.following, EntryOfSlot(table.count, table.destructor)) << name;
    }
}
