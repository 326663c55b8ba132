// The layout of objects on which hosts and other compilers depend: a table of operations and the fields after it.
#include "zebapi/AdviseSink.h"
#include "zebapi/BinArray.h"
#include "zebapi/NAMEID.h"
#include "zebapi/OnePROPVAL.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/Restrict.h"
#include "zebapi/RowSet.h"
#include "zebapi/SESSION.h"
#include "zebapi/SortOrder.h"
#include "zebapi/TAGS.h"
#include "zebapi/Table.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zeb::test
{

TEST(Layout, ObjectsHoldTheirFieldsOnly)
{
    EXPECT_EQ(sizeof(CZebOnePropVal), 24u);
    EXPECT_EQ(sizeof(CZebPropValArray), 32u);
    EXPECT_EQ(sizeof(CZebPropProblemArray), 16u);
    EXPECT_EQ(sizeof(CZebPropTagArray), 16u);
    EXPECT_EQ(sizeof(CZebBinary), 16u);
    EXPECT_EQ(sizeof(CZebBinArray), 16u);
    EXPECT_EQ(sizeof(CZebTable), 16u);
    EXPECT_EQ(sizeof(CZebRowSet), 24u);
    EXPECT_EQ(sizeof(CZebRow), 24u);
    EXPECT_EQ(sizeof(CZebRestriction), 24u);
    EXPECT_EQ(sizeof(CZebSortOrder), 16u);
    EXPECT_EQ(sizeof(CZebSession), 16u);
    EXPECT_EQ(sizeof(CZebNameIdHelper), 24u);
    EXPECT_EQ(sizeof(CAdviseSinkDelegate), 8u);
    EXPECT_EQ(sizeof(ZebNamedValue), 16u);
    EXPECT_EQ(sizeof(ZebNameTable), 24u);
}

} // namespace zeb::test
