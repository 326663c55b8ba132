#include "qorth/RegKey.h"
#include "platform/registry.h"

#include "tests/support/RegistryScope.h"

#include <gtest/gtest.h>

using zeb::platform::RegistryKey;
using zeb::platform::RegistryRoot;

namespace
{

class RegKey : public ::testing::Test
{
protected:
    RegistryScope m_scope;
};

TEST_F(RegKey, AnAbsentKeyReadsEmpty)
{
    const CQorRegKey key(HKEY_LOCAL_MACHINE, "Software\\Nobody", 0, 1);
    EXPECT_FALSE(key.IsOpen());
    EXPECT_EQ(key.StringValue("DLLPathEx"), "");
    EXPECT_EQ(key.GetString(), "");
    CStringA text("old");
    EXPECT_FALSE(key.GetString(text, "DLLPathEx", 1));
    EXPECT_EQ(text, "");
    text = "old";
    EXPECT_FALSE(key.EnumKey(0, text));
    EXPECT_EQ(text, "");
}

TEST_F(RegKey, ReadsValuesOfEachRoot)
{
    RegistryKey::Create(RegistryRoot::LocalMachine, "K").SetStringValue("name", "machine");
    RegistryKey::Create(RegistryRoot::CurrentUser, "K").SetStringValue("name", "user");
    RegistryKey::Create(RegistryRoot::ClassesRoot, "K").SetStringValue("", "classes");
    EXPECT_EQ(CQorRegKey(HKEY_LOCAL_MACHINE, "k", 0, 1).StringValue("NAME"), "machine");
    EXPECT_EQ(CQorRegKey(HKEY_CURRENT_USER, "K", 0, 1).StringValue("name"), "user");
    const CQorRegKey classes(HKEY_CLASSES_ROOT, "K", 0, 1);
    EXPECT_EQ(classes.GetString(), "classes");
    EXPECT_EQ(classes.StringValue(nullptr), "classes");
    CStringA text;
    EXPECT_TRUE(classes.GetString(text, "", 1));
    EXPECT_EQ(text, "classes");
    EXPECT_EQ(classes.StringValue("absent"), "");
}

TEST_F(RegKey, BelowAnotherRootNothingOpens)
{
    EXPECT_FALSE(CQorRegKey(HKEY_USERS, "").IsOpen());
    EXPECT_FALSE(CQorRegKey(nullptr, "K").IsOpen());
}

TEST_F(RegKey, EnumeratesAllSubKeys)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, "Profiles\\Anna");
    RegistryKey::Create(RegistryRoot::CurrentUser, "Profiles\\Bert");
    const CQorRegKey key(HKEY_CURRENT_USER, "Profiles");
    CStringA name;
    EXPECT_TRUE(key.EnumKey(0, name));
    EXPECT_EQ(name, "Anna");
    EXPECT_TRUE(key.EnumKey(1, name));
    EXPECT_EQ(name, "Bert");
    EXPECT_FALSE(key.EnumKey(2, name));
    EXPECT_EQ(name, "");
}

} // namespace
