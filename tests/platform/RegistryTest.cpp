#include "platform/registry.h"

#include "tests/support/Environment.h"
#include "tests/support/FailingNew.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/RegistryScope.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>
#include <vector>

using zeb::platform::RegistryError;
using zeb::platform::RegistryKey;
using zeb::platform::RegistryRoot;

namespace
{

class Registry : public ::testing::Test
{
protected:
    RegistryScope m_scope;
};

TEST_F(Registry, AnAbsentKeyDoesNotOpen)
{
    EXPECT_FALSE(RegistryKey::Open(RegistryRoot::LocalMachine, "Software\\Nobody").has_value());
}

TEST_F(Registry, CreatingAKeyCreatesItsParents)
{
    RegistryKey::Create(RegistryRoot::LocalMachine, "Software\\A\\B");
    EXPECT_TRUE(RegistryKey::Open(RegistryRoot::LocalMachine, "Software\\A\\B").has_value());
    EXPECT_TRUE(RegistryKey::Open(RegistryRoot::LocalMachine, "Software\\A").has_value());
    EXPECT_TRUE(RegistryKey::Open(RegistryRoot::LocalMachine, "Software").has_value());
}

TEST_F(Registry, TheThreeRootsAreApart)
{
    RegistryKey::Create(RegistryRoot::ClassesRoot, "Outlook.Application").SetStringValue("", "classes");
    RegistryKey::Create(RegistryRoot::CurrentUser, "Outlook.Application").SetStringValue("", "user");
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::ClassesRoot, "Outlook.Application")->StringValue(""), "classes");
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "Outlook.Application")->StringValue(""), "user");
    EXPECT_FALSE(RegistryKey::Open(RegistryRoot::LocalMachine, "Outlook.Application").has_value());
}

TEST_F(Registry, NamesCompareWithoutCase)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, "Software\\Mail").SetStringValue("DllPathEx", "a");
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "SOFTWARE\\MAIL");
    EXPECT_EQ(key.StringValue("DLLPATHEX"), "a");
    key.SetStringValue("dllpathex", "b");
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "software\\mail")->StringValue("DllPathEx"), "b");
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "")->SubKeyName(0), "Software");
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "")->SubKeyName(1), std::nullopt);
}

TEST_F(Registry, TextOfEveryCharacterIsKept)
{
    const std::string text = "\xC3\xA9 \xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E \xF0\x9F\x98\x80";
    RegistryKey::Create(RegistryRoot::CurrentUser, "Software\\" + text).SetStringValue(text, text);
    const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, "Software\\" + text);
    ASSERT_TRUE(key.has_value());
    EXPECT_EQ(key->StringValue(text), text);
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "Software")->SubKeyName(0), text);
    RegistryKey::Create(RegistryRoot::CurrentUser, "Software\\" + text).DeleteValue(text);
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "Software\\" + text)->StringValue(text), std::nullopt);
    RegistryKey::DeleteTree(RegistryRoot::CurrentUser, "Software\\" + text);
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "Software")->SubKeyName(0), std::nullopt);
}

TEST_F(Registry, ACopiedValueIsTheSame)
{
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "Software");
    key.SetStringValue("text", "a");
    key.SetBinaryValue("bytes", {1, 2, 3});
    key.CopyValue("text", "text copy");
    key.CopyValue("bytes", "text");
    EXPECT_EQ(key.StringValue("text copy"), "a");
    EXPECT_EQ(key.StringValue("text"), std::nullopt);
    EXPECT_EQ(key.BinaryValue("text"), (std::vector<unsigned char>{1, 2, 3}));
    EXPECT_EQ(key.BinaryValue("bytes"), key.BinaryValue("text"));
    EXPECT_THROW(key.CopyValue("absent", "text"), RegistryError);
    EXPECT_EQ(key.BinaryValue("text"), key.BinaryValue("bytes"));
}

TEST_F(Registry, ATrailingBackslashChangesNothing)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, "Software\\Mail\\");
    EXPECT_TRUE(RegistryKey::Open(RegistryRoot::CurrentUser, "Software\\Mail").has_value());
    EXPECT_TRUE(RegistryKey::Open(RegistryRoot::CurrentUser, "Software\\Mail\\").has_value());
}

TEST_F(Registry, TextKeepsQuotesAndLineEnds)
{
    const std::string text = "C:\\mail\\\"x\"; [a]=b\r\n%s 100%";
    RegistryKey::Create(RegistryRoot::CurrentUser, "K").SetStringValue("a=\"\\b", text);
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "K")->StringValue("a=\"\\b"), text);
}

TEST_F(Registry, EmptyTextIsAValue)
{
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    EXPECT_EQ(key.StringValue("x"), std::nullopt);
    key.SetStringValue("x", "");
    EXPECT_EQ(key.StringValue("x"), "");
}

TEST_F(Registry, BytesComeBackAsTheyWere)
{
    std::vector<unsigned char> bytes(300);
    for (size_t i = 0; i < bytes.size(); ++i)
    {
        bytes[i] = static_cast<unsigned char>(i);
    }
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    key.SetBinaryValue("bytes", bytes);
    key.SetBinaryValue("none", {});
    const auto again = RegistryKey::Open(RegistryRoot::CurrentUser, "K");
    EXPECT_EQ(again->BinaryValue("bytes"), bytes);
    EXPECT_EQ(again->BinaryValue("none"), std::vector<unsigned char>());
}

