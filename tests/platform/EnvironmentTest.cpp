#include "platform/environment.h"

#include "tests/support/Environment.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

using zeb::platform::EnvironmentVariable;
using zeb::platform::OpenFile;

TEST(Environment, AVariablesPresentValueIsRead)
{
    const zeb::test::EnvironmentScope scope("ZEB_TEST_VARIABLE", "first");
    EXPECT_EQ(EnvironmentVariable("ZEB_TEST_VARIABLE"), "first");
    zeb::test::SetEnvironment("ZEB_TEST_VARIABLE", std::string(1000, 'x'));
    EXPECT_EQ(EnvironmentVariable("ZEB_TEST_VARIABLE"), std::string(1000, 'x'));
    zeb::test::SetEnvironment("ZEB_TEST_VARIABLE", std::nullopt);
    EXPECT_EQ(EnvironmentVariable("ZEB_TEST_VARIABLE"), std::nullopt);
}

TEST(Environment, ValuesOfAnyCharactersAreWhole)
{
    const std::string text = "C:\\\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E \xF0\x9F\x98\x80 \xD0\x96 \xC3\xA9";
    const zeb::test::EnvironmentScope scope("ZEB_TEST_VARIABLE", text);
    EXPECT_EQ(EnvironmentVariable("ZEB_TEST_VARIABLE"), text);
    std::string whole;
    for (int i = 0; i < 100; ++i)
    {
        whole += text;
    }
    zeb::test::SetEnvironment("ZEB_TEST_VARIABLE", whole);
    EXPECT_EQ(EnvironmentVariable("ZEB_TEST_VARIABLE"), whole);
}

TEST(Environment, AFileMayHaveAnyName)
{
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() /
        std::filesystem::u8path("zeb-test-\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E \xF0\x9F\x98\x80");
    std::FILE* file = OpenFile(path.u8string(), "wb");
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    EXPECT_TRUE(std::filesystem::remove(path));
    errno = 0;
    EXPECT_EQ(OpenFile(path.u8string(), "rb"), nullptr);
    EXPECT_EQ(errno, ENOENT);
}
