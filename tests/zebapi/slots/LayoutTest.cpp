// What objects hold, which hosts and other compilers count on: a table of operations and the fields behind it.
#include "platform/registry.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RegistryScope.h"
#include "zebapi/AdviseSink.h"
#include "zebapi/BinArray.h"
#include "zebapi/Folder.h"
#include "zebapi/NAMEID.h"
#include "zebapi/OnePROPVAL.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/Profiles.h"
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

TEST(Layout, ContainersAddTheirProviderAndWhetherItWasAskedFor)
{
    EXPECT_EQ(sizeof(CZebContainer), sizeof(CZebIProp) + sizeof(CZebBinary) + 8);
    const LogCapture log;
    CZebContainer container;
    const char* const fields = reinterpret_cast<const char*>(std::addressof(container)) + sizeof(CZebIProp);
    EXPECT_EQ(fields[sizeof(CZebBinary)], 0);
    container.IsExchange();
    EXPECT_EQ(fields[sizeof(CZebBinary)], 1);
}

TEST(Layout, ProfileNamesCountInTheirFirstField)
{
    const RegistryScope registry;
    platform::RegistryKey::Create(
        platform::RegistryRoot::CurrentUser,
        "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles\\one");
    CZebProfileNames names;
    const auto index = [&]
    {
        ULONG value = 0;
        std::memcpy(&value, reinterpret_cast<const char*>(&names) + 8, sizeof(value));
        return value;
    };
    EXPECT_EQ(index(), 0u);
    CString name;
    EXPECT_EQ(names.GetNextName(name), 1);
    EXPECT_EQ(index(), 1u);
    EXPECT_EQ(names.GetNextName(name), 0);
    EXPECT_EQ(index(), 1u);
    names.Reset();
    EXPECT_EQ(index(), 0u);
    EXPECT_EQ(sizeof(CZebProfAdmin), 16u);
}

} // namespace zeb::test