TEST_F(Registry, ValuesOfAnotherKindAreAbsent)
{
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    key.SetStringValue("text", "1");
    key.SetBinaryValue("bytes", {1});
    EXPECT_EQ(key.BinaryValue("text"), std::nullopt);
    EXPECT_EQ(key.StringValue("bytes"), std::nullopt);
}

TEST_F(Registry, AnExpandableTextComesExpanded)
{
    const zeb::test::EnvironmentScope folder("ZEB_TEST_FOLDER", "C:\\Common Files");
    const zeb::test::EnvironmentScope none("ZEB_TEST_NONE", std::nullopt);
    const auto expanded = [](const std::string& text)
    {
        RegistryScope::SetExpandable(RegistryRoot::LocalMachine, "Software\\WAB", "path", text);
        return RegistryKey::Open(RegistryRoot::LocalMachine, "Software\\WAB")->StringValue("path");
    };
    EXPECT_EQ(expanded("%ZEB_TEST_FOLDER%\\System\\wab32.dll"), "C:\\Common Files\\System\\wab32.dll");
    EXPECT_EQ(expanded("a%ZEB_TEST_FOLDER%%ZEB_TEST_FOLDER%b"), "aC:\\Common FilesC:\\Common Filesb");
    EXPECT_EQ(expanded("%ZEB_TEST_NONE%\\wab32.dll"), "%ZEB_TEST_NONE%\\wab32.dll");
    EXPECT_EQ(expanded("100% sure"), "100% sure");
    EXPECT_EQ(expanded(""), "");
    const std::string text(3000, 'x');
    EXPECT_EQ(expanded(text + "%ZEB_TEST_FOLDER%"), text + "C:\\Common Files");
}

TEST_F(Registry, APlainTextIsNotExpanded)
{
    const zeb::test::EnvironmentScope folder("ZEB_TEST_FOLDER", "x");
    RegistryKey::Create(RegistryRoot::CurrentUser, "K").SetStringValue("path", "%ZEB_TEST_FOLDER%");
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "K")->StringValue("path"), "%ZEB_TEST_FOLDER%");
}

TEST_F(Registry, LackOfMemoryClosesTheKey)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, "Software\\Key");
    const size_t before = zeb::test::OpenHandles();
    int failures = 0;
    for (const bool create : {false, true})
    {
        for (int after = 0; after < 1000; ++after)
        {
            const zeb::test::FailingNew failing(after, true);
            try
            {
                if (create)
                {
                    RegistryKey::Create(RegistryRoot::CurrentUser, "Software\\Key");
                }
                else
                {
                    RegistryKey::Open(RegistryRoot::CurrentUser, "Software\\Key");
                }
                break;
            }
            catch (const std::bad_alloc&)
            {
                ++failures;
            }
        }
    }
    EXPECT_GE(failures, 2);
    EXPECT_EQ(zeb::test::OpenHandles(), before);
}

TEST_F(Registry, ALongTextComesBackWhole)
{
    const std::string text(5000, 'x');
    RegistryKey::Create(RegistryRoot::CurrentUser, "K").SetStringValue("long", text);
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "K")->StringValue("long"), text);
}

TEST_F(Registry, SubKeysEndWithNothing)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, "Profiles\\Anna");
    RegistryKey::Create(RegistryRoot::CurrentUser, "Profiles\\Bert");
    const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, "Profiles");
    EXPECT_EQ(key->SubKeyName(0), "Anna");
    EXPECT_EQ(key->SubKeyName(1), "Bert");
    EXPECT_EQ(key->SubKeyName(2), std::nullopt);
    EXPECT_EQ(RegistryKey::SubKeyNames(RegistryRoot::CurrentUser, "Profiles"),
              (std::vector<std::string>{"Anna", "Bert"}));
    EXPECT_TRUE(RegistryKey::SubKeyNames(RegistryRoot::CurrentUser, "Absent").empty());
}

TEST_F(Registry, DeletingATreeDeletesAllBelow)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, "Profiles\\Anna\\Store").SetStringValue("a", "b");
    RegistryKey::Create(RegistryRoot::CurrentUser, "Profiles\\Bert");
    RegistryKey::DeleteTree(RegistryRoot::CurrentUser, "profiles\\ANNA");
    EXPECT_FALSE(RegistryKey::Open(RegistryRoot::CurrentUser, "Profiles\\Anna").has_value());
    EXPECT_TRUE(RegistryKey::Open(RegistryRoot::CurrentUser, "Profiles\\Bert").has_value());
}

TEST_F(Registry, DeletingAbsentItemsIsNoError)
{
    EXPECT_NO_THROW(RegistryKey::DeleteTree(RegistryRoot::CurrentUser, "Nobody\\Here"));
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    EXPECT_NO_THROW(key.DeleteValue("nothing"));
}

TEST_F(Registry, ADeletedValueIsAbsent)
{
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    key.SetStringValue("a", "1");
    key.SetStringValue("b", "2");
    key.DeleteValue("A");
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "K")->StringValue("a"), std::nullopt);
    EXPECT_EQ(RegistryKey::Open(RegistryRoot::CurrentUser, "K")->StringValue("b"), "2");
}

TEST_F(Registry, ARootCanNotBeDeleted)
{
    EXPECT_THROW(RegistryKey::DeleteTree(RegistryRoot::CurrentUser, ""), RegistryError);
    EXPECT_THROW(RegistryKey::DeleteTree(RegistryRoot::CurrentUser, "\\"), RegistryError);
}

} // namespace
