// What objects hold, which hosts and other compilers count on: a table of operations and the fields behind it.
#include "zebapi/BinArray.h"
#include "zebapi/OnePROPVAL.h"
#include "zebapi/RowSet.h"
#include "zebapi/TAGS.h"
#include "zebapi/Table.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zeb::test
{

namespace
{

/// The pointer at `index` behind the table of operations.
template <class Object>
void* PointerAt(const Object& object, size_t index)
{
    void* pointer = nullptr;
    std::memcpy(&pointer, reinterpret_cast<const char*>(std::addressof(object)) + 8 * (1 + index), 8);
    return pointer;
}

} // namespace

TEST(Layout, ObjectsHoldTheirFieldsOnly)
{
    EXPECT_EQ(sizeof(CZebOnePropVal), 24u);
    EXPECT_EQ(sizeof(CZebPropVal), sizeof(CZebOnePropVal));
    EXPECT_EQ(sizeof(CZebPropTagArray), 16u);
    EXPECT_EQ(sizeof(CZebBinary), 16u);
    EXPECT_EQ(sizeof(CZebEntryIDRequest), sizeof(CZebBinary));
    EXPECT_EQ(sizeof(CZebBinArray), 16u);
    EXPECT_EQ(sizeof(CZebTable), 16u);
    EXPECT_EQ(sizeof(CZebRowSet), 24u);
    EXPECT_EQ(sizeof(CZebRow), 24u);
}

TEST(Layout, ParentsStandBeforeWhatIsLookedAt)
{
    SPropValue value = {};
    SRow row = {};
    int parent = 0;
    const CZebOnePropVal view(&value, &parent);
    EXPECT_EQ(PointerAt(view, 0), &parent);
    EXPECT_EQ(PointerAt(view, 1), &value);
    const CZebRow rowView(&row, &parent);
    EXPECT_EQ(PointerAt(rowView, 0), &parent);
    EXPECT_EQ(PointerAt(rowView, 1), &row);
}

} // namespace zeb::test
