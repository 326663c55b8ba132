// What objects hold, which hosts and other compilers count on: a table of operations and the fields behind it.
#include "platform/registry.h"
#include "tests/support/LogCapture.h"
#include "tests/support/RegistryScope.h"
#include "zebapi/BinArray.h"
#include "zebapi/Folder.h"
#include "zebapi/MsgStore.h"
#include "zebapi/OnePROPVAL.h"
#include "zebapi/Profiles.h"
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

TEST(Layout, ContainersAddTheirProviderAndWhetherItWasAskedFor)
{
    EXPECT_EQ(sizeof(CZebContainer), sizeof(CZebIProp) + sizeof(CZebBinary) + 8);
    EXPECT_EQ(sizeof(CZebFolder), sizeof(CZebContainer));
    EXPECT_EQ(sizeof(CZebMsgStore), sizeof(CZebIProp));
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
